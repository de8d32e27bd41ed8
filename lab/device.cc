#include "device.h"

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <functional>
#include <stdexcept>

#include "arrays.h"
#include "compare.h"
#include "draimiofaf/cache.h"
#include "draimiofaf/check.h"
#include "draimiofaf/extract.h"
#include "mts.h"
#include "standin.h"
#include "wire.h"

namespace lab {
namespace {

struct Message {
  void *msg;
  explicit Message(void *made) : msg(made) {}
  Message(const Message &) = delete;
  Message &operator=(const Message &) = delete;
  ~Message() { standin_message_free(msg); }
};

LastLines *last_lines_of_process;

void keep_line(const char *line) {
  LastLines &lines = *last_lines_of_process;
  char *text = lines.text[lines.count % LastLines::kept];
  std::strncpy(text, line, sizeof lines.text[0] - 1);
  ++lines.count;
}

// --- the world around the library ---

void set_world(const Json &world) {
  if (world.contains("trunk")) standin_set_trunk(world["trunk"].get<bool>() ? 1 : 0);
  if (world.contains("user-vlans")) {
    standin_clear_user_vlans();
    for (const Json &range : world["user-vlans"]) standin_add_user_vlans(range[0], range[1]);
  }
  for (const Json &group : world.value("ports", Json::array())) {
    const uint32_t first = group["first"];
    const uint32_t last = group["last"];
    standin_add_ports(first, last, group["type"], group["layer"]);
    for (uint32_t port = first; port - first <= last - first; ++port) {
      if (group.contains("member")) standin_set_member(port, group["member"]);
      if (group.contains("pod")) standin_set_pod_port(port, group["pod"].get<bool>() ? 1 : 0);
      if (port == last) break;
    }
  }
  for (const Json &channel : world.value("internal-channels", Json::array())) {
    standin_set_internal(channel, 1);
  }
}

// --- arrays ---

int32_t is_global(const Json &scope) {
  return scope["global"].get<bool>() ? 1 : 0;
}

Bytes array_of_json(const Json &entries) {
  std::vector<Entry> parsed;
  for (const Json &entry : entries) {
    parsed.push_back({entry["type"], unhex(entry["value"].get<std::string>())});
  }
  return build_array(parsed);
}

Json entries_json(const void *array) {
  Json entries = Json::array();
  for (const Entry &entry : entries_of(array)) {
    entries.push_back({{"type", entry.type}, {"value", hex(entry.value)}});
  }
  return entries;
}

// The exported array of a scope; without bytes when the library has none to give.
struct Export {
  uint32_t result;
  Bytes array;
};

Export export_scope(const Json &scope) {
  void *out = nullptr;
  uint32_t result = 0;
  {
    const LibraryCall call;
    result = stp_mcec_type1_cfg_get_params(is_global(scope), scope["port"], &out);
  }
  const Block<uint8_t> array(static_cast<uint8_t *>(out));
  if (!array) return {result, {}};
  return {result, {array.get(), array.get() + standin_tlv_array_bytes(array.get())}};
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

// --- what the library is asked ---

Bytes update_payload(const Json &request) {
  const Bytes array = array_of_json(request["entries"]);
  const uint32_t header[] = {uint32_t(is_global(request)), request["port"], 0,
                             uint32_t(array.size())};
  static_assert(sizeof header == STP_MCEC_TYPE1_UPD_HDR_SIZE);
  Bytes payload(sizeof header + array.size());
  std::memcpy(payload.data(), header, sizeof header);
  std::memcpy(payload.data() + sizeof header, array.data(), array.size());
  return payload;
}

Json extract(void *msg) {
  uint8_t *array = nullptr;
  uint32_t count = 0;
  uint32_t is_cmd = 0;
  mcecm_app_cmd_extract_info_t *info = nullptr;
  uint32_t result = 0;
  {
    const LibraryCall call;
    result = stp_mcec_type1_cfg_param_extractor(msg, &array, &count, &is_cmd, &info);
  }
  const Block<uint8_t> owned_array(array);
  const Block<mcecm_app_cmd_extract_info_t> owned_info(info);

  Json reply = {{"result", result}, {"records", Json::array()}, {"values", Json::array()}};
  for (uint32_t i = 0; info != nullptr && i < count; ++i) {
    reply["records"].push_back({{"type", info[i].type},
                                {"valid", info[i].valid},
                                {"global", info[i].is_global != 0},
                                {"port", info[i].if_index}});
  }
  if (array != nullptr) reply["values"] = entries_json(array);
  return reply;
}

Json command(const Json &request) {
  std::vector<Bytes> values;
  std::vector<standin_attribute_t> attributes;
  for (const Json &attribute : request["attributes"]) {
    values.push_back(unhex(attribute["value"].get<std::string>()));
    attributes.push_back({attribute["id"], uint32_t(values.back().size()), values.back().data()});
  }
  const Message msg(standin_command(request["id"], request["positive"].get<bool>() ? 1 : 0,
                                    attributes.data(), uint32_t(attributes.size())));
  standin_answers_clear();
  Json reply = extract(msg.msg);
  reply["answers"] = Json::array();
  for (uint32_t i = 0; i < standin_answer_count(); ++i) {
    const standin_answer_t answer = standin_answer_at(i);
    reply["answers"].push_back({{"accepted", answer.accepted != 0}, {"text", answer.text}});
  }
  return reply;
}

Json update(const Json &request) {
  const Bytes payload = update_payload(request);
  const Message msg(standin_message(STP_MCEC_MTS_OPC_TYPE1_UPD, payload.data(), payload.size()));
  return extract(msg.msg);
}

Json cache_update(const Json &request) {
  const Bytes payload = update_payload(request);
  const Message msg(standin_message(0, payload.data(), payload.size()));
  const LibraryCall call;
  return {
      {"result", stp_mcec_type1_cfg_cache_update(0, is_global(request), request["port"], msg.msg)}};
}

Json delete_scope(const Json &scope) {
  const LibraryCall call;
  return {{"result", stp_mcec_type1_cfg_cache_update(1, is_global(scope), scope["port"], nullptr)}};
}

Json rebuild(const Json &request) {
  Bytes array = unhex(request["array"].get<std::string>());
  void *given = array.empty() ? nullptr : array.data();
  const LibraryCall call;
  return {{"result", stp_mcec_type1_cfg_cache_rebuild(given, 0, request["port"])}};
}

Json export_array(const Json &scope) {
  const Export exported = export_scope(scope);
  const void *array = exported.array.empty() ? nullptr : exported.array.data();
  return {{"result", exported.result},
          {"array", hex(exported.array)},
          {"entries", entries_json(array)}};
}

Json report(const Json &scope) {
  Bytes array = export_scope(scope).array;
  void *block = nullptr;
  uint32_t result = 0;
  {
    const LibraryCall call;
    result = stp_mcec_type1_cfg_get_param_info(array.empty() ? nullptr : array.data(), &block);
  }
  const Block<mcecm_app_info_report_t> owned(static_cast<mcecm_app_info_report_t *>(block));
  Json reply = {{"result", result}, {"records", Json::array()}};
  for (uint32_t i = 0; owned && i < owned->count; ++i) {
    const mcecm_app_info_t &record = owned->records[i];
    reply["records"].push_back({{"type", record.param_type},
                                {"component", printable(record.component)},
                                {"name", printable(record.param_name)},
                                {"value", printable(record.param_value)}});
  }
  return reply;
}

Json fail(const Json &request) {
  standin_fail(request["operation"].get<standin_operation_t>(), request["nth"], request["times"]);
  return Json::object();
}

Json crash(const Json &request) {
  const int number = request["signal"];
  std::signal(number, SIG_DFL);  // whatever a sanitizer has in its place
  std::raise(number);
  return Json::object();
}

// --- checks ---

// Ask the peer for its array of a scope while it asks for ours.
Bytes exchange(int peer, bool speaks_first, const Bytes &own) {
  if (speaks_first && !write_frame(peer, own)) throw std::runtime_error("the other switch is gone");
  const std::optional<Bytes> frame = read_frame(peer);
  if (!speaks_first && !write_frame(peer, own))
    throw std::runtime_error("the other switch is gone");
  return received_array(frame);
}

Json check_exchanged(const Json &request, int peer, bool speaks_first) {
  const Twins twins = twins_of(request);
  Json scopes = Json::array();
  for (const Json &scope : request["scopes"]) {
    const Bytes own = export_scope(scope).array;
    const Bytes theirs = exchange(peer, speaks_first, own);
    scopes.push_back(compare(scope, own, theirs, twins));
  }
  return {{"scopes", std::move(scopes)}};
}

// What a command would do, found out in a copy of this process, so that nothing of it stays here.
// The peer's arrays come with the request: the peer is not told.
Json what_if(const Json &request) {
  const auto compare_all = [&request] {
    const Twins twins = twins_of(request);
    Json scopes = Json::array();
    for (const Json &scope : request["scopes"]) {
      const Bytes theirs = unhex(scope["array"].get<std::string>());
      scopes.push_back(compare(scope, export_scope(scope).array, theirs, twins));
    }
    return scopes;
  };
  Json now = compare_all();
  Json outcome = command(request["command"]);
  outcome["now"] = std::move(now);
  outcome["then"] = compare_all();
  return outcome;
}

Bytes encode(const Json &json) {
  return Json::to_cbor(json);
}

using Operation = std::function<Json(const Json &)>;

// Run an operation in a forked copy of this process and bring back its reply.
Json in_a_copy(const Operation &operation, const Json &request) {
  int sockets[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) != 0) {
    throw std::runtime_error("no socket for a copy of the switch");
  }
  const pid_t copy = fork();
  if (copy == 0) {
    close(sockets[0]);
    write_frame(sockets[1], encode(operation(request)));
    _exit(0);
  }
  close(sockets[1]);
  const std::optional<Bytes> frame = copy > 0 ? read_frame(sockets[0]) : std::nullopt;
  close(sockets[0]);
  int status = 0;
  if (copy > 0) waitpid(copy, &status, 0);
  if (!frame) throw std::runtime_error("the copy of the switch died");
  return Json::from_cbor(*frame);
}

}  // namespace

void serve(int control, int peer, bool speaks_first, LastLines &last_lines) {
  last_lines_of_process = &last_lines;
  standin_reset();
  standin_on_history(keep_line);
  standin_suspend_failures(1);
  const std::map<std::string, Operation> operations = {
      {"world",
       [](const Json &request) {
         set_world(request);
         return Json::object();
       }},
      {"command", command},
      {"update", update},
      {"cache-update", cache_update},
      {"delete", delete_scope},
      {"export", export_array},
      {"rebuild", rebuild},
      {"report", report},
      {"fail", fail},
      {"crash", crash},
      {"check", [=](const Json &request) { return check_exchanged(request, peer, speaks_first); }},
      {"what-if", [](const Json &request) { return in_a_copy(what_if, request); }},
  };
  while (const std::optional<Bytes> frame = read_frame(control)) {
    const Json request = Json::from_cbor(*frame);
    standin_history_clear();
    Json reply;
    try {
      reply = operations.at(request["do"].get<std::string>())(request);
    } catch (const std::runtime_error &problem) {
      reply = {{"problem", problem.what()}};
    }
    if (request.value("log", false)) {
      Json &log = reply["log"] = Json::array();
      for (uint32_t i = 0; i < standin_history_count(); ++i) {
        log.push_back(log_line(standin_history_line(i)));
      }
    }
    if (!write_frame(control, encode(reply))) return;
  }
}

}  // namespace lab
