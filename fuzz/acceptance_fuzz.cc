// Files of accepted differences: reading them, and applying them to a report.

#include "report/acceptance.h"
#include "texts.h"

namespace {

constexpr const char *today = "2026-06-15";

// Returns a report with a note of each kind, in which every parameter differs and a channel is
// missing.
lab::PairReport make_report() {
  lab::PairReport report;
  report.name = "east";
  lab::ScopeReport &scope = report.checks.emplace_back();
  scope.codes = {0x40DD003B, 0x40DD003B};
  for (uint16_t type = 1; type <= 12; ++type) {
    lab::ParameterReport &parameter = scope.parameters.emplace_back();
    parameter.type = type;
    parameter.values[0] = lab::Bytes{0, 0, 0, 4};
    parameter.states = {lab::State::missing_at_peer, lab::State::only_at_peer};
  }
  lab::ScopeReport &missing = report.checks.emplace_back();
  missing.scope.kind = lab::PairScope::Kind::of_channel;
  missing.scope.name = "PortChannel10";
  missing.scope.ends[1].present = false;
  missing.codes = {0x40DD0001, 0x40DD0001};
  for (std::size_t kind = 0; kind < lab::note_keys().size(); ++kind) {
    report.notes.emplace_back().kind = lab::NoteKind(kind);
  }
  report.incomplete = {{lab::Incomplete::no_channels, {}}, {lab::Incomplete::no_twin_vlans, {}}};
  return report;
}

std::size_t count_accepted(const lab::PairReport &report) {
  const auto is_accepted = [](const auto &row) { return row.accepted.has_value(); };
  std::size_t count = 0;
  for (const lab::ScopeReport &scope : report.checks) {
    count += is_accepted(scope);
    count += std::size_t(std::ranges::count_if(scope.parameters, is_accepted));
  }
  return count + std::size_t(std::ranges::count_if(report.incomplete, is_accepted)) +
         std::size_t(std::ranges::count_if(report.notes, is_accepted));
}

}  // namespace

void check_text(std::string_view text) {
  const lab::ReadAcceptList read = lab::read_accept_list(std::string(text));
  check_errors_with_lines(read.errors, text);
  if (!read.errors.empty()) return;

  std::size_t can_accept = 0;
  for (const lab::AcceptEntry &entry : read.entries) {
    must(entry.line > 0 && !entry.acceptance.reason.empty(), "an entry has a line and a reason");
    must((entry.kind == lab::AcceptEntry::Kind::parameter) == (entry.type != 0),
         "exactly an entry about a parameter has a type");
    can_accept += entry.acceptance.until.empty() || entry.acceptance.until >= today;
  }
  lab::PairReport report = make_report();
  const std::size_t notes = report.notes.size();
  const std::vector<bool> matched = lab::accept_differences(read.entries, today, report);
  must(matched.size() == read.entries.size(), "there is a match flag for each entry");
  must(can_accept > 0 || count_accepted(report) == 0, "an expired entry accepts nothing");
  must(report.notes.size() <= notes + matched.size(), "an entry adds at most one note");
  const lab::ReadAcceptList again = lab::read_accept_list(lab::format_accept_list(report));
  must(again.errors.empty(), "a written file can be read");
  lab::accept_differences(again.entries, today, report);
  for (const lab::ScopeReport &scope : report.checks) {
    must(scope.accepted || !lab::missing_side(scope), "the written file accepts a missing channel");
    for (const lab::ParameterReport &parameter : scope.parameters) {
      must(scope.accepted || parameter.accepted, "the written file accepts every difference");
    }
  }
}
