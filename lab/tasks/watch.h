// Staying beside a pair of switches: `mcec-lab watch`.
#pragma once

#include <array>
#include <functional>
#include <optional>
#include <string>

#include "output/json.h"
#include "sonic/limits.h"
#include "sonic/source.h"
#include "tasks/watched_file.h"

namespace lab {

struct WatchOptions {
  Clock::duration interval = std::chrono::seconds(1);  // of looking where nothing is notified
  ReadLimits limits;                                   // of databases
  bool once_agreed = false;
  std::optional<Clock::duration> timeout;
  std::string metrics;  // a file; empty: none
  TextReader reader;    // of files
};

// Is given each event; `is_wrong`: because of it the watch ends with 2. false: nobody listens any more.
using Listener = std::function<bool(const Json &event, bool is_wrong)>;

/*
 * Watches until a signal comes, nobody listens, or the options say so. The exit status: 0; 1 where
 * agreement was waited for and has not come, or the time is up; 2 where a source says something wrong
 * at the start, or lets nobody in. Throws SwitchFailed, and std::runtime_error for the file of metrics
 * at the start.
 */
int watch(const std::array<Source, 2> &sources, const WatchOptions &options,
          const Listener &listener);

// Write a text to the standard output at once, past what is buffered there; false: nobody reads it.
// Throws std::system_error where it cannot be written for another reason.
bool write_out(std::string_view text);

}  // namespace lab
