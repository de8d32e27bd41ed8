#include "report/groups.h"

#include <algorithm>

namespace lab {
namespace {

// What must be equal in the scopes of a group.
ScopeReport without_name(const ScopeReport &scope) {
  ScopeReport common = scope;
  common.scope.name.clear();
  for (PairScope::End &end : common.scope.ends) {
    end = {.present = end.present, .port_name = {}, .others = {}};
  }
  common.missing_row.clear();
  for (ParameterReport &parameter : common.parameters) parameter.fix.reset();
  return common;
}

bool has_ports_of_its_own(const ScopeReport &scope) {
  return scope.scope.kind != PairScope::Kind::of_channel || has_inconsistent_ports(scope) ||
         std::ranges::any_of(scope.scope.ends, [&](const PairScope::End &end) {
           return end.present && (end.port_name != scope.scope.name || !end.others.empty());
         });
}

// A name that ends in a number without leading zeros.
struct NumberedName {
  std::string stem;
  std::optional<uint32_t> number;
};

NumberedName split_number(const std::string &name) {
  const std::size_t digits = name.find_last_not_of("0123456789") + 1;
  const std::string number = name.substr(digits);
  if (number.empty() || number.size() > 9 || (number[0] == '0' && number.size() > 1)) {
    return {name, std::nullopt};
  }
  return {name.substr(0, digits), parse_number(number)};
}

}  // namespace

std::vector<ScopeGroup> group_scopes(const std::vector<const ScopeReport *> &scopes) {
  std::vector<ScopeGroup> groups;
  std::vector<ScopeReport> commons;  // of the groups
  for (const ScopeReport *scope : scopes) {
    const bool is_alone = has_ports_of_its_own(*scope);
    ScopeReport common = is_alone ? ScopeReport() : without_name(*scope);
    const auto like = is_alone ? commons.end() : std::ranges::find(commons, common);
    const auto at = std::size_t(like - commons.begin());
    if (at == groups.size()) {
      groups.emplace_back();
      commons.push_back(std::move(common));
    }
    groups[at].scopes.push_back(scope);
  }
  for (ScopeGroup &group : groups) {
    std::vector<std::string> names;
    for (const ScopeReport *scope : group.scopes) names.push_back(scope->scope.name);
    group.name = join_ranges(names);
  }
  return groups;
}

std::vector<NoteGroup> group_notes(const std::vector<NoteReport> &notes) {
  std::vector<NoteGroup> groups;
  std::vector<std::vector<std::string>> channels;  // of the groups
  for (const NoteReport &note : notes) {
    const auto same = std::ranges::find_if(groups, [&](const NoteGroup &group) {
      NoteReport alike = *group.note;
      const bool are_of_channels = !alike.note.channel.empty() && !note.note.channel.empty();
      if (are_of_channels) alike.note.channel = note.note.channel;
      return alike == note;
    });
    const auto at = std::size_t(same - groups.begin());
    if (same == groups.end()) {
      groups.push_back({"", &note});
      channels.emplace_back();
    }
    if (!note.note.channel.empty()) channels[at].push_back(note.note.channel);
  }
  for (std::size_t i = 0; i < groups.size(); ++i) groups[i].channels = join_ranges(channels[i]);
  return groups;
}

std::string join_ranges(const std::vector<std::string> &names) {
  std::vector<std::string> parts;
  for (std::size_t at = 0; at < names.size();) {
    const NumberedName first = split_number(names[at]);
    std::size_t end = at + 1;
    for (; first.number && end < names.size(); ++end) {
      const NumberedName next = split_number(names[end]);
      if (next.stem != first.stem || next.number != *first.number + (end - at)) break;
    }
    parts.push_back(names[at]);
    if (end - at > 1) parts.back() += '-' + std::to_string(*first.number + (end - at - 1));
    at = end;
  }
  return join(parts, ",");
}

Fix widen_fix(Fix fix, const ScopeGroup &group) {
  if (fix.channel.empty()) return fix;
  for (auto &changes : fix.alone) {
    if (!changes) continue;
    for (Change &change : *changes) {
      if (change.key == fix.channel) change.key = group.name;
    }
  }
  fix.channel = group.name;
  return fix;
}

std::string widen_missing_row(const ScopeGroup &group) {
  std::string row = group.scopes.front()->missing_row;
  const std::string &name = group.scopes.front()->scope.name;
  if (row.ends_with(name)) row.replace(row.size() - name.size(), name.size(), group.name);
  return row;
}

}  // namespace lab
