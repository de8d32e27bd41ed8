#include "output/error_json.h"

#include <string_view>

namespace lab {
namespace {

// A sentence begins with it, a field does not.
constexpr std::string_view found_verb = "found ";

}  // namespace

Json errors_to_json(const std::string &source, const InputErrors &errors) {
  Json list = Json::array();
  for (const InputError &error : errors) {
    Json json = {{"source", source}, {"where", place_of(error)}};
    if (error.line > 0) {
      json["line"] = error.line;
      json["column"] = error.column;
    }
    const bool has_verb = error.found.starts_with(found_verb);
    json["found"] = error.found.substr(has_verb ? found_verb.size() : 0);
    json["expected"] = error.expected;
    list.push_back(std::move(json));
  }
  return list;
}

Json error_document(Json errors) {
  return {{"version", 1}, {"errors", std::move(errors)}};
}

}  // namespace lab
