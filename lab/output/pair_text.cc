#include <fmt/core.h>

#include "output/print.h"
#include "report/verdict.h"

namespace lab {
namespace {

// --- a pair ---

void print_incomplete(const PairReport &report, const Layout &layout) {
  const bool is_first = find_verdict(report).outcome == Outcome::incomplete;
  for (const IncompleteReport &incomplete : report.incomplete) {
    // The first is the first line then.
    if (&incomplete != &report.incomplete.front() || !is_first) {
      put_wrapped(std::string("not compared: ") + describe_incomplete(incomplete.reason), layout);
    }
    if (incomplete.accepted) {
      put_wrapped("accepted: " + describe_acceptance(*incomplete.accepted), layout);
    }
  }
}

void print_notes(const PairReport &report, const Style &style) {
  if (!report.notes.empty()) put_line("Notes:");
  for (const NoteGroup &group : group_notes(report.notes)) {
    const auto &accepted = group.note->accepted;
    put_wrapped(describe_notes(group, style.sides) +
                    (accepted ? " Accepted: " + describe_acceptance(*accepted) : ""),
                style.layout, 4, "  - ");
  }
}

// --- many pairs ---

// Why a pair was not compared, or could not be compared in full.
std::string describe_gaps(const PairResult &result) {
  std::vector<std::string> texts;
  std::size_t count = 0;
  for (const SourceErrors &source : result.errors) count += source.errors.size();
  if (count > 0) {
    const auto &[source, errors] = result.errors.front();
    const std::string place = place_of(errors.front());
    return fmt::format("{}: {}{}{}", source, place.empty() ? "" : place + " ", errors.front().found,
                       count > 1 ? fmt::format(" and {} more", count - 1) : "");
  }
  for (const IncompleteReport &incomplete : result.report.incomplete) {
    texts.push_back(describe_incomplete(incomplete.reason) +
                    std::string(incomplete.accepted ? ", accepted" : ""));
  }
  return join(texts, "; ");
}

Outcome outcome_of(const PairResult &result) {
  return result.errors.empty() ? find_verdict(result.report).outcome : Outcome::incomplete;
}

// "DIFFERENT: stp-mode (1) (2 notes)".
Cell verdict_cell(const PairResult &result) {
  const std::size_t count = result.report.notes.size();
  const std::string notes = count == 0 ? "" : " (" + count_of(count, "note") + ")";
  switch (outcome_of(result)) {
    case Outcome::agree:
      return {"agrees" + notes, Colour::green};
    case Outcome::disagree:
      return {"DIFFERENT: " + describe_differences(result.report) + notes, Colour::red};
    case Outcome::incomplete:
      break;
  }
  return {"NOT COMPARED: " + describe_gaps(result) + notes, Colour::yellow};
}

}  // namespace

void print_comparison(const PairReport &report, const Style &style) {
  const Layout &layout = style.layout;
  const Verdict verdict = find_verdict(report);
  if (verdict.outcome == Outcome::incomplete) {
    const Incomplete reason = report.incomplete.front().reason;
    put_wrapped({std::string("NOT COMPARED: ") + describe_incomplete(reason), Colour::yellow},
                layout);
  } else if (verdict.outcome == Outcome::agree) {
    put_wrapped({"The pair agrees.", Colour::green}, layout);
  } else {
    put_wrapped({"The pair does NOT agree.", Colour::red}, layout);
  }
  print_incomplete(report, layout);
  if (has_reason(verdict, Reason::warnings)) {
    put_line("Warnings remain, and --strict counts them.");
  }
  std::vector<std::string> off;
  for (std::size_t side = 0; side < style.sides.size(); ++side) {
    const SideReport &of_side = report.sides[side];
    put_wrapped(fmt::format("{}: {}{}, spanning tree {}", style.sides[side],
                            of_side.name.empty() ? "" : of_side.name + ", from ", of_side.source,
                            spanning_tree_name(of_side.spanning_tree)),
                layout);
    if (of_side.spanning_tree == SpanningTree::off) off.emplace_back(style.sides[side]);
  }
  if (off.empty()) {
    const Vlans &twins = report.twin_vlans;
    put_wrapped("twin VLANs: " + (twins.none() ? "none" : vlan_text(twins)), layout, 4);
    print_checks(report.checks, style);
  } else {
    put_wrapped(fmt::format("Spanning tree is off on {}: no check is made.",
                            off.size() == 2 ? "both switches" : "the " + off[0] + " switch"),
                layout);
  }
  print_notes(report, style);
}

void count_result(const PairResult &result, PairCounts &counts) {
  switch (outcome_of(result)) {
    case Outcome::agree:
      ++counts.agree;
      break;
    case Outcome::disagree:
      counts.differing.push_back(result.name + ": " + describe_differences(result.report));
      break;
    case Outcome::incomplete:
      counts.failed.push_back(result.name + ": " + describe_gaps(result));
      break;
  }
}

void print_pair_result(const PairResult &result, const Layout &layout, bool with_notes) {
  put_line(result.name + ": " + coloured(verdict_cell(result), layout));
  if (!with_notes) return;
  for (const NoteGroup &group : group_notes(result.report.notes)) {
    put_wrapped(describe_notes(group), layout, 4, "  - ");
  }
}

void print_pair_counts(const PairCounts &counts) {
  const std::size_t all = counts.agree + counts.differing.size() + counts.failed.size();
  put_line(fmt::format("{} pairs: {} agree, {} differ, {} not compared", all, counts.agree,
                       counts.differing.size(), counts.failed.size()));
  for (const auto *lines : {&counts.failed, &counts.differing}) {
    for (const std::string &line : *lines) put_line(line, 4);
  }
}

}  // namespace lab
