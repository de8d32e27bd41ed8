#include "report/groups.h"

#include <algorithm>

#include "report/verdict.h"

namespace lab {
namespace {

// Returns the part that is equal in all scopes of a group.
ScopeReport common_part(const ScopeReport &scope) {
  ScopeReport common = scope;
  common.scope.name.clear();
  for (PairScope::End &end : common.scope.ends) {
    end = {.present = end.present, .port_name = {}, .others = {}};
  }
  common.missing_row.clear();
  for (ParameterReport &parameter : common.parameters) parameter.fix.reset();
  return common;
}

bool is_ungroupable(const ScopeReport &scope) {
  return scope.scope.kind != PairScope::Kind::of_channel || has_inconsistent_ports(scope) ||
         std::ranges::any_of(scope.scope.ends, [&](const PairScope::End &end) {
           return end.present && (end.port_name != scope.scope.name || !end.others.empty());
         });
}

}  // namespace

std::vector<ScopeGroup> group_scopes(const std::vector<const ScopeReport *> &scopes) {
  std::vector<ScopeGroup> groups;
  for (const ScopeReport *scope : scopes) {
    const bool is_alone = is_ungroupable(*scope);
    const ScopeReport common = common_part(*scope);
    const auto match = std::ranges::find_if(groups, [&](const ScopeGroup &group) {
      const ScopeReport &first = *group.scopes.front();
      return !is_alone && !is_ungroupable(first) && common_part(first) == common;
    });
    (match != groups.end() ? *match : groups.emplace_back()).scopes.push_back(scope);
  }
  for (ScopeGroup &group : groups) {
    group.name = join_ranges(
        describe_each(group.scopes, [](const ScopeReport *scope) { return scope->scope.name; }));
  }
  return groups;
}

std::vector<NoteGroup> group_notes(const std::vector<Note> &notes) {
  std::vector<NoteGroup> groups;
  for (const Note &note : notes) {
    const auto match = std::ranges::find_if(groups, [&](const NoteGroup &group) {
      Note first = *group.note;
      if (!first.channel.empty() && !note.channel.empty()) first.channel = note.channel;
      return first == note;
    });
    NoteGroup &group = match != groups.end() ? *match : groups.emplace_back(NoteGroup{{}, &note});
    if (!note.channel.empty()) group.channels.push_back(note.channel);
  }
  return groups;
}

std::string join_ranges(const std::vector<std::string> &names) {
  std::vector<std::string> parts;
  for (std::size_t start = 0, end = 0; start < names.size(); start = end) {
    const std::string &first = names[start];
    const std::size_t digits = first.find_last_not_of("0123456789") + 1;
    const auto number = parse_number(first.substr(digits));
    const auto is_in_range = [&](std::size_t i) {
      return number && names[i] == first.substr(0, digits) + std::to_string(*number + (i - start));
    };
    for (end = start + 1; is_in_range(start) && end < names.size() && is_in_range(end);) ++end;
    parts.push_back(first);
    if (end - start > 1) parts.back() += '-' + std::to_string(*number + (end - start - 1));
  }
  return join(parts, ",");
}

}  // namespace lab
