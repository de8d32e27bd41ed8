#include "text/signals.h"

#include <csignal>

namespace lab {
namespace {

volatile std::sig_atomic_t stop_signal = 0;

void note_signal(int number) {
  stop_signal = number;
}

}  // namespace

void stop_on_signals() {
  struct sigaction action {};
  action.sa_handler = note_signal;  // no SA_RESTART: what waits returns
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
}

void leave_signals_to_the_lab() {
  std::signal(SIGINT, SIG_IGN);
  std::signal(SIGTERM, SIG_DFL);
  stop_signal = 0;
}

bool interrupted() {
  return stop_signal != 0;
}

}  // namespace lab
