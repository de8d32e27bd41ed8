#include "compare.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <tuple>

#include "avl.h"
#include "draimiofaf/cache.h"
#include "draimiofaf/check.h"
#include "draimiofaf/foundation.h"
#include "satmgr.h"
#include "standin.h"

namespace lab {
namespace {

struct Verdict {
  uint32_t code;
  Bytes pass;
  Bytes fail;
};

// The library's check of a scope. A switch that has no array to give is checked without one.
Verdict check(const Json &scope, Bytes &local, Bytes &peer, const Twins &twins) {
  Verdict verdict{0, Bytes(sizeof(bmp4096_t)), Bytes(sizeof(bmp4096_t))};
  const uint32_t check_vlans = twins.named ? 1 : 0;
  const void *record = twins.record.data();
  void *pass = verdict.pass.data();
  void *fail = verdict.fail.data();
  void *own = local.empty() ? nullptr : local.data();
  void *theirs = peer.empty() ? nullptr : peer.data();
  verdict.code =
      scope["global"].get<bool>()
          ? stp_mcec_type1_cfg_compat_check(0, own, theirs, check_vlans, record, pass, fail)
          : stp_mcec_type1_cfg_compat_check_with_ifindex(scope["port"], 0, own, theirs, check_vlans,
                                                         record, pass, fail);
  return verdict;
}

// The mode by which the library compares; nothing: none is cached.
std::optional<uint32_t> cached_mode() {
  const type1_cfg_avl_node_t key{0, STP_MCEC_TYPE1_STP_MODE, 0, nullptr};
  const auto *node =
      static_cast<const type1_cfg_avl_node_t *>(avl_find(stp_mcec_type1_cfg_avl, &key));
  if (node == nullptr) return std::nullopt;
  return word_of(Bytes(node->val, node->val + node->len));
}

bool disagrees(const Json &scope, const Entry &local, const Entry &peer, const Twins &twins) {
  Bytes local_array = build_array({local});
  Bytes peer_array = build_array({peer});
  return check(scope, local_array, peer_array, twins).code ==
         stp_mcec_get_type1_cfg_compat_chk_errcode(local.type);
}

// Does the library look at a parameter at all? It is shown a pair that differs on every VLAN and in
// every byte. The answer hangs on the mode, the parameter and the kind of port alone.
bool is_compared(const Json &scope, uint16_t type, bool twins_named) {
  static std::map<std::tuple<std::optional<uint32_t>, uint16_t, bool, bool>, bool> known;
  const bool is_pod = !scope["global"].get<bool>() && satmgr_if_is_pod_port(scope["port"]) != 0;
  const auto [found, is_new] = known.try_emplace({cached_mode(), type, is_pod, twins_named}, false);
  if (is_new) {
    const ParameterName *parameter = find_parameter(uint32_t{type});
    if (parameter == nullptr) return false;
    const Twins all{twins_named, vlan_record({{0, 4095}})};
    found->second = disagrees(scope, {type, Bytes(parameter->length)},
                              {type, Bytes(parameter->length, 0xFF)}, all);
  }
  return found->second;
}

const char *uncompared_state(const Json &scope, uint16_t type, bool twins_named) {
  if (!cached_mode()) return "not compared without a mode";
  if (type == STP_MCEC_TYPE1_STP_ENDIS && is_compared(scope, type, true) && !twins_named) {
    return "not compared without twin VLANs";
  }
  const Json as_switch = {{"global", true}, {"port", 0}};
  if (is_compared(as_switch, type, twins_named)) return "ignored on pod ports";
  return "not compared in this mode";
}

const Entry *find_entry(const std::vector<Entry> &entries, uint16_t type) {
  const auto found = std::find_if(entries.begin(), entries.end(),
                                  [=](const Entry &entry) { return entry.type == type; });
  return found != entries.end() ? &*found : nullptr;
}

std::string state_of(const Json &scope, const Entry *local, const Entry *peer, const Twins &twins) {
  const uint16_t type = local != nullptr ? local->type : peer->type;
  const bool compared = is_compared(scope, type, twins.named);
  if (local == nullptr) return "only at the peer";
  if (peer == nullptr) {
    return compared ? "missing at the peer" : uncompared_state(scope, type, twins.named);
  }
  if (!compared) return uncompared_state(scope, type, twins.named);
  if (disagrees(scope, *local, *peer, twins)) return "different";
  return type == STP_MCEC_TYPE1_STP_ENDIS && local->value != peer->value ? "same on the twin VLANs"
                                                                         : "same";
}

// The twin VLANs that agree and those that do not; of values that do not differ, all agree.
void add_vlans(Json &result, const Json &scope, const Entry &local, const Entry &peer,
               const Twins &twins) {
  Bytes local_array = build_array({local});
  Bytes peer_array = build_array({peer});
  Verdict verdict = check(scope, local_array, peer_array, twins);
  if (local.value == peer.value) verdict.pass = twins.record;
  result["pass"] = vlan_text(verdict.pass);
  result["fail"] = vlan_text(verdict.fail);
}

}  // namespace

Twins twins_of(const Json &request) {
  if (!request.contains("twin-vlans")) return {};
  return {true, unhex(request["twin-vlans"].get<std::string>())};
}

Json compare(const Json &scope, Bytes local, Bytes peer, const Twins &twins) {
  Json result = {{"global", scope["global"]}, {"port", scope["port"]}};
  {
    const LibraryCall call;
    result["verdict"] = check(scope, local, peer, twins).code;
  }
  result["pod"] = !scope["global"].get<bool>() && satmgr_if_is_pod_port(scope["port"]) != 0;

  // The checks below are the lab's own questions: they are not for the switch's history.
  const uint32_t logged = standin_history_count();
  const std::vector<Entry> locals = entries_of(local.empty() ? nullptr : local.data());
  const std::vector<Entry> peers = entries_of(peer.empty() ? nullptr : peer.data());
  std::set<uint16_t> types;
  for (const auto *entries : {&locals, &peers}) {
    for (const Entry &entry : *entries) types.insert(entry.type);
  }
  Json &parameters = result["parameters"] = Json::array();
  for (const uint16_t type : types) {
    const Entry *own = find_entry(locals, type);
    const Entry *theirs = find_entry(peers, type);
    Json parameter = {{"type", type}};
    if (own != nullptr) parameter["local"] = hex(own->value);
    if (theirs != nullptr) parameter["peer"] = hex(theirs->value);
    parameter["state"] = state_of(scope, own, theirs, twins);
    if (type == STP_MCEC_TYPE1_STP_ENDIS && own != nullptr && theirs != nullptr &&
        is_compared(scope, type, twins.named)) {
      add_vlans(result, scope, *own, *theirs, twins);
    }
    parameters.push_back(std::move(parameter));
  }
  standin_history_truncate(logged);
  return result;
}

}  // namespace lab
