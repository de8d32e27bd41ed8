#include "output/fix.h"

#include <algorithm>

#include "draimiofaf/types.h"
#include "sonic/spelling.h"
#include "switch/names.h"
#include "switch/values.h"

namespace lab {
namespace {

// Of the VLANs that differ, so many groups are described.
constexpr std::size_t most_groups = 4;

std::string place_text(const Change &change) {
  return change.table + '|' + change.key + ' ' + change.field;
}

// "STP_PORT|PortChannel10 root_guard: true on right, or false on left".
std::string describe_changes(const std::array<std::optional<Changes>, 2> &changes) {
  std::string text;
  std::string last_place;
  for (const std::size_t side : {std::size_t{1}, std::size_t{0}}) {
    std::string part;
    for (const Change &change : *changes[side]) {
      const std::string place = place_text(change);
      part += part.empty() ? "" : ", ";
      if (place != last_place) part += place + ": ";
      part += shown(change.value ? joined(*change.value) : "nothing");
      last_place = place;
    }
    text += (text.empty() ? "" : ", or ") + part + " on " + switch_names[side];
  }
  return text;
}

// How a side would have the VLANs of a group.
std::string word_text(const Fix &fix, uint32_t word) {
  if (fix.type == STP_MCEC_TYPE1_MST_REGION_VI_MAP) return "in instance " + std::to_string(word);
  if (fix.field != nullptr) return word != 0 ? "false" : "true";
  return word != 0 ? "listed" : "not listed";
}

std::string describe_groups(const Fix &fix) {
  std::string text = fix.field != nullptr ? fix.field->table + (' ' + std::string(fix.field->name))
                                          : parameter_key(fix.type);
  for (std::size_t i = 0; i < std::min(fix.groups.size(), most_groups); ++i) {
    const auto &[vlans, words] = fix.groups[i];
    text += (i == 0 ? ": " : "; ") + vlan_words(vlans) + " " + word_text(fix, words[0]) +
            " on right, or " + word_text(fix, words[1]) + " on left";
  }
  if (fix.groups.size() <= most_groups) return text;
  return text + "; and " + std::to_string(fix.groups.size() - most_groups) +
         " more groups of VLANs";
}

// "ifi-port-guard of PortChannel10: root on right, or none on left".
std::string describe_settings(const Fix &fix) {
  const auto value = [&](std::size_t side) {
    return fix.values[side] ? written({fix.type, *fix.values[side]}) : "nothing";
  };
  return parameter_key(fix.type) + (fix.channel.empty() ? "" : " of " + printable(fix.channel)) +
         ": " + value(0) + " on right, or " + value(1) + " on left";
}

}  // namespace

std::string describe_fix(const Fix &fix) {
  if (!fix.groups.empty()) return describe_groups(fix);
  if (fix.field == nullptr) return describe_settings(fix);
  if (fix.kind == Fix::Kind::with_mode) {
    return std::string("it goes with ") + fix.field->table + '|' + fix.field->key + ' ' +
           fix.field->name;
  }
  if (fix.kind == Fix::Kind::common_name) {
    const Change &named = (*fix.both)[0][0];
    return place_text(named) + ": one name on both, for instance " + joined(*named.value);
  }
  return describe_changes(fix.alone);
}

}  // namespace lab
