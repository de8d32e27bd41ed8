#include "sonic/reading.h"

namespace lab {
namespace {

// What a row, and a text in it, take in addition to their characters.
constexpr std::size_t row_bytes = 144;
constexpr std::size_t text_bytes = 64;

std::size_t memory_of(const std::string &name, const Row &row) {
  std::size_t bytes = row_bytes + name.size();
  for (const auto &[field, value] : row) {
    bytes += 2 * text_bytes + field.size();
    if (const auto *text = std::get_if<std::string>(&value)) {
      bytes += text->size();
    } else {
      for (const std::string &member : std::get<std::vector<std::string>>(value)) {
        bytes += text_bytes + member.size();
      }
    }
  }
  return bytes;
}

void check_memory(std::size_t memory, const ReadLimits &limits) {
  if (memory <= limits.memory_bytes) return;
  throw ConnectionLost{"the rows of the database take more than " +
                       std::to_string(limits.memory_bytes) + " bytes"};
}

}  // namespace

void add_keys(Reading &reading, FoundKeys found, const ReadLimits &limits) {
  reading.has_keys = reading.has_keys || found.has_keys;
  for (std::string &key : found.keys) {
    const std::string table = split_row_name(key).first;
    const auto [name, is_new] = reading.names.insert(std::move(key));
    if (!is_new) continue;
    reading.to_ask.push_back(&*name);
    const std::size_t most = table == "VLAN_MEMBER" ? limits.rows : limits.rows_of_table;
    if (++reading.rows_of_table[table] > most) {
      throw ConnectionLost{"the database has more than " + std::to_string(most) + " rows of " +
                           table};
    }
    reading.memory_of_names += memory_of(*name, {});
  }
  check_memory(reading.memory_of_names, limits);
  reading.scanned = found.cursor == "0";
  if (++reading.scans >= limits.scan_rounds && !reading.scanned) {
    throw ConnectionLost{"the server has not listed its keys after " +
                         std::to_string(limits.scan_rounds) + " answers to SCAN"};
  }
}

void keep_errors(std::map<std::string, InputErrors> &errors, const std::string &name,
                 InputErrors found, const ReadLimits &limits) {
  if (found.empty()) {
    errors.erase(name);
  } else {
    errors[name] = std::move(found);
  }
  if (errors.size() > limits.unreadable_rows) {
    throw ConnectionLost{"the database has more than " + std::to_string(limits.unreadable_rows) +
                         " rows that cannot be read"};
  }
}

void count_memory(std::size_t &memory, const Rows &rows, const std::string &name,
                  const std::optional<Row> &row, const ReadLimits &limits) {
  if (const Row *old = find_row(rows, name)) memory -= memory_of(name, *old);
  if (row) memory += memory_of(name, *row);
  check_memory(memory, limits);
}

std::size_t memory_of(const Rows &rows) {
  std::size_t memory = 0;
  for (const auto &[table, of_table] : rows) {
    for (const auto &[key, row] : of_table) memory += memory_of(table + "|" + key, row);
  }
  return memory;
}

}  // namespace lab
