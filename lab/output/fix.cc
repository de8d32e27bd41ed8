#include "output/fix.h"

#include <algorithm>

#include "draimiofaf/types.h"
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
std::string describe_changes(const std::array<std::optional<Changes>, 2> &changes,
                             const SideNames &names) {
  std::string text;
  std::string last_place;
  for (const std::size_t side : {std::size_t{1}, std::size_t{0}}) {
    std::string part;
    if (!changes[side]) continue;
    for (const Change &change : *changes[side]) {
      const std::string place = place_text(change);
      part += part.empty() ? "" : ", ";
      if (place != last_place) part += place + ": ";
      part += change.value ? visible(shown(joined(*change.value))) : "nothing";
      last_place = place;
    }
    text += (text.empty() ? "" : ", or ") + part + " on " + names[side];
  }
  return text;
}

// How a side would have the VLANs of a group.
std::string word_text(const Fix &fix, uint32_t word) {
  if (fix.type == STP_MCEC_TYPE1_MST_REGION_VI_MAP) return "in instance " + std::to_string(word);
  if (fix.field != nullptr) return word != 0 ? "false" : "true";
  return word != 0 ? "listed" : "not listed";
}

std::string describe_groups(const Fix &fix, const SideNames &names) {
  std::string text = fix.field != nullptr ? fix.field->table + (' ' + std::string(fix.field->name))
                                          : parameter_key(fix.type);
  // A side of two that cannot be patched is left out.
  const bool is_any = !fix.alone[0] && !fix.alone[1];
  for (std::size_t i = 0; i < std::min(fix.groups.size(), most_groups); ++i) {
    const auto &[vlans, words] = fix.groups[i];
    std::string sides;
    for (const std::size_t side : {std::size_t{1}, std::size_t{0}}) {
      if (!is_any && !fix.alone[side]) continue;
      sides +=
          (sides.empty() ? " " : ", or ") + word_text(fix, words[1 - side]) + " on " + names[side];
    }
    text += (i == 0 ? ": " : "; ") + vlan_words(vlans) + sides;
  }
  if (fix.groups.size() <= most_groups) return text;
  return text + "; and " + std::to_string(fix.groups.size() - most_groups) +
         " more groups of VLANs";
}

// "ifi-port-guard of PortChannel10: root on right, or none on left".
std::string describe_settings(const Fix &fix, const SideNames &names) {
  const auto value = [&](std::size_t side) {
    return fix.values[side] ? written({fix.type, *fix.values[side]}) : "nothing";
  };
  return parameter_key(fix.type) + (fix.channel.empty() ? "" : " of " + printable(fix.channel)) +
         ": " + value(0) + " on " + names[1] + ", or " + value(1) + " on " + names[0];
}

}  // namespace

std::string describe_fix(const Fix &fix, const SideNames &names) {
  if (!fix.groups.empty()) return describe_groups(fix, names);
  if (fix.kind == Fix::Kind::with_mode) {
    return std::string("it goes with ") + fix.field->table + '|' + fix.field->key + ' ' +
           fix.field->name;
  }
  if (fix.kind == Fix::Kind::common_name) {
    const Change &named = (*fix.both)[0][0];
    return place_text(named) + ": one name on both, for instance " + joined(*named.value);
  }
  if (!fix.alone[0] && !fix.alone[1]) return describe_settings(fix, names);
  return describe_changes(fix.alone, names);
}

bool has_mode_change(const std::vector<PatchOperation> &patch) {
  const Field &mode = *field_of_parameter(STP_MCEC_TYPE1_STP_MODE, 0);
  const std::vector<std::string> path = {mode.table, mode.key, mode.name};
  return std::any_of(patch.begin(), patch.end(), [&](const PatchOperation &operation) {
    return std::equal(operation.path.begin(), operation.path.end(), path.begin(),
                      path.begin() + std::ptrdiff_t(operation.path.size()));
  });
}

}  // namespace lab
