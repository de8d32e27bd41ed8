#include "output/page_text.h"

#include <fmt/core.h>

#include <algorithm>

#include "text/text.h"

namespace lab {
namespace {

// Values longer than this are folded, with so much of them before the fold.
constexpr std::size_t longest_value = 120;
constexpr std::size_t shown_of_longer = 60;

// The beginning of a long text; of a list, whole items.
std::string_view beginning_of(std::string_view text) {
  const std::string_view beginning = whole_characters(text, shown_of_longer);
  const std::size_t item = beginning.find_last_of(", ");
  return item == beginning.npos || item == 0 ? beginning : beginning.substr(0, item);
}

}  // namespace

std::string escaped(std::string_view text, const char *comma) {
  const std::pair<char, const char *> entities[] = {{'&', "&amp;"},  {'<', "&lt;"},   {'>', "&gt;"},
                                                    {'"', "&quot;"}, {'\'', "&#39;"}, {',', comma}};
  std::string out;
  for (const char c : printable(text)) {
    const auto entity = std::find_if(std::begin(entities), std::end(entities),
                                     [c](const auto &candidate) { return candidate.first == c; });
    if (entity == std::end(entities)) {
      out += c;
    } else {
      out += entity->second;
    }
  }
  return out;
}

std::string isolated(std::string_view text) {
  return "<bdi>" + escaped(text, ",<wbr>") + "</bdi>";
}

std::string count_of(std::size_t count, const char *what) {
  return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

std::string folded(const std::string &text) {
  if (text.size() <= longest_value) return isolated(text);
  return fmt::format("<details><summary>{}…</summary>{}</details>", isolated(beginning_of(text)),
                     isolated(text));
}

std::string folded(const Vlans &vlans) {
  const std::string text = vlan_text(vlans);
  if (text.size() <= longest_value) return escaped(text, ",<wbr>");
  return fmt::format("<details><summary>{} VLANs: {}…</summary>{}</details>", vlans.count(),
                     escaped(beginning_of(text), ",<wbr>"), escaped(text, ",<wbr>"));
}

}  // namespace lab
