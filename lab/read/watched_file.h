// A file beside which the lab stays: looked at again and again, read when it is another one.
#pragma once

#include <sys/stat.h>

#include <functional>
#include <string>

#include "read/held.h"
#include "read/source.h"

namespace lab {

// What the bytes of a file say.
struct ReadText {
  std::optional<Rows> rows;  // of a dump
  Settings settings;
  Mistakes mistakes;  // all of them; with some, the settings are of no use
};

using TextReader = std::function<ReadText(const std::string &bytes)>;

struct WatchedFile {
  Source source;
  Clock::duration interval{};
  TextReader reader;
  Held held;
  struct stat last_read {};  // the file when it was read
  struct stat last_seen {};
  bool changed = false;  // since it was read
  Moment look_next;
  Moment read_next;
};

// See redis.h, which does the same for databases.
void step(WatchedFile &file, Moment now);
bool settle(WatchedFile &file, Moment now);

}  // namespace lab
