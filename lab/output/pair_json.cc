#include "output/pair_json.h"

#include <nlohmann/json.hpp>

#include "output/check_json.h"
#include "output/error_json.h"
#include "output/notes.h"
#include "output/pair_text.h"
#include "output/words.h"
#include "report/verdict.h"
#include "switch/names.h"

namespace lab {

namespace {

constexpr const char *outcome_names[] = {"agree", "disagree", "incomplete"};

Json notes_to_json(const PairReport &report) {
  Json notes = Json::array();
  for (const NoteReport &note : report.notes) {
    notes.push_back(note_to_json(note, side_names(report)));
  }
  return notes;
}

}  // namespace

const char *outcome_name(Outcome outcome) {
  return outcome_names[std::size_t(outcome)];
}

Json note_to_json(const NoteReport &note, const SideNames &names) {
  const std::string &channel = note.note.channel;
  Json json = {{"kind", note_key(note.note.kind)},
               {"severity", severity_name(note.note.kind)},
               {"scope", channel.empty() ? PairScope{}.name : printable(channel)},
               {"text", describe_note(note, names)}};
  if (note.accepted) json["accepted"] = acceptance_to_json(*note.accepted);
  return json;
}

Json comparison_to_json(const PairReport &report) {
  const Outcome outcome = find_verdict(report).outcome;
  Json json = {{"version", 1},
               {"verdict", outcome_name(outcome)},
               {"agree", outcome == Outcome::agree},
               {"incomplete", Json::array()}};
  for (const IncompleteReport &incomplete : report.incomplete) {
    json["incomplete"].push_back(describe_incomplete(incomplete.reason));
  }
  if (report.is_intended) json["intended"] = true;
  for (std::size_t side = 0; side < switch_names.size(); ++side) {
    const SideReport &of_side = report.sides[side];
    json[switch_names[side]] = {{"source", of_side.source},
                                {"name", of_side.name},
                                {"spanning-tree", spanning_tree_name(of_side.spanning_tree)}};
  }
  json["twin-vlans"] = vlan_text(report.twin_vlans);
  json["checks"] = checks_to_json(report.checks, side_names(report));
  json["notes"] = notes_to_json(report);
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
