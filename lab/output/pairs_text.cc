#include "output/pairs_text.h"

#include <fmt/core.h>

#include "output/notes.h"
#include "output/words.h"
#include "report/groups.h"
#include "report/verdict.h"
#include "switch/names.h"
#include "text/text.h"

namespace lab {
namespace {

// "mst-region-name (1), ifi-port-guard (3)".
std::string describe_differences(const PairReport &report) {
  const Summary summary = summarize(report.checks);
  std::vector<std::string> causes;
  const auto add = [&causes](const std::string &what, std::size_t count) {
    if (count > 0) causes.push_back(fmt::format("{} ({})", what, count));
  };
  for (const auto &[type, count] : summary.parameters) {
    add(parameter_key(type), count.differ.size());
  }
  add("channels on one side only", summary.missing[0] + summary.missing[1]);
  add("inconsistent ports", summary.inconsistent);
  const Verdict verdict = find_verdict(report);
  for (const Reason reason : verdict.reasons) {
    if (reason == Reason::spanning_tree_off) {
      causes.emplace_back("spanning tree is off on one side");
    } else if (reason == Reason::not_checked) {
      causes.emplace_back("not checked");
    } else if (reason == Reason::warnings) {
      causes.emplace_back("warnings remain");
    }
  }
  return join(causes);
}

std::string describe_gaps(const PairReport &report) {
  std::vector<std::string> texts;
  for (const IncompleteReport &incomplete : report.incomplete) {
    texts.push_back(describe_incomplete(incomplete.reason) +
                    (incomplete.accepted ? std::string(", accepted") : std::string()));
  }
  return join(texts, "; ");
}

// " (2 notes)".
std::string count_warnings(const PairReport &report) {
  const std::size_t count = report.notes.size();
  return count == 0 ? "" : fmt::format(" ({} note{})", count, count == 1 ? "" : "s");
}

std::string describe_failure(const PairResult &result) {
  std::size_t count = 0;
  for (const SourceErrors &source : result.errors) count += source.errors.size();
  const SourceErrors &first = result.errors.front();
  const std::string place = place_of(first.errors.front());
  return fmt::format("{}: {}{}{}", first.source, place.empty() ? "" : place + " ",
                     first.errors.front().found,
                     count > 1 ? fmt::format(" and {} more", count - 1) : "");
}

// "DIFFERENT: stp-mode (1)".
Cell verdict_cell(const PairResult &result) {
  if (!result.errors.empty()) {
    return {"NOT COMPARED: " + describe_failure(result), Colour::yellow};
  }
  const std::string notes = count_warnings(result.report);
  switch (find_verdict(result.report).outcome) {
    case Outcome::agree:
      return {"agrees" + notes, Colour::green};
    case Outcome::disagree:
      return {"DIFFERENT: " + describe_differences(result.report) + notes, Colour::red};
    case Outcome::incomplete:
      break;
  }
  return {"NOT COMPARED: " + describe_gaps(result.report) + notes, Colour::yellow};
}

}  // namespace

void count_result(const PairResult &result, PairCounts &counts) {
  if (!result.errors.empty()) {
    counts.failed.push_back(result.name + ": " + describe_failure(result));
    return;
  }
  switch (find_verdict(result.report).outcome) {
    case Outcome::agree:
      ++counts.agree;
      break;
    case Outcome::disagree:
      counts.differing.push_back(result.name + ": " + describe_differences(result.report));
      break;
    case Outcome::incomplete:
      counts.failed.push_back(result.name + ": " + describe_gaps(result.report));
      break;
  }
}

void print_pair_result(const PairResult &result, const Layout &layout, bool with_notes) {
  const Cell verdict = verdict_cell(result);
  put_line(result.name + ": " + coloured(verdict.text, verdict.colour, layout));
  if (!with_notes) return;
  for (const NoteGroup &group : group_notes(result.report.notes)) {
    put_wrapped((group.channels.empty() ? "" : printable(group.channels) + ": ") +
                    describe_note(*group.note),
                layout, 4, "  - ");
  }
}

void print_pair_counts(const PairCounts &counts) {
  const std::size_t all = counts.agree + counts.differing.size() + counts.failed.size();
  put_line(fmt::format("{} pairs: {} agree, {} differ, {} not compared", all, counts.agree,
                       counts.differing.size(), counts.failed.size()));
  for (const std::string &line : counts.failed) put_line(line, 4);
  for (const std::string &line : counts.differing) put_line(line, 4);
}

}  // namespace lab
