// A comparison as a job of a process of the pool, and what comes of it.
#pragma once

#include "tasks/compare.h"

namespace lab {

// One side: rows that are known, or a file to be read.
struct SideJob {
  Source source;
  std::optional<ReadRows> rows = {};
  bool is_watched = false;  // the file must be a regular one, and its contents are returned
};

struct CompareJob {
  std::array<std::optional<SideJob>, 2> sides;  // nothing: it is not known now
  CompareOptions options;
};

struct SideAnswer {
  InputErrors errors;
  // What a watched file contained.
  std::string lost;  // not empty: why it cannot be read
  std::optional<Rows> rows;
  std::string state;  // of a state file: its settings, to be compared only
};

struct CompareAnswer {
  std::string problem;  // not empty: it could not be done
  std::array<SideAnswer, 2> sides;
  std::optional<Comparison> comparison;
};

Bytes encode(const CompareJob &job);

// Throws Garbled.
CompareAnswer decode_answer(const Bytes &frame);

// A process of the pool is this program with this argument only, which then calls serve_jobs(): a
// copy of a large process would keep its memory.
constexpr char pool_argument[] = "--serve-jobs";
constexpr int job_file = 3;
int serve_jobs();

// A process can be killed for something that the job has no part in.
constexpr int most_attempts = 3;

CompareAnswer fail(const std::string &problem);

}  // namespace lab
