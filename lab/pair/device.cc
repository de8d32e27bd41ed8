#include "pair/device.h"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <functional>
#include <stdexcept>

#include "draimiofaf/cache.h"
#include "draimiofaf/check.h"
#include "draimiofaf/extract.h"
#include "mts.h"
#include "pair/compare.h"
#include "pair/wire.h"
#include "standin.h"
#include "switch/arrays.h"

namespace lab {
namespace {

struct Message {
  void *msg;
  explicit Message(void *made) : msg(made) {}
  Message(const Message &) = delete;
  Message &operator=(const Message &) = delete;
  ~Message() { standin_message_free(msg); }
};

// The platform's type of an Ethernet port.
constexpr uint8_t ethernet_type = 26;

LastLines *last_lines_of_process;

void keep_line(const char *line) {
  LastLines &lines = *last_lines_of_process;
  char *text = lines.text[lines.count % LastLines::kept];
  std::strncpy(text, line, sizeof lines.text[0] - 1);
  ++lines.count;
}

// The line to the other switch.
struct ToPeer {
  int socket;
  bool speaks_first;
};

void reset_platform() {
  standin_reset();
  standin_on_history(keep_line);
  standin_suspend_failures(1);
}

int32_t is_global(const Scope &scope) {
  return scope.global ? 1 : 0;
}

// --- arrays ---

Exported export_scope(const Scope &scope) {
  void *out = nullptr;
  Exported exported{};
  {
    const LibraryCall call;
    exported.result = stp_mcec_type1_cfg_get_params(is_global(scope), scope.port, &out);
  }
  const Block<uint8_t> array(static_cast<uint8_t *>(out));
  if (array) {
    exported.array = {array.get(), array.get() + standin_tlv_array_bytes(array.get())};
  }
  return exported;
}

// An array that came over a socket: none, or as long as it says it is.
Bytes received_array(const std::optional<Bytes> &frame) {
  if (!frame) throw std::runtime_error("the other switch is gone");
  const bool whole = frame->size() >= STP_MCEC_TLV_ARRAY_HDR_SIZE &&
                     standin_tlv_array_bytes(frame->data()) == frame->size();
  if (!whole && !frame->empty()) {
    throw std::runtime_error("the other switch sent an array of another length than it says");
  }
  return *frame;
}

Bytes update_payload(const Scope &scope, const std::vector<Entry> &entries) {
  const Bytes array = build_array(entries);
  const uint32_t header[] = {uint32_t(is_global(scope)), scope.port, 0, uint32_t(array.size())};
  static_assert(sizeof header == STP_MCEC_TYPE1_UPD_HDR_SIZE);
  Bytes payload(sizeof header + array.size());
  std::memcpy(payload.data(), header, sizeof header);
  std::memcpy(payload.data() + sizeof header, array.data(), array.size());
  return payload;
}

// --- what the library is asked ---

Extracted extract(void *msg) {
  uint8_t *array = nullptr;
  uint32_t count = 0;
  uint32_t is_cmd = 0;
  mcecm_app_cmd_extract_info_t *info = nullptr;
  Extracted extracted{};
  {
    const LibraryCall call;
    extracted.result = stp_mcec_type1_cfg_param_extractor(msg, &array, &count, &is_cmd, &info);
  }
  const Block<uint8_t> owned_array(array);
  const Block<mcecm_app_cmd_extract_info_t> owned_info(info);
  for (uint32_t i = 0; info != nullptr && i < count; ++i) {
    extracted.records.push_back(
        {info[i].type, info[i].valid, info[i].is_global != 0, info[i].if_index});
  }
  if (array != nullptr) {
    extracted.values = entries_of({array, array + standin_tlv_array_bytes(array)});
  }
  return extracted;
}

Extracted perform(const Command &command) {
  std::vector<standin_attribute_t> attributes;
  for (const Command::Attribute &attribute : command.attributes) {
    attributes.push_back({attribute.id, uint32_t(attribute.value.size()), attribute.value.data()});
  }
  const Message msg(standin_command(command.id, command.positive ? 1 : 0, attributes.data(),
                                    uint32_t(attributes.size())));
  standin_answers_clear();
  Extracted extracted = extract(msg.msg);
  for (uint32_t i = 0; i < standin_answer_count(); ++i) {
    const standin_answer_t answer = standin_answer_at(i);
    extracted.responses.push_back({answer.accepted != 0, answer.text});
  }
  return extracted;
}

Extracted perform(const Update &update) {
  const Bytes payload = update_payload(update.scope, update.entries);
  const Message msg(standin_message(STP_MCEC_MTS_OPC_TYPE1_UPD, payload.data(), payload.size()));
  return extract(msg.msg);
}

Result perform(const CacheUpdate &update) {
  const Bytes payload = update_payload(update.scope, update.entries);
  const Message msg(standin_message(0, payload.data(), payload.size()));
  const LibraryCall call;
  return {stp_mcec_type1_cfg_cache_update(0, is_global(update.scope), update.scope.port, msg.msg)};
}

Result perform(const Delete &deleted) {
  const LibraryCall call;
  return {
      stp_mcec_type1_cfg_cache_update(1, is_global(deleted.scope), deleted.scope.port, nullptr)};
}

Exported perform(const Export &exported) {
  return export_scope(exported.scope);
}

Result perform(const Rebuild &rebuild) {
  Bytes array = rebuild.array;
  void *given = array.empty() ? nullptr : array.data();
  const LibraryCall call;
  return {stp_mcec_type1_cfg_cache_rebuild(given, 0, rebuild.scope.port)};
}

Reported perform(const Report &report) {
  Bytes array = export_scope(report.scope).array;
  void *block = nullptr;
  Reported reported{};
  {
    const LibraryCall call;
    reported.result =
        stp_mcec_type1_cfg_get_param_info(array.empty() ? nullptr : array.data(), &block);
  }
  const Block<mcecm_app_info_report_t> owned(static_cast<mcecm_app_info_report_t *>(block));
  for (uint32_t i = 0; owned && i < owned->count; ++i) {
    const mcecm_app_info_t &record = owned->records[i];
    reported.records.push_back(
        {record.param_type, record.component, record.param_name, record.param_value});
  }
  return reported;
}

// --- the world around the library ---

Done perform(const ChangeWorld &asked) {
  const WorldChange &change = asked.change;
  if (change.trunk) standin_set_trunk(*change.trunk ? 1 : 0);
  if (change.user_vlans) {
    standin_clear_user_vlans();
    for (const auto &[first, last] : ranges_of(*change.user_vlans)) {
      standin_add_user_vlans(first, last);
    }
  }
  for (const Port &port : change.ports) {
    standin_add_ports(port.index, port.index, ethernet_type, STP_MCEC_IF_LAYER_MODE_ACCEPTED);
    standin_set_member(port.index, port.channel);
    standin_set_pod_port(port.index, port.pod ? 1 : 0);
  }
  for (const Channel &channel : change.channels) {
    standin_set_internal(channel.id, channel.internal ? 1 : 0);
  }
  return {};
}

// Forget the switch that this process was before, if any.
void clear_switch(const std::vector<Port> &ports) {
  perform(Delete{});
  for (const Port &port : ports) perform(Delete{{false, port.index}});
  reset_platform();
}

Done perform(const SetUp &set_up) {
  static std::optional<std::vector<Port>> ports;  // of the switch that was set up last
  if (ports) clear_switch(*ports);
  const Settings &settings = set_up.settings;
  ports = settings.ports;
  perform(ChangeWorld{{settings.trunk, settings.user_vlans, settings.channels, settings.ports}});
  for (const Port &port : settings.ports) {
    if (!port.parameters.empty()) perform(CacheUpdate{{false, port.index}, port.parameters});
  }
  if (!settings.parameters.empty()) perform(CacheUpdate{{}, settings.parameters});
  return {};
}

Done perform(const Fail &fail) {
  standin_fail(static_cast<standin_operation_t>(fail.operation), fail.nth, fail.times);
  return {};
}

Done perform(const Crash &crash) {
  std::signal(crash.signal, SIG_DFL);  // whatever a sanitizer has in its place
  std::raise(crash.signal);
  return {};
}

// --- checks ---

// Ask the peer for its array of a scope while it asks for ours.
Bytes exchange(const ToPeer &peer, const Bytes &own) {
  const auto send = [&] {
    if (!write_frame(peer.socket, own)) throw std::runtime_error("the other switch is gone");
  };
  if (peer.speaks_first) send();
  const std::optional<Bytes> frame = read_frame(peer.socket);
  if (!peer.speaks_first) send();
  return received_array(frame);
}

// The ports of a channel that are not set like the one that speaks for it.
std::vector<View::InconsistentPort> find_inconsistent_ports(const Bytes &spoken,
                                                            const std::vector<uint32_t> &others) {
  std::vector<View::InconsistentPort> inconsistent;
  for (const uint32_t port : others) {
    const Bytes array = export_scope({false, port}).array;
    if (array == spoken) continue;
    View::InconsistentPort found{port, {}};
    std::vector<Entry> left = entries_of(spoken);
    for (const Entry &entry : entries_of(array)) {
      const auto same = std::find(left.begin(), left.end(), entry);
      if (same == left.end()) found.types.push_back(entry.type);
      if (same != left.end()) left.erase(same);
    }
    for (const Entry &entry : left) found.types.push_back(entry.type);
    std::sort(found.types.begin(), found.types.end());
    found.types.erase(std::unique(found.types.begin(), found.types.end()), found.types.end());
    inconsistent.push_back(std::move(found));
  }
  return inconsistent;
}

Checked perform_check(const Check &check, const ToPeer &peer) {
  Checked checked;
  for (const Check::Compared &compared : check.scopes) {
    const Bytes own = compared.present ? export_scope(compared.scope).array : Bytes{};
    const Bytes theirs = exchange(peer, own);
    View view = compare(compared.scope, own, theirs, check.twins);
    view.inconsistent = find_inconsistent_ports(own, compared.others);
    checked.views.push_back(std::move(view));
  }
  return checked;
}

Reply answered(const Request &request, const ToPeer &peer) {
  Reply reply;
  standin_history_clear();
  try {
    std::visit(
        [&](const auto &asked) {
          if constexpr (std::is_same_v<decltype(asked), const Check &>) {
            reply.answer = perform_check(asked, peer);
          } else {
            reply.answer = perform(asked);
          }
        },
        request.asked);
  } catch (const std::runtime_error &problem) {
    reply.problem = problem.what();
  }
  for (uint32_t i = 0; request.log && i < standin_history_count(); ++i) {
    reply.log.push_back(log_line(standin_history_line(i)));
  }
  return reply;
}

}  // namespace

void serve(int control, int peer, bool speaks_first, LastLines &last_lines) {
  last_lines_of_process = &last_lines;
  reset_platform();
  while (const std::optional<Bytes> frame = read_frame(control)) {
    const Reply reply = answered(decode_request(*frame), {peer, speaks_first});
    if (!write_frame(control, encode(reply))) return;
  }
}

}  // namespace lab
