#include "pair/pair.h"

#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/wait.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <fstream>
#include <system_error>

#include "pair/device.h"
#include "pair/wire.h"

namespace lab {
namespace {

// Timeouts of a stopped switch and of any reply, in milliseconds.
constexpr int stopped_timeout = 2000;
constexpr int reply_timeout = 120000;

using Sockets = std::array<Descriptor, 2>;

Sockets make_sockets() {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
    throw std::system_error(errno, std::generic_category(), "cannot create a socket for a switch");
  }
  return {Descriptor(ends[0]), Descriptor(ends[1])};
}

LastLines *make_shared_lines() {
  void *memory =
      mmap(nullptr, sizeof(LastLines), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) {
    throw std::system_error(errno, std::generic_category(), "cannot map memory for a switch");
  }
  return static_cast<LastLines *>(memory);
}

// In /proc/PID/stat the state follows the name of the process, which is in parentheses.
bool is_stopped(pid_t pid) {
  std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
  std::string text;
  std::getline(file, text);
  const std::size_t end = text.rfind(')');
  return end != text.npos && end + 2 < text.size() &&
         (text[end + 2] == 'T' || text[end + 2] == 't');
}

std::string describe_exit(ChildProcess &process) {
  const int status = reap(process);
  if (status < 0) return "has ended";
  if (WIFSIGNALED(status)) {
    const int number = WTERMSIG(status);
    return "was killed by SIG" + std::string(sigabbrev_np(number)) + " (" + strsignal(number) + ")";
  }
  return "ended with status " + std::to_string(WEXITSTATUS(status));
}

std::string describe_last_lines(const LastLines &lines) {
  std::string text;
  const uint32_t kept = std::min(lines.count, LastLines::kept);
  for (uint32_t i = lines.count - kept; i != lines.count; ++i) {
    text += "\n    " + log_line(lines.text[i % LastLines::kept]);
  }
  return text.empty() ? "; its event history is empty"
                      : "; the last lines of its event history:" + text;
}

std::string switch_name(std::size_t side) {
  return std::string("the ") + switch_names[side] + " switch";
}

// Throws SwitchFailed when a switch has not replied in time. Looks for a stopped process on both
// sides, because one switch may be waiting for the other.
void check_timeouts(const Pair &pair, std::size_t side, int waited) {
  for (std::size_t i = 0; i < pair.switches.size(); ++i) {
    if (waited >= stopped_timeout && is_stopped(pair.switches[i].process.pid)) {
      throw SwitchFailed(switch_name(i) + " is stopped by a signal");
    }
  }
  if (waited >= reply_timeout) throw SwitchFailed(switch_name(side) + " does not reply");
}

}  // namespace

Pair::Pair() try {
  Sockets peer = make_sockets();
  std::array<Sockets, 2> controls = {make_sockets(), make_sockets()};
  for (std::size_t i = 0; i < switches.size(); ++i) {
    Switch &made = switches[i];
    made.last_lines = {make_shared_lines(),
                       [](LastLines *lines) { munmap(lines, sizeof(LastLines)); }};
    // A switch ends when the lab closes its control socket, so no switch may keep a copy of it.
    made.process = start_child([&] {
      peer[1 - i].close();
      controls[1 - i][1].close();
      for (Sockets &control : controls) control[0].close();
      for (Switch &other : switches) other.control.close();
      serve(controls[i][1], peer[i], i, *made.last_lines);
    });
    made.control = std::move(controls[i][0]);
  }
} catch (const std::system_error &error) {
  throw SwitchFailed(error.what());
}

Replies ask(Pair &pair, const Requests &requests, bool log) {
  Replies replies;
  std::vector<std::string> died;
  std::vector<std::string> failed;
  for (std::size_t i = 0; i < requests.size(); ++i) {
    if (requests[i].empty()) continue;
    write_frame(pair.switches[i].control, encode(Request{log, requests[i]}),
                [&](int waited) { check_timeouts(pair, i, waited); });
  }
  for (std::size_t i = 0; i < requests.size(); ++i) {
    if (requests[i].empty()) continue;
    Switch &asked = pair.switches[i];
    try {
      const auto frame =
          read_frame(asked.control, [&](int waited) { check_timeouts(pair, i, waited); });
      if (frame) {
        replies[i] = decode_reply(*frame);
        if (!replies[i].problem.empty()) {
          failed.push_back(switch_name(i) + ": " + replies[i].problem);
        }
      } else {
        died.push_back(switch_name(i) + " " + describe_exit(asked.process) +
                       describe_last_lines(*asked.last_lines));
      }
    } catch (const DecodeError &error) {
      throw SwitchFailed(switch_name(i) + ": " + error.what());
    }
  }
  // When one switch has died, the error of the other one is only a consequence.
  if (!died.empty() || !failed.empty())
    throw SwitchFailed(join(died.empty() ? failed : died, "\n"));
  return replies;
}

}  // namespace lab
