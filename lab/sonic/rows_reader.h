// Rows as they are read, with an error for each that is not as it must be.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sonic/rows.h"

namespace lab {

// Every row is read, whatever the others say, so that all errors are reported at once. `of_table`
// and `key` name the row in an error.
struct RowsReader {
  const Rows &rows;
  InputErrors errors;
  std::size_t errors_left_out = 0;  // there are too many

  // "STP_PORT|PortChannel10 root_guard"; without a field the row.
  static std::string place(const std::string &table, const std::string &key, const char *field);

  void add_error(const std::string &where, const std::string &found, const std::string &expected);

  // Empty ones where there are none.
  const Table &table(const char *name) const;
  const Row &row(const char *of_table, const char *key) const;

  // The text of a field, and what the table of fields makes of it. Nothing: there is no such field,
  // or it is an error.
  std::optional<std::string> text(const char *of_table, const std::string &key, const Row &in,
                                  const char *field);
  std::optional<Bytes> value(const char *of_table, const std::string &key, const Row &in,
                             const char *field);
  bool boolean(const char *of_table, const std::string &key, const Row &in, const char *field);

  // What notes compare: the timers of a row.
  static Timers timers(const char *of_table, const Row &in);

  // The parts of a key. Nothing after an error.
  std::vector<std::string_view> parts(const char *of_table, const std::string &key,
                                      std::size_t count, const char *expected);

  std::optional<uint32_t> vlan(const char *of_table, const std::string &key, std::string_view name,
                               const char *expected);
};

// --- the MST region ---

// `is_needed`: the switch runs MST, and without a name the region has the switch's address.
std::string region_name(RowsReader &reader, bool is_needed, const std::string &address);
Bytes region_revision(RowsReader &reader);
Bytes region_map(RowsReader &reader);

}  // namespace lab
