// Parses and prints the notation of the values in rows.
#include <algorithm>
#include <charconv>

#include "sonic/rows.h"

namespace lab {
namespace {

bool is_digit(char c) {
  return c >= '0' && c <= '9';
}
bool is_blank(char c) {
  return c == ' ' || c == '\t';
}

// Parses a number that follows a prefix.
std::optional<uint32_t> parse_after(std::string_view word, std::string_view text) {
  return text.starts_with(word) ? decimal(text.substr(word.size())) : std::nullopt;
}

// Returns nullopt if there are blanks between two digits: a comma may be missing.
std::optional<std::string> remove_blanks(std::string_view text) {
  std::string rest;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (is_blank(text[i])) continue;
    const bool is_joined = i > 0 && is_blank(text[i - 1]) && !rest.empty();
    if (is_joined && is_digit(rest.back()) && is_digit(text[i])) return std::nullopt;
    rest += text[i];
  }
  return rest;
}

}  // namespace

const Table &table_of(const Rows &rows, const std::string &name) {
  static const Table none;
  const auto found = rows.find(name);
  return found != rows.end() ? found->second : none;
}

std::optional<uint32_t> decimal(std::string_view text) {
  if (text.empty() || !std::all_of(text.begin(), text.end(), is_digit)) return std::nullopt;
  uint32_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() ? value : UINT32_MAX;
}

std::optional<uint32_t> vlan_of(std::string_view name) {
  const auto vlan = parse_after("Vlan", name);
  // Interface names are exact: "Vlan010" is not Vlan10.
  return vlan && (vlan > last_vlan || vlan_name(*vlan) == name) ? vlan : std::nullopt;
}

std::string vlan_name(uint32_t vlan) {
  return "Vlan" + std::to_string(vlan);
}

bool is_channel(std::string_view name) {
  return parse_after("PortChannel", name).has_value();
}

std::optional<uint32_t> instance_of_key(std::string_view key) {
  for (const char *word : {"MST_INSTANCE|", "MST_INSTANCE:INSTANCE", ""}) {
    if (const auto instance = parse_after(word, key)) return instance;
  }
  return std::nullopt;
}

std::vector<std::string> members_of(const FieldValue &list) {
  std::vector<std::string> members;
  if (const auto *text = std::get_if<std::string>(&list)) {
    for (const std::string_view member : split(*text, ',')) members.emplace_back(member);
  } else {
    members = std::get<std::vector<std::string>>(list);
  }
  // Splitting an empty text returns one empty member.
  if (members.size() == 1 && std::all_of(members[0].begin(), members[0].end(), is_blank)) {
    members.clear();
  }
  return members;
}

std::string joined(const FieldValue &value) {
  std::string text;
  for (const std::string &member : members_of(value)) text += (text.empty() ? "" : ",") + member;
  return text;
}

ParsedRanges parse_member(std::string_view member) {
  const auto rest = remove_blanks(member);
  if (!rest) return {{}, RangeError::not_a_list};
  const std::vector<std::string_view> ends = split(*rest, '-');
  const char *word = rest->starts_with('V') ? "Vlan" : "";
  const auto first = parse_after(word, ends.front());
  const auto last = parse_after(word, ends.back());
  if (ends.size() > 2 || !first || !last) return {{}, RangeError::not_a_list};
  if (*first < first_vlan || *first > last_vlan || *last < first_vlan || *last > last_vlan) {
    return {{}, RangeError::out_of_range};
  }
  if (*first > *last) return {{}, RangeError::reversed};
  return {{{*first, *last}}, RangeError::none};
}

std::string shorten(std::string_view text) {
  return cut(printable(text), 64);
}

std::string quote(std::string_view text) {
  return '\'' + shorten(text) + '\'';
}

std::string row_place(const std::string &table, std::string_view key, std::string_view field) {
  return table + '|' + shorten(key) + (field.empty() ? "" : ' ' + shorten(field));
}

}  // namespace lab
