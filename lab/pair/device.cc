#include "pair/device.h"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <set>
#include <stdexcept>

#include "avl.h"
#include "draimiofaf/cache.h"
#include "draimiofaf/check.h"
#include "draimiofaf/extract.h"
#include "draimiofaf/foundation.h"
#include "mts.h"
#include "pair/wire.h"
#include "satmgr.h"
#include "standin.h"
#include "switch/arrays.h"
#include "switch/values.h"

namespace lab {
namespace {

constexpr uint8_t ethernet_port_type = 26;

struct FreeMessage {
  void operator()(void *msg) const { standin_message_free(msg); }
};
using Message = std::unique_ptr<void, FreeMessage>;

// Enables the failures that a scenario injects while the library is called. They are suspended
// otherwise, so that the lab's own calls of the platform do not fail.
struct LibraryCall {
  LibraryCall() { standin_suspend_failures(0); }
  ~LibraryCall() { standin_suspend_failures(1); }
};

LastLines *last_lines_of_process;

void store_line(const char *line) {
  LastLines &lines = *last_lines_of_process;
  char *text = lines.text[lines.count % LastLines::kept];
  std::strncpy(text, line, sizeof lines.text[0] - 1);
  ++lines.count;
}

struct Device {
  int peer;          // socket to the other switch
  std::size_t side;  // 0: left, 1: right
  std::optional<Settings> settings = {};
};

void reset_platform() {
  standin_reset();
  standin_on_history(store_line);
  standin_suspend_failures(1);
}

std::string find_port_name(const Device &device, uint32_t index) {
  const Port *port = device.settings ? find_port(*device.settings, index) : nullptr;
  return port != nullptr ? port_name(*port) : port_text(index);
}

void add_result(uint32_t code, SwitchReport &report) {
  if (report.result.value_or(0) == 0) report.result = code;
}

template <class List>
List &make_list(std::optional<List> &list) {
  return list ? *list : list.emplace();
}

// --- arrays ---

void *data_of(Bytes &array) {
  return array.empty() ? nullptr : array.data();
}

Bytes export_scope(const Scope &scope, uint32_t *result = nullptr) {
  void *out = nullptr;
  {
    const LibraryCall call;
    const uint32_t code = stp_mcec_type1_cfg_get_params(scope.global, scope.port, &out);
    if (result != nullptr) *result = code;
  }
  const Block<uint8_t> array(static_cast<uint8_t *>(out));
  return array ? Bytes(array.get(), array.get() + standin_tlv_array_bytes(array.get())) : Bytes();
}

// Builds an update message. The cache is updated from a message with the same payload.
Message make_update(uint32_t opcode, const Scope &scope, const std::vector<Entry> &entries) {
  const Bytes array = build_array(entries);
  const uint32_t header[] = {uint32_t{scope.global}, scope.port, 0, uint32_t(array.size())};
  static_assert(sizeof header == STP_MCEC_TYPE1_UPD_HDR_SIZE);
  Bytes payload(sizeof header + array.size());
  std::memcpy(payload.data(), header, sizeof header);
  std::memcpy(payload.data() + sizeof header, array.data(), array.size());
  return Message(standin_message(opcode, payload.data(), payload.size()));
}

uint32_t update_cache(const Scope &scope, const std::vector<Entry> &entries) {
  const Message msg = make_update(0, scope, entries);
  const LibraryCall call;
  return stp_mcec_type1_cfg_cache_update(0, scope.global, scope.port, msg.get());
}

uint32_t delete_cache(const Scope &scope) {
  const LibraryCall call;
  return stp_mcec_type1_cfg_cache_update(1, scope.global, scope.port, nullptr);
}

// --- operations of the library ---

void extract(const Device &device, void *msg, SwitchReport &report) {
  uint8_t *array = nullptr;
  uint32_t count = 0;
  uint32_t is_cmd = 0;
  mcecm_app_cmd_extract_info_t *info = nullptr;
  {
    const LibraryCall call;
    add_result(stp_mcec_type1_cfg_param_extractor(msg, &array, &count, &is_cmd, &info), report);
  }
  const Block<uint8_t> owned_array(array);
  const Block<mcecm_app_cmd_extract_info_t> owned_info(info);
  for (uint32_t i = 0; info != nullptr && i < count; ++i) {
    make_list(report.records)
        .push_back({.type = info[i].type,
                    .port = info[i].is_global != 0 ? "" : find_port_name(device, info[i].if_index),
                    .is_valid = info[i].valid == 1});
  }
  std::vector<Entry> &values = make_list(report.values);
  if (array == nullptr) return;
  for (const Entry &entry : entries_of({array, array + standin_tlv_array_bytes(array)})) {
    if (std::ranges::count(values, entry) == 0) values.push_back(entry);
  }
}

void perform(Device &device, const Command &command, Reply &reply) {
  std::vector<standin_attribute_t> attributes;
  for (const Command::Attribute &attribute : command.attributes) {
    attributes.push_back({attribute.id, uint32_t(attribute.value.size()), attribute.value.data()});
  }
  const Message msg(standin_command(command.id, command.positive ? 1 : 0, attributes.data(),
                                    uint32_t(attributes.size())));
  standin_answers_clear();
  reply.report.is_command = true;
  extract(device, msg.get(), reply.report);
  if (standin_answer_count() == 0) return;
  const standin_answer_t answer = standin_answer_at(standin_answer_count() - 1);
  std::string text = printable_lines(answer.text);
  text.erase(text.find_last_not_of('\n') + 1);
  reply.report.answer = CommandAnswer{answer.accepted != 0, text};
}

void perform(Device &device, const Update &update, Reply &reply) {
  const Message msg = make_update(STP_MCEC_MTS_OPC_TYPE1_UPD, update.scope, update.entries);
  extract(device, msg.get(), reply.report);
}

void perform(Device &, const CacheUpdate &update, Reply &reply) {
  add_result(update_cache(update.scope, update.entries), reply.report);
}

void perform(Device &, const Delete &deleted, Reply &reply) {
  add_result(delete_cache(deleted.scope), reply.report);
}

void perform(Device &, const Export &exported, Reply &reply) {
  uint32_t result = 0;
  reply.report.exported = export_scope(exported.scope, &result);
  add_result(result, reply.report);
}

void perform(Device &, const Rebuild &rebuild, Reply &reply) {
  Bytes array = rebuild.array;
  const LibraryCall call;
  add_result(stp_mcec_type1_cfg_cache_rebuild(data_of(array), 0, rebuild.scope.port), reply.report);
}

void perform(Device &device, const Report &request, Reply &reply) {
  Bytes array = export_scope(request.scope);
  void *block = nullptr;
  {
    const LibraryCall call;
    add_result(stp_mcec_type1_cfg_get_param_info(data_of(array), &block), reply.report);
  }
  const Block<mcecm_app_info_report_t> report(static_cast<mcecm_app_info_report_t *>(block));
  std::vector<DisplayRecord> &display = make_list(reply.report.display);
  for (uint32_t i = 0; report && i < report->count; ++i) {
    const mcecm_app_info_t &record = report->records[i];
    display.push_back(
        {.scope = request.scope.global ? "switch" : find_port_name(device, request.scope.port),
         .type = record.param_type,
         .component = printable(record.component),
         .name = printable(record.param_name),
         .value = printable(record.param_value)});
  }
}

// --- the platform and the process ---

void perform(Device &device, const ChangePlatform &change, Reply &) {
  device.settings = change.settings;
  standin_set_trunk(change.settings.trunk ? 1 : 0);
  standin_clear_user_vlans();
  for (const auto &[first, last] : ranges_of(change.settings.user_vlans)) {
    standin_add_user_vlans(first, last);
  }
  for (const Port &port : change.settings.ports) {
    standin_add_ports(port.index, port.index, ethernet_port_type, STP_MCEC_IF_LAYER_MODE_ACCEPTED);
    standin_set_member(port.index, port.channel);
    standin_set_pod_port(port.index, port.pod ? 1 : 0);
  }
  for (const Channel &channel : change.settings.channels) {
    standin_set_internal(channel.id, channel.internal ? 1 : 0);
  }
}

void perform(Device &device, const SetUp &set_up, Reply &reply) {
  if (device.settings) {  // remove the previous switch
    delete_cache({});
    for (const Port &port : device.settings->ports) delete_cache({false, port.index});
    reset_platform();
  }
  perform(device, ChangePlatform{set_up.settings}, reply);
  for (const Port &port : set_up.settings.ports) {
    if (!port.parameters.empty()) update_cache({false, port.index}, port.parameters);
  }
  if (!set_up.settings.parameters.empty()) update_cache({}, set_up.settings.parameters);
}

void perform(Device &, const Fail &fail, Reply &) {
  standin_fail(static_cast<standin_operation_t>(fail.operation), fail.nth, fail.times);
}

void perform(Device &, const Crash &crash, Reply &) {
  std::signal(crash.signal, SIG_DFL);  // a sanitizer installs handlers
  std::raise(crash.signal);
}

// --- checks ---

constexpr char peer_closed[] = "the other switch closed the connection";

// Sends the array of a scope and receives the peer's, which is empty or complete. One side sends
// first, because two blocking writes of large arrays would wait for each other.
Bytes exchange_arrays(const Device &device, const Bytes &own) {
  const auto send = [&] {
    if (!write_frame(device.peer, own)) throw std::runtime_error(peer_closed);
  };
  if (device.side == 0) send();
  const std::optional<Bytes> frame = read_frame(device.peer);
  if (device.side != 0) send();
  if (!frame) throw std::runtime_error(peer_closed);
  const bool is_complete = frame->size() >= STP_MCEC_TLV_ARRAY_HDR_SIZE &&
                           standin_tlv_array_bytes(frame->data()) == frame->size();
  if (!is_complete && !frame->empty()) {
    throw std::runtime_error("the other switch sent an array with a wrong length");
  }
  return *frame;
}

// Calls the library's check of a scope. An empty array is passed as a null pointer. The record of
// the twin VLANs is in host byte order.
uint32_t check(const Scope &scope, Bytes local, Bytes peer, uint32_t check_vlans, Bytes twins) {
  Bytes pass(twins.size());
  Bytes fail(twins.size());
  const LibraryCall call;
  if (scope.global) {
    return stp_mcec_type1_cfg_compat_check(0, data_of(local), data_of(peer), check_vlans,
                                           twins.data(), pass.data(), fail.data());
  }
  return stp_mcec_type1_cfg_compat_check_with_ifindex(scope.port, 0, data_of(local), data_of(peer),
                                                      check_vlans, twins.data(), pass.data(),
                                                      fail.data());
}

std::optional<uint32_t> cached_mode() {
  const type1_cfg_avl_node_t key{0, STP_MCEC_TYPE1_STP_MODE, 0, nullptr};
  const auto *node =
      static_cast<const type1_cfg_avl_node_t *>(avl_find(stp_mcec_type1_cfg_avl, &key));
  if (node == nullptr) return std::nullopt;
  return word_of(Bytes(node->val, node->val + node->len));
}

// Compares the other ports of a channel with the array of its first port.
std::vector<InconsistentPort> find_inconsistent_ports(
    const Bytes &first, const std::vector<PairScope::Member> &members) {
  const std::vector<Entry> expected = entries_of(first);
  std::vector<InconsistentPort> inconsistent;
  for (const PairScope::Member &port : members) {
    const Bytes array = export_scope({false, port.port});
    if (array == first) continue;
    const std::vector<Entry> found = entries_of(array);
    std::set<uint16_t> types;
    for (const Entry &entry : expected) {
      if (std::ranges::count(found, entry) == 0) types.insert(entry.type);
    }
    for (const Entry &entry : found) {
      if (std::ranges::count(expected, entry) == 0) types.insert(entry.type);
    }
    inconsistent.push_back({port.name, {types.begin(), types.end()}});
  }
  return inconsistent;
}

void perform(Device &device, const Check &request, Reply &reply) {
  Bytes twins = vlan_record(request.twins.value_or(Vlans{}));
  stp_mcec_lib_bmp4096_ntoh(twins.data(), twins.data());
  for (const PairScope &pair_scope : request.scopes) {
    const PairScope::End &end = pair_scope.ends[device.side];
    const Scope scope{pair_scope.kind == PairScope::Kind::of_switch, end.port};
    ScopeAnswer &answer = reply.checked.emplace_back();
    if (end.present) answer.array = export_scope(scope);
    answer.code = check(scope, answer.array, exchange_arrays(device, answer.array),
                        request.twins ? 1 : 0, twins);
    answer.on_pod = !scope.global && satmgr_if_is_pod_port(scope.port) != 0;
    answer.mode = cached_mode();
    answer.inconsistent = find_inconsistent_ports(answer.array, end.others);
  }
}

Reply perform_all(Device &device, const Request &request) {
  Reply reply;
  try {
    for (const Operation &operation : request.operations) {
      standin_history_clear();
      std::visit([&](const auto &alternative) { perform(device, alternative, reply); }, operation);
      for (uint32_t i = 0; request.log && i < standin_history_count(); ++i) {
        reply.report.log.push_back(log_line(standin_history_line(i)));
      }
    }
  } catch (const std::runtime_error &error) {
    reply.problem = error.what();
  }
  return reply;
}

}  // namespace

void serve(int control, int peer, std::size_t side, LastLines &last_lines) {
  last_lines_of_process = &last_lines;
  reset_platform();
  Device device{peer, side};
  while (const std::optional<Bytes> frame = read_frame(control)) {
    if (!write_frame(control, encode(perform_all(device, decode_request(*frame))))) return;
  }
}

}  // namespace lab
