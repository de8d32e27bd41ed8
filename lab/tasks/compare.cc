#include "tasks/compare.h"

#include "draimiofaf/types.h"
#include "report/verdict.h"
#include "switch/values.h"
#include "tasks/check.h"

namespace lab {
namespace {

SpanningTree find_spanning_tree(const Settings &settings) {
  if (!settings.spanning_tree) return SpanningTree::off;
  for (const Entry &entry : settings.parameters) {
    if (entry.type != STP_MCEC_TYPE1_STP_MODE) continue;
    if (entry.value == word_value(STP_MCEC_STP_MODE_MST)) return SpanningTree::mst;
    if (entry.value == word_value(STP_MCEC_STP_MODE_RAPID_PVST)) return SpanningTree::rapid_pvst;
  }
  return SpanningTree::unknown;
}

SideReport report_side(const Side &side) {
  return {.source = side.source,
          .name = printable(side.settings.name),
          .spanning_tree = find_spanning_tree(side.settings),
          .modified = side.modified};
}

FixReport report_fix(const Sides &sides, const PairScope &scope, uint16_t type, bool is_intended) {
  const std::string channel = scope.kind == PairScope::Kind::of_channel ? scope.name : "";
  const std::array<const Rows *, 2> rows = {sides[0].rows ? &*sides[0].rows : nullptr,
                                            sides[1].rows ? &*sides[1].rows : nullptr};
  FixReport report{.fix = find_fix(settings_of(sides), rows, channel, type, is_intended)};
  for (std::size_t i = 0; i < sides.size(); ++i) {
    if (report.fix.alone[i]) report.alone[i] = make_patch(*rows[i], *report.fix.alone[i]);
  }
  if (report.fix.both) {
    report.both = {make_patch(*rows[0], (*report.fix.both)[0]),
                   make_patch(*rows[1], (*report.fix.both)[1])};
  }
  return report;
}

void add_digests(ScopeReport &scope) {
  for (ParameterReport &parameter : scope.parameters) {
    if (parameter.type != STP_MCEC_TYPE1_MST_REGION_VI_MAP) continue;
    auto &digests = parameter.digests.emplace();
    for (std::size_t i = 0; i < digests.size(); ++i) {
      if (parameter.values[i]) digests[i] = region_digest(*parameter.values[i]);
    }
  }
}

std::vector<IncompleteReport> find_incomplete(const PairReport &report,
                                              const SettingsPairView &settings) {
  std::vector<IncompleteReport> found;
  if (settings[0]->channels.empty() && settings[1]->channels.empty()) {
    found.push_back({Incomplete::no_channels, {}});
  }
  const auto &[left, right] = report.sides;
  if (left.spanning_tree == SpanningTree::rapid_pvst &&
      right.spanning_tree == SpanningTree::rapid_pvst && report.twin_vlans.none()) {
    found.push_back({Incomplete::no_twin_vlans, {}});
  }
  return found;
}

void add_fixes(const Sides &sides, bool is_intended, ScopeReport &scope) {
  if (const auto missing = missing_side(scope)) {
    if (sides[*missing].rows) {
      scope.missing_row = find_channel_row(sides[*missing].settings, sides[1 - *missing].settings,
                                           scope.scope.name);
    }
    return;
  }
  if (is_agreed(scope)) return;
  for (ParameterReport &parameter : scope.parameters) {
    if (is_different(parameter)) {
      parameter.fix = report_fix(sides, scope.scope, parameter.type, is_intended);
    }
  }
}

}  // namespace

SettingsPairView settings_of(const Sides &sides) {
  return {&sides[0].settings, &sides[1].settings};
}

PairReport compare(Pair &pair, const Sides &sides, const CompareOptions &options) {
  const SettingsPairView settings = settings_of(sides);
  PairReport report{.name = options.name,
                    .is_intended = options.is_intended,
                    .is_strict = options.is_strict,
                    .sides = {report_side(sides[0]), report_side(sides[1])},
                    .twin_vlans = twin_vlans(settings),
                    .notes = find_notes(settings, options.is_intended)};
  if (settings[0]->spanning_tree && settings[1]->spanning_tree) {
    ask(pair, {{{SetUp{*settings[0]}}, {SetUp{*settings[1]}}}});
    report.checks = check_scopes(pair, {find_scopes(settings), report.twin_vlans});
    report.incomplete = find_incomplete(report, settings);
    for (ScopeReport &scope : report.checks) {
      add_digests(scope);
      add_fixes(sides, options.is_intended, scope);
    }
  }
  report.matched = accept_differences(options.accept, format_today(), report);
  return report;
}

Patches collect_patches(const Sides &sides, const PairReport &report,
                        const std::array<bool, 2> &patched) {
  Patches patches;
  std::array<Changes, 2> changes;
  const std::size_t alone_side = patched[1] ? 1 : 0;
  for (const ScopeReport &scope : report.checks) {
    if (missing_side(scope) && !scope.accepted) patches.undecided.push_back(&scope);
    for (const ParameterReport &parameter : scope.parameters) {
      if (!parameter.fix || parameter.accepted) continue;
      const Fix &fix = parameter.fix->fix;
      bool is_decided = fix.kind == Fix::Kind::with_mode;
      for (std::size_t i = 0; i < sides.size(); ++i) {
        const Changes *added = fix.both && patched[i]            ? &(*fix.both)[i]
                               : i == alone_side && fix.alone[i] ? &*fix.alone[i]
                                                                 : nullptr;
        if (added == nullptr) continue;
        is_decided = true;
        changes[i].insert(changes[i].end(), added->begin(), added->end());
      }
      if (!is_decided) patches.unfixed.push_back({&scope, &parameter});
    }
  }
  for (std::size_t i = 0; i < sides.size(); ++i) {
    if (sides[i].rows) patches.of_side[i] = make_patch(*sides[i].rows, changes[i]);
  }
  return patches;
}

}  // namespace lab
