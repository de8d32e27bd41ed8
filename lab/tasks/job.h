// A comparison as a job of a process of the pool, and what comes of it.
#pragma once

#include "tasks/compare.h"

namespace lab {

// Of one side: rows that are known, or a file to be read.
struct SideJob {
  std::string source;  // as it is shown: without a password
  std::optional<Rows> rows;
  InputErrors errors;  // of the reading of the rows
  std::string path;
  std::string name_space;
  bool is_watched = false;  // the file must be a regular one, and its contents are returned
};

struct CompareJob {
  std::array<std::optional<SideJob>, 2> sides;  // nothing: it is not known now
  CompareOptions options;                       // without accepted differences
  std::vector<AcceptEntry> accept;
};

// What a watched file contained.
struct FileContents {
  std::string lost;  // not empty: why it cannot be read
  std::optional<Rows> rows;
  std::string state;  // of a state file: its settings, to be compared only

  bool operator==(const FileContents &) const = default;
};

struct CompareAnswer {
  std::string problem;  // not empty: it could not be done
  std::array<FileContents, 2> files;
  std::array<InputErrors, 2> errors;  // of each source
  std::optional<Comparison> comparison;
};

Bytes encode(const CompareJob &job);
Bytes encode(const CompareAnswer &answer);

// Throw Garbled.
CompareJob decode_job(const Bytes &frame);
CompareAnswer decode_answer(const Bytes &frame);

// Do a job on this pair of switches. Throws SwitchFailed and Interrupted.
CompareAnswer perform(const CompareJob &job, Pair &pair);

}  // namespace lab
