#include "output/error_json.h"

#include <nlohmann/json.hpp>
#include <string_view>

namespace lab {
namespace {

// A sentence begins with it, a field does not.
constexpr std::string_view found_verb = "found ";

Json error_to_json(const std::string &source, const InputError &error) {
  Json json = {{"source", source}, {"where", place_of(error)}};
  if (error.line > 0) {
    json["line"] = error.line;
    json["column"] = error.column;
  }
  const bool has_verb = error.found.starts_with(found_verb);
  json["found"] = error.found.substr(has_verb ? found_verb.size() : 0);
  json["expected"] = error.expected;
  return json;
}

}  // namespace

Json errors_to_json(const std::vector<SourceErrors> &sources) {
  Json list = Json::array();
  for (const SourceErrors &source : sources) {
    for (const InputError &error : source.errors) {
      list.push_back(error_to_json(source.source, error));
    }
  }
  return list;
}

std::string format_errors(const std::vector<SourceErrors> &sources, JsonForm form) {
  return format_json({{"version", 1}, {"errors", errors_to_json(sources)}}, form);
}

std::string format_scenario_errors(const std::string &path, const InputErrors &errors) {
  return format_json(
      {{"version", 1}, {"scenario", path}, {"errors", errors_to_json({{path, errors}})}},
      JsonForm::indented);
}

std::string format_json(const Json &json, JsonForm form) {
  const int indent = form == JsonForm::indented ? 2 : -1;
  return json.dump(indent, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace lab
