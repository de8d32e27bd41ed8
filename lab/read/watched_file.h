// A file beside which the lab stays: looked at again and again, read when it is another one.
#pragma once

#include <sys/stat.h>

#include <functional>
#include <string>

#include "read/held.h"
#include "read/source.h"

namespace lab {

// What the bytes of a file say: the rows of a dump, or the settings of a state file.
struct ReadText {
  std::optional<Rows> rows;
  Settings settings;  // of a file without rows
  Mistakes mistakes;
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
