#include "sonic/reading.h"

#include <fmt/core.h>

#include <algorithm>

namespace lab {
namespace {

// Estimated overhead of a row, and of a string in it.
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

void check_memory(const Reading &reading, const ReadLimits &limits) {
  if (reading.memory <= limits.memory_bytes) return;
  throw ConnectionError{
      fmt::format("the rows of the database need more than {} bytes", limits.memory_bytes)};
}

void check_size(const std::string &text, std::size_t limit, const char *what) {
  if (text.size() <= limit) return;
  throw ConnectionError{fmt::format("the server sends {} of more than {} bytes", what, limit)};
}

bool is_list(const redisReply &reply, std::size_t elements) {
  return reply.type == REDIS_REPLY_ARRAY && reply.elements == elements;
}

std::string element_text(const redisReply &list, std::size_t i, const char *command) {
  const redisReply &element = *list.element[i];
  if (element.type != REDIS_REPLY_STRING) {
    throw_protocol_error(
        fmt::format("an answer to {} with an element that is not a string", command));
  }
  return std::string(reply_text(element));
}

// Returns nullopt if the row does not exist or cannot be read.
std::optional<Row> read_row(const std::string &name, const redisReply &reply, InputErrors &errors,
                            const ReadLimits &limits) {
  if (reply.type == REDIS_REPLY_ERROR) {  // WRONGTYPE; other errors close the connection
    errors.push_back({0, 0, shorten(name), "found a value of another type", "a hash"});
    return std::nullopt;
  }
  if (reply.type != REDIS_REPLY_ARRAY || reply.elements % 2 != 0) {
    throw_protocol_error("an answer to HGETALL that is not a list of fields and values");
  }
  if (reply.elements == 0) return std::nullopt;
  Row row;
  const std::string table = split_row_name(name).first;
  for (std::size_t i = 0; i < reply.elements; i += 2) {
    std::string field = element_text(reply, i, "HGETALL");
    const std::string text = element_text(reply, i + 1, "HGETALL");
    const bool is_list = field.ends_with('@');
    if (is_list) field.pop_back();
    if (field == "NULL" || !is_read(table, field)) continue;
    check_size(field, limits.name_bytes, "a name");
    check_size(text, limits.value_bytes, "a value");
    if (!row.try_emplace(field, is_list ? FieldValue(members_of(text)) : text).second) {
      errors.push_back(
          {0, 0, shorten(name) + " " + shorten(field), "found a list and a string", "one of them"});
    }
  }
  return row;
}

}  // namespace

Reading start_partial_reading(Rows rows, std::map<std::string, InputErrors> errors,
                              const std::set<std::string> &changed) {
  Reading reading;
  reading.is_whole = false;
  reading.rows = std::move(rows);
  reading.errors = std::move(errors);
  for (const auto &[table, table_rows] : reading.rows) {
    for (const auto &[key, row] : table_rows) reading.memory += memory_of(table + "|" + key, row);
  }
  reading.unrequested.assign(changed.begin(), changed.end());
  return reading;
}

std::string add_keys(Reading &reading, const redisReply &reply, const ReadLimits &limits) {
  if (!is_list(reply, 2) || reply.element[1]->type != REDIS_REPLY_ARRAY) {
    throw_protocol_error("an answer to SCAN that is not a cursor and a list of keys");
  }
  const std::string cursor = element_text(reply, 0, "SCAN");
  constexpr std::size_t max_digits = 20;  // of 64 bits
  if (!decimal(cursor) || cursor.size() > max_digits) {
    throw_protocol_error("an answer to SCAN with a cursor that is not a number");
  }
  const redisReply &keys = *reply.element[1];
  reading.has_keys = reading.has_keys || keys.elements > 0;
  for (std::size_t i = 0; i < keys.elements; ++i) {
    std::string name = element_text(keys, i, "SCAN");
    const auto [table, key] = split_row_name(name);
    if (!tables_read().contains(table)) continue;
    check_size(name, limits.name_bytes, "a name");
    Table &table_rows = reading.rows[table];
    if (!table_rows.try_emplace(key).second) continue;  // SCAN may return a key twice
    reading.memory += memory_of(name, {});
    reading.unrequested.push_back(std::move(name));
    const std::size_t limit = table == "VLAN_MEMBER" ? limits.rows : limits.rows_of_table;
    if (table_rows.size() > limit) {
      throw ConnectionError{fmt::format("the database has more than {} rows of {}", limit, table)};
    }
  }
  check_memory(reading, limits);
  if (++reading.scans >= limits.scan_rounds && cursor != "0") {
    throw ConnectionError{fmt::format("SCAN is not complete after {} answers", limits.scan_rounds)};
  }
  return cursor;
}

void add_row(Reading &reading, const std::string &name, const redisReply &reply,
             const ReadLimits &limits) {
  InputErrors errors;
  std::optional<Row> row = read_row(name, reply, errors, limits);
  reading.errors.erase(name);
  if (!errors.empty()) reading.errors.emplace(name, std::move(errors));
  if (reading.errors.size() > limits.unreadable_rows) {
    throw ConnectionError{
        fmt::format("the database has more than {} unreadable rows", limits.unreadable_rows)};
  }
  if (const Row *before = find_row(reading.rows, name)) {
    reading.memory -= memory_of(name, *before);
    --reading.row_delta;
  }
  if (row) {
    reading.memory += memory_of(name, *row);
    ++reading.row_delta;
    reading.errors.erase("");  // the database is not empty any more
  }
  check_memory(reading, limits);
  set_row(reading.rows, name, std::move(row));
}

bool has_notifications(const redisReply &reply) {
  const std::string_view flags = is_list(reply, 2) ? reply_text(*reply.element[1]) : "";
  const auto has = [flags](char flag) { return flags.find(flag) != flags.npos; };
  return has('K') && (has('A') || (has('g') && has('h')));
}

std::optional<std::string> notified_row(const redisReply &reply, const std::string &channel,
                                        const ReadLimits &limits) {
  if (!is_list(reply, 4) || reply_text(*reply.element[0]) != "pmessage") return std::nullopt;
  const std::string text = element_text(reply, 2, "PSUBSCRIBE");
  std::string row = text.substr(std::min(channel.size(), text.size()));
  if (!text.starts_with(channel) || !tables_read().contains(split_row_name(row).first)) {
    throw_protocol_error("an unexpected notification");
  }
  check_size(row, limits.name_bytes, "a name");
  return row;
}

}  // namespace lab
