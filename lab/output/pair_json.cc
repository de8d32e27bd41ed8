#include "output/pair_json.h"

#include <nlohmann/json.hpp>

#include "output/check_json.h"
#include "output/error_json.h"
#include "output/notes.h"
#include "output/pair_text.h"
#include "report/verdict.h"
#include "switch/names.h"

namespace lab {

Json comparison_to_json(const PairReport &report) {
  Json json = {{"version", 1}, {"agree", is_agreed(find_verdict(report))}};
  for (std::size_t side = 0; side < switch_names.size(); ++side) {
    const SideReport &of_side = report.sides[side];
    json[switch_names[side]] = {{"source", of_side.source},
                                {"name", of_side.name},
                                {"spanning-tree", spanning_tree_name(of_side.spanning_tree)}};
  }
  json["twin-vlans"] = vlan_text(report.twin_vlans);
  json["checks"] = checks_to_json(report.checks);
  Json &notes = json["notes"] = Json::array();
  if (std::string off = describe_spanning_tree_off(report); !off.empty()) notes.push_back(off);
  for (const Note &note : report.notes) notes.push_back(describe_note_of_scope(note));
  return json;
}

std::string format_comparison(const PairReport &report) {
  return format_json(comparison_to_json(report), JsonForm::indented);
}

std::string format_pair_result(const PairResult &result) {
  Json json = {{"pair", result.name}, {"version", 1}};
  if (result.errors.empty()) {
    json.update(comparison_to_json(result.report));
  } else {
    json["errors"] = errors_to_json(result.errors);
  }
  return format_json(json, JsonForm::line);
}

}  // namespace lab
