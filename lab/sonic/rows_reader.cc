#include "sonic/rows_reader.h"

#include <algorithm>

#include "sonic/spelling.h"
#include "switch/values.h"

namespace lab {
namespace {

// Of a source; each takes memory, and rows of a hostile server may have any number.
constexpr std::size_t most_errors = 10000;

}  // namespace

std::string RowsReader::place(const std::string &table, const std::string &key, const char *field) {
  return table + '|' + shown(key) + (field != nullptr ? ' ' + std::string(field) : "");
}

void RowsReader::add_error(const std::string &where, const std::string &found,
                           const std::string &expected) {
  if (errors.size() < most_errors) {
    errors.push_back({0, 0, where, found, expected});
  } else {
    ++errors_left_out;
  }
}

const Table &RowsReader::table(const char *name) const {
  static const Table none;
  const auto found = rows.find(name);
  return found != rows.end() ? found->second : none;
}

const Row &RowsReader::row(const char *of_table, const char *key) const {
  static const Row none;
  const auto found = table(of_table).find(key);
  return found != table(of_table).end() ? found->second : none;
}

std::optional<std::string> RowsReader::text(const char *of_table, const std::string &key,
                                            const Row &in, const char *field) {
  const auto found = in.find(field);
  if (found == in.end()) return std::nullopt;
  const auto *value = std::get_if<std::string>(&found->second);
  if (value == nullptr) add_error(place(of_table, key, field), "found a list", "a text");
  return value != nullptr ? std::optional(*value) : std::nullopt;
}

std::optional<Bytes> RowsReader::value(const char *of_table, const std::string &key, const Row &in,
                                       const char *field) {
  const auto written = text(of_table, key, in, field);
  if (!written) return std::nullopt;
  const Field &known = *find_field(of_table, field);
  auto parsed = known.parse(*written);
  if (!parsed) add_error(place(of_table, key, field), "found " + quote(*written), known.expected);
  return parsed;
}

bool RowsReader::boolean(const char *of_table, const std::string &key, const Row &in,
                         const char *field) {
  const auto read = value(of_table, key, in, field);
  return read && word_of(*read) != 0;
}

Timers RowsReader::timers(const char *of_table, const Row &in) {
  Timers read;
  for (const auto &[field, written] : in) {
    const Field *known = find_field(of_table, field);
    if (known != nullptr && known->use == FieldUse::noted) read[key_of(field)] = joined(written);
  }
  return read;
}

std::vector<std::string_view> RowsReader::parts(const char *of_table, const std::string &key,
                                                std::size_t count, const char *expected) {
  std::vector<std::string_view> read = parts_of(key);
  const bool is_whole =
      std::none_of(read.begin(), read.end(), [](auto part) { return part.empty(); });
  if (read.size() == count && is_whole) return read;
  add_error(place(of_table, key, nullptr), "found the key " + quote(key), expected);
  return {};
}

std::optional<uint32_t> RowsReader::vlan(const char *of_table, const std::string &key,
                                         std::string_view name, const char *expected) {
  const auto number = vlan_of(name);
  if (number && *number >= first_vlan && *number <= last_vlan) return number;
  add_error(place(of_table, key, nullptr), "found " + quote(name),
            number ? "a VLAN from 1 to 4094" : expected);
  return std::nullopt;
}

}  // namespace lab
