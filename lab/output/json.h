// Writes reports as JSON documents; packaging/documents.schema.json describes them.
#pragma once

#include <nlohmann/json.hpp>

#include "output/words.h"

namespace lab {

// Keeps the order of insertion.
using Json = nlohmann::ordered_json;

template <class Items, class Convert>
Json list_json(const Items &items, Convert convert) {
  Json list = Json::array();
  for (const auto &item : items) list.push_back(convert(item));
  return list;
}

// {"left": ..., "right": ...}
template <class Convert>
Json sides_json(Convert convert) {
  return {{switch_names[0], convert(0U)}, {switch_names[1], convert(1U)}};
}

template <class Value>
Json json_or_null(const std::optional<Value> &value) {
  return value ? Json(*value) : Json();
}

enum class JsonForm { line, indented };

// Formats a document with a final line feed. Replaces bytes that are not UTF-8.
std::string format_json(const Json &json, JsonForm form);

// --- parts of documents ---

// A list of the errors of all sources. Errors in text files have "line" and "column".
Json errors_to_json(const std::vector<SourceErrors> &sources);

// {"name": "STP_MCEC_ERR_FAILURE", "code": ...}; code 0 has the name `success`.
Json code_to_json(uint32_t code, const char *success);

Json checks_to_json(const std::vector<ScopeReport> &checks, const SideNames &names = switch_names);
Json notes_to_json(const std::vector<Note> &notes, const SideNames &names = switch_names);
Json comparison_to_json(const PairReport &report);
Json patch_to_json(const Patch &patch);  // RFC 6902

// --- documents ---

std::string format_errors(const std::vector<SourceErrors> &sources, JsonForm form);
std::string format_scenario_errors(const std::string &path, const InputErrors &errors);

std::string format_comparison(const PairReport &report);

// The document of one of many pairs, on one line.
std::string format_pair_result(const PairResult &result);

std::string format_patch(const Patch &patch);
std::string format_patches(const std::array<Patch, 2> &patches);

// All parameters, commands and results of the library.
std::string format_list();

std::string format_run(const RunReport &report, const std::vector<StepReport> &steps);

// An expected or found value as text: "stp-mode: MST, loop-guard: Enabled", "nothing".
std::string describe_finding(const Finding &finding);

}  // namespace lab
