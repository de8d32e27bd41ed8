// How requests, replies and arrays travel over the lab's sockets: frames, a length and then that
// many bytes.
#pragma once

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>

#include "pair/protocol.h"

namespace lab {

// The other end does not speak as it should.
struct DecodeError : std::runtime_error {
  explicit DecodeError(const std::string &how)
      : std::runtime_error("it does not speak as a switch does: " + how) {}
};

// Called about twice a second while nothing comes, with the milliseconds so far; may throw.
using Waiting = std::function<void(int waited)>;

Bytes make_frame(const Bytes &content);

// false: the other end is gone. Throws Interrupted, and what `waiting` throws.
bool write_frame(int socket, const Bytes &content, const Waiting &waiting = nullptr);

// Nothing: the other end is gone. Also throws DecodeError.
std::optional<Bytes> read_frame(int socket, const Waiting &waiting = nullptr);

Bytes encode(const Request &request);
Bytes encode(const Reply &reply);

// Throw DecodeError.
Request decode_request(const Bytes &frame);
Reply decode_reply(const Bytes &frame);

}  // namespace lab
