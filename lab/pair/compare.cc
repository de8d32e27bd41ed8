#include "pair/compare.h"

#include <algorithm>
#include <set>

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

// The library's check of a scope. A switch that has no array to give is checked without one.
uint32_t check(const Scope &scope, Bytes &local, Bytes &peer, const Twins &twins) {
  const Bytes record = host_record(twins.value_or(Vlans{}));
  Bytes pass(sizeof(bmp4096_t));
  Bytes fail(sizeof(bmp4096_t));
  const uint32_t check_vlans = twins ? 1 : 0;
  void *own = local.empty() ? nullptr : local.data();
  void *theirs = peer.empty() ? nullptr : peer.data();
  if (scope.global) {
    return stp_mcec_type1_cfg_compat_check(0, own, theirs, check_vlans, record.data(), pass.data(),
                                           fail.data());
  }
  return stp_mcec_type1_cfg_compat_check_with_ifindex(scope.port, 0, own, theirs, check_vlans,
                                                      record.data(), pass.data(), fail.data());
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

// Why a parameter is not compared.
State uncompared_state(const Parameter &parameter, std::optional<uint32_t> mode, bool has_twins) {
  if (!mode) return State::not_without_mode;
  if (is_compared(parameter, mode, false, has_twins)) return State::ignored_on_pod;
  return is_compared(parameter, mode, false, true) ? State::not_without_twins : State::not_in_mode;
}

// A peer's value that begins with all of the local one agrees with it.
bool is_same(const Bytes &local, const Bytes &peer) {
  return local.size() <= peer.size() && std::equal(local.begin(), local.end(), peer.begin());
}

State state_of(const View &view, const Entry *local, const Entry *peer,
               std::optional<uint32_t> mode, const Twins &twins) {
  if (local == nullptr) return State::only_at_peer;
  const Parameter *parameter = find_parameter(uint32_t{local->type});
  if (parameter == nullptr) return mode ? State::not_in_mode : State::not_without_mode;
  if (!is_compared(*parameter, mode, view.pod, twins.has_value())) {
    return uncompared_state(*parameter, mode, twins.has_value());
  }
  if (peer == nullptr) return State::missing_at_peer;
  if (is_same(local->value, peer->value)) return State::same;
  const bool has_vlans = parameter->kind == STP_MCEC_KIND_VLANS;
  const std::size_t least = std::min(local->value.size(), peer->value.size());
  if (!has_vlans || least < parameter->length) return State::different;
  const Vlans differ = vlans_of_record(local->value) ^ vlans_of_record(peer->value);
  return (differ & *twins).any() ? State::different : State::same_on_twins;
}

// The twin VLANs that agree and those that do not. Values that are no whole records have no VLANs.
void add_vlans(View &view, const Entry &local, const Entry &peer, const Vlans &twins) {
  const std::size_t least = std::min(local.value.size(), peer.value.size());
  const bool are_whole = least >= sizeof(bmp4096_t) || is_same(local.value, peer.value);
  const Vlans differ = vlans_of_record(local.value) ^ vlans_of_record(peer.value);
  view.pass = are_whole ? twins & ~differ : Vlans{};
  view.fail = are_whole ? twins & differ : Vlans{};
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
    view.verdict = check(scope, local, peer, twins);
  }
  view.pod = is_pod(scope);

  const std::optional<uint32_t> mode = cached_mode();
  const std::vector<Entry> locals = entries_of(local);
  const std::vector<Entry> peers = entries_of(peer);
  std::set<uint16_t> types;
  for (const auto *entries : {&locals, &peers}) {
    for (const Entry &entry : *entries) types.insert(entry.type);
  }
  for (const uint16_t type : types) {
    const Entry *own = find_entry(locals, type);
    const Entry *theirs = find_entry(peers, type);
    View::Parameter parameter{type, {}, {}, state_of(view, own, theirs, mode, twins)};
    if (own != nullptr) parameter.local = own->value;
    if (theirs != nullptr) parameter.peer = theirs->value;
    if (type == STP_MCEC_TYPE1_STP_ENDIS && own != nullptr && theirs != nullptr && twins &&
        mode == STP_MCEC_STP_MODE_RAPID_PVST) {
      add_vlans(view, *own, *theirs, *twins);
    }
    view.parameters.push_back(std::move(parameter));
  }
  return view;
}

}  // namespace lab
