#include "pair/compare.h"

#include <algorithm>
#include <map>
#include <set>
#include <tuple>

#include "avl.h"
#include "draimiofaf/cache.h"
#include "draimiofaf/check.h"
#include "draimiofaf/foundation.h"
#include "satmgr.h"
#include "standin.h"
#include "switch/arrays.h"
#include "switch/values.h"

namespace lab {
namespace {

using Twins = std::optional<Vlans>;

// A VLAN set as a check is given and fills one: with its size word in host order.
Bytes host_record(const Vlans &vlans) {
  Bytes record = vlan_record(vlans);
  stp_mcec_lib_bmp4096_ntoh(record.data(), record.data());
  return record;
}

struct Verdict {
  uint32_t code;
  Bytes pass;
  Bytes fail;
};

// The library's check of a scope. A switch that has no array to give is checked without one.
Verdict check(const Scope &scope, Bytes &local, Bytes &peer, const Twins &twins) {
  Verdict verdict{0, Bytes(sizeof(bmp4096_t)), Bytes(sizeof(bmp4096_t))};
  const Bytes record = host_record(twins.value_or(Vlans{}));
  const uint32_t check_vlans = twins ? 1 : 0;
  void *pass = verdict.pass.data();
  void *fail = verdict.fail.data();
  void *own = local.empty() ? nullptr : local.data();
  void *theirs = peer.empty() ? nullptr : peer.data();
  verdict.code =
      scope.global
          ? stp_mcec_type1_cfg_compat_check(0, own, theirs, check_vlans, record.data(), pass, fail)
          : stp_mcec_type1_cfg_compat_check_with_ifindex(scope.port, 0, own, theirs, check_vlans,
                                                         record.data(), pass, fail);
  return verdict;
}

bool is_pod(const Scope &scope) {
  return !scope.global && satmgr_if_is_pod_port(scope.port) != 0;
}

// The mode by which the library compares; nothing: none is cached.
std::optional<uint32_t> cached_mode() {
  const type1_cfg_avl_node_t key{0, STP_MCEC_TYPE1_STP_MODE, 0, nullptr};
  const auto *node =
      static_cast<const type1_cfg_avl_node_t *>(avl_find(stp_mcec_type1_cfg_avl, &key));
  if (node == nullptr) return std::nullopt;
  return word_of(Bytes(node->val, node->val + node->len));
}

Verdict check_alone(const Scope &scope, const Entry &local, const Entry &peer, const Twins &twins) {
  Bytes local_array = build_array({local});
  Bytes peer_array = build_array({peer});
  return check(scope, local_array, peer_array, twins);
}

bool disagrees(const Scope &scope, const Entry &local, const Entry &peer, const Twins &twins) {
  return check_alone(scope, local, peer, twins).code ==
         stp_mcec_get_type1_cfg_compat_chk_errcode(local.type);
}

// Does the library look at a parameter at all? It is shown a pair that differs on every VLAN and in
// every byte. The answer hangs on the mode, the parameter and the kind of port alone.
bool is_compared(const Scope &scope, uint16_t type, bool twins_named) {
  static std::map<std::tuple<std::optional<uint32_t>, uint16_t, bool, bool>, bool> known;
  const auto [found, is_new] =
      known.try_emplace({cached_mode(), type, is_pod(scope), twins_named}, false);
  const ParameterName *parameter = find_parameter(uint32_t{type});
  if (is_new && parameter != nullptr) {
    const Twins all = twins_named ? Twins(~Vlans{}) : std::nullopt;
    found->second = disagrees(scope, {type, Bytes(parameter->length)},
                              {type, Bytes(parameter->length, 0xFF)}, all);
  }
  return found->second;
}

State uncompared_state(const Scope &scope, uint16_t type, bool twins_named) {
  if (!cached_mode()) return State::not_without_mode;
  if (type == STP_MCEC_TYPE1_STP_ENDIS && is_compared(scope, type, true) && !twins_named) {
    return State::not_without_twins;
  }
  return is_compared({}, type, twins_named) ? State::ignored_on_pod : State::not_in_mode;
}

const Entry *find_entry(const std::vector<Entry> &entries, uint16_t type) {
  const auto found = std::find_if(entries.begin(), entries.end(),
                                  [=](const Entry &entry) { return entry.type == type; });
  return found != entries.end() ? &*found : nullptr;
}

State state_of(const Scope &scope, const Entry *local, const Entry *peer, const Twins &twins) {
  if (local == nullptr) return State::only_at_peer;
  const uint16_t type = local->type;
  if (!is_compared(scope, type, twins.has_value())) {
    return uncompared_state(scope, type, twins.has_value());
  }
  if (peer == nullptr) return State::missing_at_peer;
  if (local->value == peer->value) return State::same;
  if (disagrees(scope, *local, *peer, twins)) return State::different;
  return type == STP_MCEC_TYPE1_STP_ENDIS ? State::same_on_twins : State::same;
}

// The twin VLANs that agree and those that do not; of values that do not differ, all agree.
void add_vlans(View &view, const Scope &scope, const Entry &local, const Entry &peer,
               const Vlans &twins) {
  if (local.value == peer.value) {
    view.pass = twins;
    view.fail = Vlans{};
    return;
  }
  const Verdict verdict = check_alone(scope, local, peer, twins);
  view.pass = vlans_of_record(verdict.pass);
  view.fail = vlans_of_record(verdict.fail);
}

}  // namespace

LibraryCall::LibraryCall() {
  standin_suspend_failures(0);
}

LibraryCall::~LibraryCall() {
  standin_suspend_failures(1);
}

View compare(const Scope &scope, Bytes local, Bytes peer, const Twins &twins) {
  View view;
  {
    const LibraryCall call;
    view.verdict = check(scope, local, peer, twins).code;
  }
  view.pod = is_pod(scope);

  // The checks below are the lab's own questions: they are not for the switch's history.
  const uint32_t logged = standin_history_count();
  const std::vector<Entry> locals = entries_of(local);
  const std::vector<Entry> peers = entries_of(peer);
  std::set<uint16_t> types;
  for (const auto *entries : {&locals, &peers}) {
    for (const Entry &entry : *entries) types.insert(entry.type);
  }
  for (const uint16_t type : types) {
    const Entry *own = find_entry(locals, type);
    const Entry *theirs = find_entry(peers, type);
    View::Parameter parameter{type, {}, {}, state_of(scope, own, theirs, twins)};
    if (own != nullptr) parameter.local = own->value;
    if (theirs != nullptr) parameter.peer = theirs->value;
    if (type == STP_MCEC_TYPE1_STP_ENDIS && own != nullptr && theirs != nullptr && twins &&
        is_compared(scope, type, true)) {
      add_vlans(view, scope, *own, *theirs, *twins);
    }
    view.parameters.push_back(std::move(parameter));
  }
  standin_history_truncate(logged);
  return view;
}

}  // namespace lab
