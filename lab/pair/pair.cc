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

// A switch that is stopped, or that does not answer for so long, is given up.
constexpr int stopped_patience = 2000;
constexpr int longest_patience = 120000;

using Sockets = std::array<Descriptor, 2>;

Sockets make_sockets() {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
    throw std::system_error(errno, std::generic_category(), "no socket for a switch");
  }
  return {Descriptor(ends[0]), Descriptor(ends[1])};
}

LastLines *make_shared_lines() {
  void *memory =
      mmap(nullptr, sizeof(LastLines), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) {
    throw std::system_error(errno, std::generic_category(), "no memory for a switch");
  }
  return static_cast<LastLines *>(memory);
}

// Is a process stopped by a signal? Its state stands behind its name in parentheses.
bool is_stopped(pid_t pid) {
  std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
  std::string text;
  std::getline(file, text);
  const std::size_t end = text.rfind(')');
  return end != text.npos && end + 2 < text.size() &&
         (text[end + 2] == 'T' || text[end + 2] == 't');
}

std::string how_it_ended(ChildProcess &process) {
  const int status = reap(process);
  if (status < 0) return "is gone";
  if (WIFSIGNALED(status)) {
    const int number = WTERMSIG(status);
    return "died of SIG" + std::string(sigabbrev_np(number)) + " (" + strsignal(number) + ")";
  }
  return "ended with status " + std::to_string(WEXITSTATUS(status));
}

std::string last_words(const LastLines &lines) {
  std::string text;
  const uint32_t kept = std::min(lines.count, LastLines::kept);
  for (uint32_t i = lines.count - kept; i != lines.count; ++i) {
    text += "\n    " + log_line(lines.text[i % LastLines::kept]);
  }
  return text.empty() ? "; it had logged nothing" : "; the last lines of its event history:" + text;
}

std::string switch_name(std::size_t which) {
  return std::string("the ") + switch_names[which] + " switch";
}

// While a switch does not answer: is one of the two stopped? A switch may wait for the other.
void look_at(const Pair &pair, std::size_t which, int waited) {
  for (std::size_t i = 0; i < pair.switches.size(); ++i) {
    if (waited >= stopped_patience && is_stopped(pair.switches[i].process.pid)) {
      throw SwitchFailed(switch_name(i) + " is stopped by a signal, and does not answer");
    }
  }
  if (waited >= longest_patience) throw SwitchFailed(switch_name(which) + " does not answer");
}

}  // namespace

Pair::Pair() try {
  Sockets peer = make_sockets();
  std::array<Sockets, 2> controls = {make_sockets(), make_sockets()};
  for (std::size_t i = 0; i < switches.size(); ++i) {
    Switch &made = switches[i];
    made.last_lines = {make_shared_lines(),
                       [](LastLines *lines) { munmap(lines, sizeof(LastLines)); }};
    // A switch ends when the lab closes its line, of which it must have no copy.
    made.process = start_child([&] {
      peer[1 - i].close();
      controls[1 - i][1].close();
      for (Sockets &control : controls) control[0].close();
      for (Switch &other : switches) other.control.close();
      serve(controls[i][1], peer[i], i, *made.last_lines);
    });
    made.control = std::move(controls[i][0]);
  }
} catch (const std::system_error &problem) {
  throw SwitchFailed(problem.what());
}

Replies ask(Pair &pair, const Requests &requests, bool log) {
  Replies replies;
  std::vector<std::string> died;
  std::vector<std::string> failed;
  for (std::size_t i = 0; i < requests.size(); ++i) {
    if (requests[i].empty()) continue;
    write_frame(pair.switches[i].control, encode(Request{log, requests[i]}),
                [&](int waited) { look_at(pair, i, waited); });
  }
  for (std::size_t i = 0; i < requests.size(); ++i) {
    if (requests[i].empty()) continue;
    Switch &answering = pair.switches[i];
    try {
      const auto frame =
          read_frame(answering.control, [&](int waited) { look_at(pair, i, waited); });
      if (frame) {
        replies[i] = decode_reply(*frame);
        if (!replies[i].problem.empty()) {
          failed.push_back(switch_name(i) + ": " + replies[i].problem);
        }
      } else {
        died.push_back(switch_name(i) + " " + how_it_ended(answering.process) +
                       last_words(*answering.last_lines));
      }
    } catch (const DecodeError &error) {
      throw SwitchFailed(switch_name(i) + ": " + error.what());
    }
  }
  // A switch that misses the other one reports nothing but its end.
  if (!died.empty() || !failed.empty())
    throw SwitchFailed(join(died.empty() ? failed : died, "\n"));
  return replies;
}

}  // namespace lab
