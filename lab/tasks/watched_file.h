// A file that is looked at again and again.
#pragma once

#include <sys/stat.h>

#include <string>

#include "io/loop.h"
#include "sonic/snapshot.h"
#include "tasks/job.h"

namespace lab {

struct WatchedFile {
  // `on_look` is called after each look, and must not end the record.
  WatchedFile(Loop &loop, std::string path, Clock::duration interval, Callback on_look);

  void look();

  std::string path;
  Clock::duration interval;
  Callback on_look;
  Timer timer;
  Snapshot snapshot;
  bool is_changed = false;              // since it was read
  std::optional<TimePoint> look_again;  // at its contents, though nothing shows a change
  struct stat seen {};
};

// The file is about to be read.
void begin_reading(WatchedFile &file);

// It has been read.
void take_contents(WatchedFile &file, const SideAnswer &contents);

}  // namespace lab
