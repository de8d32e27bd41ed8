#include "tasks/check.h"

#include <algorithm>
#include <set>

#include "draimiofaf/types.h"
#include "switch/arrays.h"

namespace lab {
namespace {

// Returns why a parameter is not compared.
State uncompared_state(const Parameter &parameter, std::optional<uint32_t> mode, bool has_twins) {
  if (!mode) return State::not_without_mode;
  if (is_compared(parameter, mode, false, has_twins)) return State::ignored_on_pod;
  return is_compared(parameter, mode, false, true) ? State::not_without_twins : State::not_in_mode;
}

// The library compares as many bytes as the local value has: a longer peer value can match.
bool matches_peer(const Bytes &local, const Bytes &peer) {
  return local.size() <= peer.size() && std::equal(local.begin(), local.end(), peer.begin());
}

State find_state(const ScopeAnswer &side, const Entry *local, const Entry *peer,
                 const std::optional<Vlans> &twins) {
  if (local == nullptr) return State::only_at_peer;
  const Parameter *parameter = find_parameter(uint32_t{local->type});
  if (parameter == nullptr) return side.mode ? State::not_in_mode : State::not_without_mode;
  if (!is_compared(*parameter, side.mode, side.on_pod, twins.has_value())) {
    return uncompared_state(*parameter, side.mode, twins.has_value());
  }
  if (peer == nullptr) return State::missing_at_peer;
  if (matches_peer(local->value, peer->value)) return State::same;
  const bool has_vlans = parameter->kind == STP_MCEC_KIND_VLANS;
  const std::size_t shorter = std::min(local->value.size(), peer->value.size());
  if (!has_vlans || shorter < parameter->length) return State::different;
  const Vlans differ = vlans_of_record(local->value) ^ vlans_of_record(peer->value);
  return (differ & *twins).any() ? State::different : State::same_on_twins;
}

// Splits the twin VLANs into those that agree and those that differ. Leaves both sets empty if the
// values differ and one is too short for a bitmap record.
void add_vlans(ScopeReport &report, const Bytes &local, const Bytes &peer, const Vlans &twins) {
  const bool are_complete =
      std::min(local.size(), peer.size()) >= sizeof(bmp4096_t) || matches_peer(local, peer);
  const Vlans differ = vlans_of_record(local) ^ vlans_of_record(peer);
  report.pass = are_complete ? twins & ~differ : Vlans{};
  report.fail = are_complete ? twins & differ : Vlans{};
}

ScopeReport report_scope(const PairScope &scope, const std::array<const ScopeAnswer *, 2> &answers,
                         const std::optional<Vlans> &twins) {
  ScopeReport report;
  report.scope = scope;
  std::array<std::vector<Entry>, 2> entries;
  std::set<uint16_t> types;
  for (std::size_t side = 0; side < answers.size(); ++side) {
    report.on_pod = report.on_pod || answers[side]->on_pod;
    report.codes[side] = answers[side]->code;
    report.inconsistent[side] = answers[side]->inconsistent;
    entries[side] = entries_of(answers[side]->array);
    for (const Entry &entry : entries[side]) types.insert(entry.type);
  }
  for (const uint16_t type : types) {
    ParameterReport &parameter = report.parameters.emplace_back();
    parameter.type = type;
    for (std::size_t side = 0; side < answers.size(); ++side) {
      const Entry *local = find_entry(entries[side], type);
      const Entry *peer = find_entry(entries[1 - side], type);
      if (local != nullptr) parameter.values[side] = local->value;
      parameter.states[side] = find_state(*answers[side], local, peer, twins);
      if (type == STP_MCEC_TYPE1_STP_ENDIS && local != nullptr && peer != nullptr && twins &&
          answers[side]->mode == STP_MCEC_STP_MODE_RAPID_PVST && !report.pass) {
        add_vlans(report, local->value, peer->value, *twins);
      }
    }
  }
  return report;
}

}  // namespace

std::vector<ScopeReport> report_scopes(const Check &check, const Replies &replies) {
  std::vector<ScopeReport> reports;
  for (const Reply &reply : replies) {
    if (reply.checked.size() != check.scopes.size()) {
      throw SwitchFailed("a switch did not check the scopes of the request");
    }
  }
  for (std::size_t i = 0; i < check.scopes.size(); ++i) {
    reports.push_back(report_scope(check.scopes[i],
                                   {&replies[0].checked[i], &replies[1].checked[i]}, check.twins));
  }
  return reports;
}

std::vector<ScopeReport> check_scopes(Pair &pair, const Check &check) {
  return report_scopes(check, ask(pair, {{{check}, {check}}}));
}

}  // namespace lab
