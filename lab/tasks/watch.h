// Staying beside a pair of switches: `mcec-lab watch`.
#pragma once

#include <array>
#include <functional>
#include <optional>
#include <string>

#include "report/event.h"
#include "report/status.h"
#include "sonic/limits.h"
#include "sonic/source.h"
#include "tasks/compare.h"
#include "tasks/watched_file.h"

namespace lab {

struct WatchOptions {
  CompareOptions compare;
  ReadLimits limits;                                   // of databases
  Clock::duration interval = std::chrono::seconds(1);  // of looking where nothing is notified
  bool once_agreed = false;
  std::optional<Clock::duration> timeout;
  // Called with what is known of the pair when that changes or is confirmed. What is wrong, "" when
  // it was written.
  std::function<std::string(const PairStatus &)> write_metrics;
  TextReader reader;  // of files
};

// Is given each event; `is_wrong`: because of it the watch ends with 2. Returns false when there is
// no reader any more.
using Listener = std::function<bool(const Event &event, bool is_wrong)>;

/*
 * Watches until a signal comes, the listener returns false, or the options say so. The exit status:
 * 0; 1 where agreement was waited for and has not come, or the time is up; 2 where a source has an
 * error at the start, or refuses access. Throws SwitchFailed, and std::runtime_error for the file
 * of metrics at the start.
 */
int watch(const std::array<Source, 2> &sources, const WatchOptions &options,
          const Listener &listener);

// Write a text to the standard output at once, past what is buffered there; false: nobody reads it.
// Throws std::system_error where it cannot be written for another reason.
bool write_out(std::string_view text);

}  // namespace lab
