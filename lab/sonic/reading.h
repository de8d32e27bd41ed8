// A reading of all rows of a database, and what the rows that are kept may come to.
#pragma once

#include <deque>
#include <map>
#include <set>
#include <string>

#include "sonic/answers.h"

namespace lab {

struct Reading {
  std::set<std::string> names;
  std::map<std::string, std::size_t> rows_of_table;
  std::size_t memory_of_names = 0;
  bool has_keys = false;  // of any table
  std::size_t scans = 0;
  bool scanned = false;
  std::deque<const std::string *> to_ask;  // of the names
  std::size_t asked = 0;
  Rows rows;
  std::map<std::string, InputErrors> errors;
  std::size_t memory = 0;    // of the rows
  bool is_settling = false;  // it takes the place of the rows that changed
};

// The keys of an answer to SCAN. Throws ConnectionLost past a limit, as all that follows.
void add_keys(Reading &reading, FoundKeys found, const ReadLimits &limits);

void keep_errors(std::map<std::string, InputErrors> &errors, const std::string &name,
                 InputErrors found, const ReadLimits &limits);

// Before a row takes the place of what the rows have of it.
void count_memory(std::size_t &memory, const Rows &rows, const std::string &name,
                  const std::optional<Row> &row, const ReadLimits &limits);

// The memory that rows take, roughly.
std::size_t memory_of(const Rows &rows);

}  // namespace lab
