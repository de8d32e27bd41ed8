// A file beside which the lab stays: looked at again and again, read when it is another one.
#pragma once

#include <sys/stat.h>

#include <functional>
#include <string>

#include "sonic/snapshot.h"
#include "sonic/source.h"

namespace lab {

// What the bytes of a file say.
struct ReadText {
  std::optional<Rows> rows;  // of a dump
  Settings settings;
  InputErrors errors;  // all of them; with some, the settings are of no use
};

using TextReader = std::function<ReadText(const std::string &bytes)>;

struct WatchedFile {
  Source source;
  Clock::duration interval{};
  TextReader reader;
  Snapshot snapshot;
  struct stat last_read {};  // the file when it was read
  struct stat last_seen {};
  bool changed = false;  // since it was read
  TimePoint look_next;
  TimePoint read_next;
};

// See redis.h, which does the same for databases.
void step(WatchedFile &file, TimePoint now);
bool settle(WatchedFile &file, TimePoint now);

}  // namespace lab
