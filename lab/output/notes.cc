#include "output/notes.h"

#include "switch/names.h"

namespace lab {
namespace {

std::string value_text(const std::optional<std::string> &value) {
  return value ? printable(*value) : "not set";
}

// "bpdu_guard (true on left, not set on right), path_cost (...)".
std::string fields_text(const Note &note, const SideNames &names) {
  std::string text;
  for (const NoteField &field : note.fields) {
    text += (text.empty() ? "" : ", ") + printable(field.name);
    if (field.vlans.any()) text += " of " + vlan_words(field.vlans);
    text += " (";
    for (std::size_t side = 0; side < names.size(); ++side) {
      text += (side > 0 ? ", " : "") + value_text(field.values[side]) + " on " + names[side];
    }
    text += ")";
  }
  return text;
}

// "Only left carries VLAN 2, and only right VLANs 3-4."
std::string vlans_text(const Note &note, const SideNames &names) {
  std::string text;
  for (std::size_t side = 0; side < names.size(); ++side) {
    if (note.vlans[side].none()) continue;
    text += (text.empty() ? "Only " : ", and only ") + std::string(names[side]) +
            (text.empty() ? " carries " : " ") + vlan_words(note.vlans[side]);
  }
  return text + ".";
}

std::string describe_problem(const NoteReport &report) {
  const std::string entry = "The accepted difference at line " + std::to_string(report.line);
  switch (report.problem) {
    case AcceptanceProblem::expired:
      return entry + " has expired on " + report.until + ".";
    case AcceptanceProblem::matches_nothing:
      return entry + " matches nothing.";
    case AcceptanceProblem::no_reason:
      return entry + " still has the reason TODO.";
  }
  return "";
}

}  // namespace

std::string describe_note(const NoteReport &report, const SideNames &names) {
  const Note &note = report.note;
  const std::string side = note.side ? names[*note.side] : "";
  switch (note.kind) {
    case NoteKind::spanning_tree_on_one_half:
      return "Spanning tree is enabled on " + side + " only.";
    case NoteKind::vlan_on_one_half:
      return vlans_text(note, names);
    case NoteKind::port_setting:
      return "The ports differ in what no parameter covers: " + fields_text(note, names) + ".";
    case NoteKind::spanning_tree_off_on_channel:
      return "Spanning tree is enabled on neither half.";
    case NoteKind::vlan_timer:
      return "Timers of twin VLANs differ: " + fields_text(note, names) + ".";
    case NoteKind::timer:
      return "Timers differ: " + fields_text(note, names) + ".";
    case NoteKind::domain:
      return "The multi-chassis domains differ: " + fields_text(note, names) + ".";
    case NoteKind::peers_do_not_cross:
      return "The switches do not name each other as peers: " + fields_text(note, names) + ".";
    case NoteKind::same_address:
      return "Both switches have the address " + value_text(note.fields[0].values[0]) + ".";
    case NoteKind::no_peer_link:
      return "The " + side + " switch has multi-chassis channels and no peer link.";
    case NoteKind::spanning_tree_off:
      return "Spanning tree is off on both switches: nothing runs.";
    case NoteKind::acceptance:
      return describe_problem(report);
  }
  return "";
}

const char *severity_name(NoteKind kind) {
  return has_severity_of_warning(kind) ? "warning" : "info";
}

}  // namespace lab
