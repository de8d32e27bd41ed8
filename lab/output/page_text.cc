#include "output/page_text.h"

#include <fmt/core.h>

#include <algorithm>

#include "text/text.h"

namespace lab {
namespace {

// Values longer than this are folded, with so much of them before the fold.
constexpr std::size_t longest_value = 160;
constexpr std::size_t told_of_longer = 60;
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

std::string said(std::string_view text) {
  return "<bdi>" + escaped(text, ",<wbr>") + "</bdi>";
}

const Json &field(const Json &object, const char *key) {
  static const Json nothing;
  if (!object.is_object()) return nothing;
  const auto found = object.find(key);
  return found != object.end() ? *found : nothing;
}

std::string text_at(const Json &object, const char *key) {
  const Json &value = field(object, key);
  return value.is_string() ? value.get<std::string>() : "";
}

std::string counted(std::size_t count, const char *what) {
  return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

std::string folded(const std::string &text) {
  if (text.size() <= longest_value) return said(text);
  std::size_t end = 0;
  while (end < told_of_longer) {
    end += first_character(std::string_view(text).substr(end)).size();
  }
  return fmt::format("<details><summary>{}…</summary>{}</details>", said(text.substr(0, end)),
                     said(text));
}

}  // namespace lab
