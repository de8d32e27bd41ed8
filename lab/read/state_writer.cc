#include "read/state_writer.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "language/vocabulary.h"
#include "outcome/json.h"
#include "read/spelling.h"

namespace lab {
namespace {

// A mapping with its values as they are written.
using Pairs = std::vector<std::pair<std::string, std::string>>;

// In quotation marks, since YAML takes some texts for numbers, truth or nothing. What no terminal
// should see is escaped. YAML reads what JSON writes.
std::string quoted_text(std::string_view text) {
  std::string out = "\"";
  while (!text.empty()) {
    const std::string character(text.substr(0, std::max<std::size_t>(character_bytes(text), 1)));
    const bool is_escaped = printable(character) != character;
    const std::string written =
        Json(character).dump(-1, ' ', is_escaped, Json::error_handler_t::replace);
    out += written.substr(1, written.size() - 2);
    text.remove_prefix(character.size());
  }
  return out + '"';
}

// No YAML takes a word of more than five letters for truth, nothing or a number.
std::string name_text(const std::string &name) {
  const auto is_letter = [](char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
  };
  const bool is_plain = name.size() > 5 && std::isalpha(static_cast<unsigned char>(name[0])) != 0 &&
                        std::all_of(name.begin(), name.end(), is_letter);
  return is_plain ? name : quoted_text(name);
}

std::string range_text(const Vlans &vlans) {
  return vlans.none() ? "none" : quoted_text(vlan_text(vlans));
}

std::string inline_text(const Pairs &pairs) {
  std::string text;
  for (const auto &[key, value] : pairs) text += (text.empty() ? "" : ", ") + key + ": " + value;
  return "{" + text + "}";
}

// The flags by their words; as a number what has no words.
std::string flags_text(uint32_t value) {
  std::string text;
  uint32_t named = 0;
  for (const auto &[flag, bit] : flag_words()) {
    if ((value & bit) == 0) continue;
    text += (text.empty() ? "" : ", ") + flag;
    named |= bit;
  }
  return value != 0 && named == value ? "[" + text + "]" : std::to_string(value);
}

std::string word_text(uint16_t type, uint32_t value) {
  if (type == STP_MCEC_TYPE1_GBL_PORT_TYPE) return flags_text(value);
  for (const auto &[text, known] : value_words(type)) {
    if (known == value) return text;
  }
  return std::to_string(value);
}

// A name that nothing but NUL follows.
bool is_name(const Bytes &value) {
  const auto end = std::find(value.begin(), value.end(), 0);
  std::string_view rest(reinterpret_cast<const char *>(value.data()),
                        std::size_t(end - value.begin()));
  while (const std::size_t length = character_bytes(rest)) rest.remove_prefix(length);
  return rest.empty() && std::all_of(end, value.end(), [](uint8_t byte) { return byte == 0; });
}

// A value in the words of the lab; nothing: they do not say it all.
std::optional<std::string> said_in_words(uint16_t type, const Bytes &value) {
  const ParameterName *parameter = find_parameter(uint32_t{type});
  if (parameter == nullptr || value.size() != parameter->length) return std::nullopt;
  if (type == STP_MCEC_TYPE1_STP_ENDIS) {
    const Vlans vlans = vlans_of_record(value);
    if (vlan_record(vlans) != value) return std::nullopt;
    return range_text(vlans);
  }
  if (type == STP_MCEC_TYPE1_MST_REGION_NAME) {
    if (!is_name(value)) return std::nullopt;
    return quoted_text(std::string(value.begin(), std::find(value.begin(), value.end(), 0)));
  }
  if (type == STP_MCEC_TYPE1_MST_REGION_VI_MAP) {
    Pairs pairs;
    for (const auto &[instance, vlans] : instances_of(value)) {
      if (instance > last_instance) return std::nullopt;
      pairs.emplace_back(std::to_string(instance), range_text(vlans));
    }
    return inline_text(pairs);
  }
  return word_text(type, word_of(value));
}

Pairs parameters_text(const std::vector<Entry> &entries) {
  Pairs pairs;
  for (const Entry &entry : entries) pairs.emplace_back(parameter_key(entry.type), written(entry));
  return pairs;
}

std::string port_lines(const Settings &settings, const Port &port) {
  static const Port usual;
  Pairs pairs;
  if (!port.name.empty()) pairs.emplace_back("port", name_text(port.name));
  if (port.channel == 0 || port.index != first_channel_index + port.channel) {
    pairs.emplace_back("index", port_text(port.index));
  }
  if (port.channel != 0) {
    const auto channel = std::find_if(settings.channels.begin(), settings.channels.end(),
                                      [&](const Channel &of) { return of.id == port.channel; });
    const bool has_name = channel != settings.channels.end();
    pairs.emplace_back("channel",
                       has_name ? name_text(channel->name) : std::to_string(port.channel));
  }
  if (port.pod != usual.pod) pairs.emplace_back("pod", "true");
  if (port.type != usual.type) pairs.emplace_back("type", std::to_string(port.type));
  if (port.layer_mode != usual.layer_mode) {
    pairs.emplace_back("layer-mode", std::to_string(port.layer_mode));
  }
  if (!port.parameters.empty()) {
    pairs.emplace_back("parameters", inline_text(parameters_text(port.parameters)));
  }
  Pairs uncovered;
  for (const auto &[field, value] : port.uncovered) {
    uncovered.emplace_back(name_text(field), quoted_text(value));
  }
  if (!uncovered.empty()) pairs.emplace_back("uncovered", inline_text(uncovered));
  std::string lines;
  for (const auto &[key, value] : pairs) {
    lines += (lines.empty() ? "  - " : "    ") + key + ": " + value + "\n";
  }
  return lines;
}

}  // namespace

std::string written(const Entry &entry) {
  const auto words = said_in_words(entry.type, entry.value);
  return words ? *words : inline_text({{"bytes", quoted_text(hex(entry.value))}});
}

std::string state_file(const Settings &settings) {
  std::string out = "# What a switch is set to: a lab state file, which mcec-lab reads.\n";
  const auto line = [&out](const std::string &key, const std::string &value) {
    out += key + ": " + value + "\n";
  };
  if (!settings.name.empty()) line("name", quoted_text(settings.name));
  if (!settings.address.empty()) line("address", quoted_text(settings.address));
  if (!settings.spanning_tree) line("spanning-tree", "false");
  line("trunk", settings.trunk ? "true" : "false");
  if (!settings.peerings.empty()) out += "peerings:\n";
  for (const auto &[source, peer] : settings.peerings) {
    out +=
        "  - " + inline_text({{"source", quoted_text(source)}, {"peer", quoted_text(peer)}}) + "\n";
  }
  line("user-vlans", range_text(settings.user_vlans));
  if (!settings.channels.empty()) out += "channels:\n";
  for (const Channel &channel : settings.channels) {
    Pairs pairs = {{"channel", name_text(channel.name)},
                   {"id", std::to_string(channel.id)},
                   {"vlans", range_text(channel.vlans)}};
    if (channel.internal) pairs.emplace_back("internal", "true");
    out += "  - " + inline_text(pairs) + "\n";
  }
  if (!settings.ports.empty()) out += "ports:\n";
  for (const Port &port : settings.ports) out += port_lines(settings, port);
  if (!settings.parameters.empty()) out += "parameters:\n";
  for (const auto &[key, value] : parameters_text(settings.parameters)) line("  " + key, value);
  return out;
}

}  // namespace lab
