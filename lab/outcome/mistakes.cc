#include "outcome/mistakes.h"

namespace lab {
namespace {

// What a sentence begins with, and a field of its own does not.
constexpr std::string_view found_verb = "found ";

}  // namespace

Json told_mistakes(const std::string &source, const Mistakes &mistakes) {
  Json told = Json::array();
  for (const Mistake &mistake : mistakes) {
    if (told.size() == mistakes_told) break;
    Json one = {{"source", source}, {"where", place_of(mistake)}};
    if (mistake.line > 0) {
      one["line"] = mistake.line;
      one["column"] = mistake.column;
    }
    const bool has_verb = mistake.found.starts_with(found_verb);
    one["found"] = mistake.found.substr(has_verb ? found_verb.size() : 0);
    one["expected"] = mistake.expected;
    told.push_back(std::move(one));
  }
  return told;
}

}  // namespace lab
