// Frames carry requests, replies and arrays over the lab's sockets. A frame is a 32-bit length in
// host byte order, followed by that many bytes.
#pragma once

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>

#include "pair/protocol.h"

namespace lab {

// A frame is malformed.
struct DecodeError : std::runtime_error {
  explicit DecodeError(const std::string &reason)
      : std::runtime_error("malformed frame: " + reason) {}
};

// Called about twice a second while a socket is not ready, with the milliseconds so far. May throw.
using WaitCallback = std::function<void(int waited)>;

Bytes make_frame(const Bytes &content);

// Returns false if the other end is closed. Throws Interrupted, and what the callback throws.
bool write_frame(int socket, const Bytes &content, const WaitCallback &on_wait = nullptr);

// Returns nullopt if the other end is closed. Throws like write_frame, and DecodeError if the frame
// is too long.
std::optional<Bytes> read_frame(int socket, const WaitCallback &on_wait = nullptr);

Bytes encode(const Request &request);
Bytes encode(const Reply &reply);

// Throw DecodeError.
Request decode_request(const Bytes &frame);
Reply decode_reply(const Bytes &frame);

}  // namespace lab
