#include "pair/wire.h"

#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "pair/fields.h"
#include "text/wait.h"

namespace lab {

// Only the fields that a switch process reads are encoded.
LAB_FIELDS(Entry, it.type, it.value)
LAB_FIELDS(Channel, it.name, it.id, it.internal)
LAB_FIELDS(Port, it.index, it.name, it.channel, it.pod, it.parameters)
LAB_FIELDS(Settings, it.trunk, it.user_vlans, it.channels, it.ports, it.parameters)
LAB_FIELDS(Scope, it.global, it.port)
LAB_FIELDS(ParameterRecord, it.type, it.port, it.is_valid)
LAB_FIELDS(CommandAnswer, it.is_accepted, it.text)
LAB_FIELDS(DisplayRecord, it.scope, it.type, it.component, it.name, it.value)
LAB_FIELDS(SwitchReport, it.result, it.is_command, it.answer, it.records, it.values, it.exported,
           it.display, it.log)
LAB_FIELDS(ScopeAnswer, it.code, it.on_pod, it.mode, it.array, it.inconsistent)
LAB_FIELDS(Reply, it.problem, it.report, it.checked)
LAB_FIELDS(SetUp, it.settings)
LAB_FIELDS(ChangePlatform, it.settings)
LAB_FIELDS(Command::Attribute, it.id, it.value)
LAB_FIELDS(Command, it.id, it.positive, it.attributes)
LAB_FIELDS(Update, it.scope, it.entries)
LAB_FIELDS(CacheUpdate, it.scope, it.entries)
LAB_FIELDS(Delete, it.scope)
LAB_FIELDS(Export, it.scope)
LAB_FIELDS(Rebuild, it.scope, it.array)
LAB_FIELDS(Report, it.scope)
LAB_FIELDS(Fail, it.operation, it.nth, it.times)
LAB_FIELDS(Crash, it.signal)
LAB_FIELDS(Check, it.scopes, it.twins)
LAB_FIELDS(Request, it.log, it.operations)

namespace {

// Far above the longest frame of the lab.
constexpr uint32_t max_frame_bytes = 256U << 20;

// The interval of calls of a WaitCallback, in milliseconds.
constexpr int wait_interval = 500;

// Waits until a socket is ready. Throws Interrupted.
void await(int socket, short event, const WaitCallback &on_wait) {
  for (int waited = 0;; waited += wait_interval) {
    if (on_wait && waited > 0) on_wait(waited);
    std::vector<pollfd> sockets = {{socket, event, 0}};
    wait(sockets, Clock::now() + std::chrono::milliseconds(wait_interval));
    if (sockets[0].revents != 0) return;
  }
}

// Receives (POLLIN) or sends (POLLOUT) all bytes. Returns false if the other end is closed.
bool move_all(int socket, short event, const WaitCallback &on_wait, Bytes &bytes) {
  for (std::size_t done = 0; done < bytes.size();) {
    if (interrupted()) throw Interrupted{};
    uint8_t *at = bytes.data() + done;
    const std::size_t left = bytes.size() - done;
    const ssize_t moved = event == POLLIN ? ::recv(socket, at, left, MSG_DONTWAIT)
                                          : ::send(socket, at, left, MSG_DONTWAIT | MSG_NOSIGNAL);
    if (moved > 0) {
      done += static_cast<std::size_t>(moved);
    } else if (moved < 0 && errno == EAGAIN) {
      await(socket, event, on_wait);
    } else if (moved == 0 || errno != EINTR) {
      return false;
    }
  }
  return true;
}

}  // namespace

Bytes make_frame(const Bytes &content) {
  const auto size = static_cast<uint32_t>(content.size());
  Bytes frame(sizeof size + content.size());
  std::memcpy(frame.data(), &size, sizeof size);
  std::copy(content.begin(), content.end(), frame.begin() + sizeof size);
  return frame;
}

bool write_frame(int socket, const Bytes &content, const WaitCallback &on_wait) {
  Bytes frame = make_frame(content);
  return move_all(socket, POLLOUT, on_wait, frame);
}

std::optional<Bytes> read_frame(int socket, const WaitCallback &on_wait) {
  uint32_t size = 0;
  Bytes length(sizeof size);
  if (!move_all(socket, POLLIN, on_wait, length)) return std::nullopt;
  std::memcpy(&size, length.data(), sizeof size);
  if (size > max_frame_bytes) throw DecodeError("it is too long");
  Bytes content(size);
  if (!move_all(socket, POLLIN, on_wait, content)) return std::nullopt;
  return content;
}

Bytes encode(const Request &request) {
  return encode_record(request);
}

Bytes encode(const Reply &reply) {
  return encode_record(reply);
}

Request decode_request(const Bytes &frame) {
  return decode_record<Request>(frame);
}

Reply decode_reply(const Bytes &frame) {
  return decode_record<Reply>(frame);
}

}  // namespace lab
