#include <fmt/core.h>

#include "output/print.h"

namespace lab {
namespace {

// --- a pair ---

void print_incomplete(const PairReport &report, const Layout &layout) {
  const bool is_first = find_outcome(report) == Outcome::incomplete;
  for (const IncompleteReport &incomplete : report.incomplete) {
    // print_comparison() has printed the first reason in the verdict.
    if (&incomplete != &report.incomplete.front() || !is_first) {
      put_wrapped(std::string("not compared: ") + describe_incomplete(incomplete.reason), layout);
    }
    if (incomplete.accepted) {
      put_wrapped("accepted: " + describe_acceptance(*incomplete.accepted), layout);
    }
  }
}

Cell verdict_cell(const PairReport &report) {
  const Outcome outcome = find_outcome(report);
  if (outcome == Outcome::agree) return {"The pair agrees.", Color::green};
  if (outcome == Outcome::disagree) return {"The pair does NOT agree.", Color::red};
  return {std::string("NOT COMPARED: ") + describe_incomplete(report.incomplete.front().reason),
          Color::yellow};
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

// The outcome of one of many pairs, and its reason.
std::pair<Outcome, std::string> summarize_result(const PairResult &result) {
  if (!result.errors.empty()) {
    std::size_t count = 0;
    for (const SourceErrors &source : result.errors) count += source.errors.size();
    const auto &[source, errors] = result.errors.front();
    const std::string place = place_of(errors.front());
    return {
        Outcome::incomplete,
        fmt::format("{}: {}{}{}", source, place.empty() ? "" : place + " ", errors.front().found,
                    count > 1 ? fmt::format(" and {} more", count - 1) : "")};
  }
  const Outcome outcome = find_outcome(result.report);
  if (outcome == Outcome::disagree) return {outcome, describe_differences(result.report)};
  const auto gaps = describe_each(result.report.incomplete, [](const IncompleteReport &each) {
    return std::string(describe_incomplete(each.reason)) + (each.accepted ? ", accepted" : "");
  });
  return {outcome, join(gaps, "; ")};
}

}  // namespace

void print_comparison(const PairReport &report, const Style &style) {
  const Layout &layout = style.layout;
  put_wrapped(verdict_cell(report), layout);
  print_incomplete(report, layout);
  if (find_reasons(report).contains(Reason::warnings)) {
    put_line("Warnings remain, which --strict does not allow.");
  }
  for (std::size_t side = 0; side < style.sides.size(); ++side) {
    const SideReport &of_side = report.sides[side];
    put_wrapped(fmt::format("{}: {}{}, spanning tree {}", style.sides[side],
                            of_side.name.empty() ? "" : of_side.name + ", from ", of_side.source,
                            spanning_tree_name(of_side.spanning_tree)),
                layout);
  }
  const std::vector<std::string> off = list_sides_off(report, style.sides);
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
  const auto [outcome, why] = summarize_result(result);
  counts[outcome].push_back(result.name + ": " + why);
}

void print_pair_result(const PairResult &result, const Layout &layout, bool with_notes) {
  const auto [outcome, why] = summarize_result(result);
  const std::size_t notes = result.report.notes.size();
  Cell cell = outcome == Outcome::agree      ? Cell("agrees", Color::green)
              : outcome == Outcome::disagree ? Cell("DIFFERENT: " + why, Color::red)
                                             : Cell("NOT COMPARED: " + why, Color::yellow);
  if (notes > 0) cell.text += " (" + format_count(notes, "note") + ")";
  put_line(result.name + ": " + add_color(cell, layout));
  if (!with_notes) return;
  for (const NoteGroup &group : group_notes(result.report.notes)) {
    put_wrapped(describe_notes(group), layout, 4, "  - ");
  }
}

void print_pair_counts(PairCounts counts) {
  const auto &agree = counts[Outcome::agree];
  const auto &differing = counts[Outcome::disagree];
  const auto &failed = counts[Outcome::incomplete];
  const std::size_t count = agree.size() + differing.size() + failed.size();
  put_line(fmt::format("{}: {} agree, {} differ, {} not compared", format_count(count, "pair"),
                       agree.size(), differing.size(), failed.size()));
  for (const auto *lines : {&failed, &differing}) {
    for (const std::string &line : *lines) put_line(line, 4);
  }
}

}  // namespace lab
