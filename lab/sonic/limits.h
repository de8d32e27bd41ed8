// Limits for the data and the response times of a database server.
#pragma once

#include <fmt/core.h>

#include <chrono>
#include <cstddef>
#include <string>

namespace lab {

// docs/reliability.md lists these. Together they keep a process below 200 MB, regardless of what
// its two servers send.
struct ReadLimits {
  std::chrono::milliseconds answer_time{5000};    // until an answer is complete
  std::chrono::milliseconds reading_time{10000};  // until all rows have been read
  std::size_t scan_rounds = 2000;

  // Of one answer.
  std::size_t answer_bytes = std::size_t{4} << 20;
  std::size_t line_bytes = std::size_t{64} << 10;  // an error or a length
  std::size_t answer_elements = 100000;
  std::size_t name_bytes = 1024;  // of a row or a field
  std::size_t value_bytes = std::size_t{64} << 10;
  std::size_t error_bytes = 200;  // a server's error, as it is printed

  // Of all rows that are kept.
  std::size_t rows = 40000;          // of VLAN_MEMBER
  std::size_t rows_of_table = 4096;  // of any other table
  std::size_t memory_bytes = std::size_t{8} << 20;
  std::size_t unreadable_rows = 1000;

  // Above this number of changed rows, all rows are read.
  std::size_t changed_rows = 4096;
};

// Returns limits with `reading` for all rows and half of it for an answer.
inline ReadLimits limits_within(std::chrono::milliseconds reading) {
  ReadLimits limits;
  limits.reading_time = reading;
  limits.answer_time = reading / 2;
  return limits;
}

// "2.5 s".
inline std::string seconds_text(std::chrono::milliseconds time) {
  return fmt::format("{:g} s", std::chrono::duration<double>(time).count());
}

}  // namespace lab
