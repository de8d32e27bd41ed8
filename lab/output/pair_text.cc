#include "output/pair_text.h"

#include <fmt/core.h>

#include <algorithm>

#include "output/check_text.h"
#include "output/notes.h"
#include "output/words.h"
#include "report/groups.h"
#include "report/verdict.h"
#include "switch/names.h"

namespace lab {
namespace {

std::string describe_side(const SideReport &side, const char *name) {
  return fmt::format("{}: {}{}, spanning tree {}", name,
                     side.name.empty() ? "" : side.name + ", from ", side.source,
                     spanning_tree_name(side.spanning_tree));
}

// The first line: the verdict, or what could not be compared.
Cell verdict_line(const PairReport &report) {
  switch (find_verdict(report).outcome) {
    case Outcome::agree:
      return {"The pair agrees.", Colour::green};
    case Outcome::disagree:
      return {"The pair does NOT agree.", Colour::red};
    case Outcome::incomplete:
      break;
  }
  return {std::string("NOT COMPARED: ") + describe_incomplete(report.incomplete.front().reason),
          Colour::yellow};
}

void print_incomplete(const PairReport &report, const Layout &layout) {
  const bool is_first = find_verdict(report).outcome == Outcome::incomplete;
  for (std::size_t i = 0; i < report.incomplete.size(); ++i) {
    const IncompleteReport &incomplete = report.incomplete[i];
    if (i > 0 || !is_first) {
      put_wrapped(std::string("not compared: ") + describe_incomplete(incomplete.reason), layout);
    }
    if (incomplete.accepted) {
      put_wrapped("accepted: " + describe_acceptance(*incomplete.accepted), layout);
    }
  }
}

void print_notes(const PairReport &report, const Style &style) {
  if (report.notes.empty()) return;
  put_line("Notes:");
  for (const NoteGroup &group : group_notes(report.notes)) {
    const NoteReport &note = *group.note;
    std::string text = (group.channels.empty() ? "" : printable(group.channels) + ": ") +
                       describe_note(note, style.sides);
    if (note.accepted) text += " Accepted: " + describe_acceptance(*note.accepted);
    put_wrapped(text, style.layout, 4, "  - ");
  }
}

}  // namespace

const char *spanning_tree_name(SpanningTree spanning_tree) {
  constexpr const char *names[] = {"off", "rapid-pvst", "mst", "unknown"};
  return names[std::size_t(spanning_tree)];
}

std::string describe_spanning_tree_off(const PairReport &report) {
  const bool left = report.sides[0].spanning_tree == SpanningTree::off;
  const bool right = report.sides[1].spanning_tree == SpanningTree::off;
  if (!left && !right) return "";
  if (left && right) return "Spanning tree is off on both switches: no check is made.";
  return fmt::format("Spanning tree is off on the {} switch: no check is made.",
                     side_names(report)[left ? 0 : 1]);
}

void print_comparison(const PairReport &report, const Style &style) {
  const Layout &layout = style.layout;
  const Cell verdict = verdict_line(report);
  put_wrapped(coloured(verdict.text, verdict.colour, layout), layout);
  print_incomplete(report, layout);
  if (report.is_strict) {
    const Verdict reasons = find_verdict(report);
    if (std::find(reasons.reasons.begin(), reasons.reasons.end(), Reason::warnings) !=
        reasons.reasons.end()) {
      put_line("Warnings remain, and --strict counts them.");
    }
  }
  for (std::size_t side = 0; side < style.sides.size(); ++side) {
    put_wrapped(describe_side(report.sides[side], style.sides[side]), layout);
  }
  if (const std::string off = describe_spanning_tree_off(report); !off.empty()) {
    put_wrapped(off, layout);
  } else {
    const Vlans &twins = report.twin_vlans;
    put_wrapped("twin VLANs: " + (twins.none() ? "none" : vlan_text(twins)), layout, 4);
    print_checks(report.checks, style);
  }
  print_notes(report, style);
}

}  // namespace lab
