// Watching pairs of switches: `mcec-lab watch`.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "io/http.h"
#include "tasks/pair_watch.h"

namespace lab {

struct WatchOptions {
  CompareOptions compare;
  ReadLimits limits;                                   // of databases
  Clock::duration interval = std::chrono::seconds(1);  // of looking where nothing is notified
  bool once_agreed = false;
  std::optional<Clock::duration> timeout;
  std::optional<Clock::duration> summary;  // between two summaries

  // Each event that is not left out; because of one that `is_wrong` the watch ends with 2. Returns
  // false when there is no reader any more.
  std::function<bool(const Event &event, bool is_wrong)> listener;
  std::function<bool(const Event &event)> is_left_out;
  // A program that is run on each of these events, with its text; empty: none.
  std::string on_change;
  std::function<std::string(const Event &event)> format;
  // Where requests for pages are answered, and with what; empty: nowhere.
  std::string listen;
  std::function<std::optional<HttpReply>(std::string_view target, const FleetStatus &fleet,
                                         std::chrono::system_clock::time_point now)>
      answer;
  // What goes wrong and does not end the watch.
  std::function<void(const std::string &problem)> print_problem;
  // What is known of the pairs, when that has changed or is confirmed. What is wrong, "" when it is
  // written.
  std::function<std::string(const FleetStatus &)> write_metrics;
  // With many pairs: their list now, on SIGHUP; nothing: it cannot be used.
  std::function<std::optional<std::vector<WatchEntry>>()> read_pairs;
};

/*
 * Watches until a signal comes, the listener returns false, or the options say so. The exit status:
 * 0; 1 where agreement was waited for and has not come, or the time is up; 2 where a source of the
 * only pair has an error at the start, or refuses access. Throws std::runtime_error for the file of
 * metrics at the start.
 */
int watch(const std::vector<WatchEntry> &entries, const WatchOptions &options);

// Write a text to the standard output at once, past what is buffered there; false: nobody reads it.
// Throws std::system_error where it cannot be written for another reason.
bool write_out(std::string_view text);

}  // namespace lab
