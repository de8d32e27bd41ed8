// What the lab found, as the JSON documents that docs/lab.md describes.
#pragma once

#include <nlohmann/json.hpp>

#include "output/words.h"

namespace lab {

// Keeps the order in which fields are written.
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

// The value, or null.
template <class Value>
Json json_or_null(const std::optional<Value> &value) {
  return value ? Json(*value) : Json();
}

// A document as text, on one line or indented; bytes that are not UTF-8 are replaced.
enum class JsonForm { line, indented };
std::string format_json(const Json &json, JsonForm form);

// --- parts of documents ---

// All errors of some sources, as a list; of a text file by line and column, else by "where".
Json errors_to_json(const std::vector<SourceErrors> &sources);

// {"name": "STP_MCEC_ERR_FAILURE", "code": ...}; `success` is the name of 0.
Json code_to_json(uint32_t code, const char *success);

Json checks_to_json(const std::vector<ScopeReport> &checks, const SideNames &names = switch_names);
Json notes_to_json(const std::vector<Note> &notes, const SideNames &names = switch_names);
Json comparison_to_json(const PairReport &report);
Json patch_to_json(const Patch &patch);  // RFC 6902

// --- documents ---

// Errors only; those of a scenario that cannot be run.
std::string format_errors(const std::vector<SourceErrors> &sources, JsonForm form);
std::string format_scenario_errors(const std::string &path, const InputErrors &errors);

std::string format_comparison(const PairReport &report);

// The document of one of many pairs, on one line.
std::string format_pair_result(const PairResult &result);

// A patch, and those of both sides.
std::string format_patch(const Patch &patch);
std::string format_patches(const std::array<Patch, 2> &patches);

// The tables of the library.
std::string format_list();

std::string format_run(const RunReport &report, const std::vector<StepReport> &steps);

// What was expected or found, as text: "stp-mode: MST, loop-guard: Enabled"; "nothing".
std::string describe_finding(const Finding &finding);

}  // namespace lab
