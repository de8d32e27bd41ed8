#include "sonic/answers.h"

#include <algorithm>

namespace lab {
namespace {

bool is_list(const redisReply &reply, std::size_t elements) {
  return reply.type == REDIS_REPLY_ARRAY && reply.elements == elements;
}

std::string text_in(const redisReply &list, std::size_t i, const char *command) {
  const redisReply &element = *list.element[i];
  if (element.type != REDIS_REPLY_STRING) {
    refuse_answer(std::string("an answer to ") + command + " with something else than texts");
  }
  return std::string(text_of(element));
}

void check_size(const std::string &text, std::size_t most, const char *what) {
  if (text.size() <= most) return;
  throw ConnectionLost{std::string("the server sends ") + what + " of more than " +
                       std::to_string(most) + " bytes"};
}

std::vector<std::string> split_list(const std::string &text) {
  std::vector<std::string> members;
  for (std::size_t at = 0; at <= text.size() && !text.empty();) {
    const std::size_t end = std::min(text.find(',', at), text.size());
    members.push_back(text.substr(at, end - at));
    at = end + 1;
  }
  return members;
}

}  // namespace

FoundKeys read_keys(const redisReply &reply, const ReadLimits &limits) {
  if (!is_list(reply, 2) || reply.element[1]->type != REDIS_REPLY_ARRAY) {
    refuse_answer("an answer to SCAN that is not a cursor and a list of keys");
  }
  FoundKeys found;
  found.cursor = text_in(reply, 0, "SCAN");
  constexpr std::size_t most_digits = 20;  // of 64 bits
  if (found.cursor.empty() || found.cursor.size() > most_digits ||
      found.cursor.find_first_not_of("0123456789") != std::string::npos) {
    refuse_answer("an answer to SCAN with a cursor that is not a number");
  }
  const redisReply &keys = *reply.element[1];
  found.has_keys = keys.elements > 0;
  for (std::size_t i = 0; i < keys.elements; ++i) {
    std::string key = text_in(keys, i, "SCAN");
    if (!tables_read().contains(split_row_name(key).first)) continue;
    check_size(key, limits.name_bytes, "a name");
    found.keys.push_back(std::move(key));
  }
  return found;
}

ReadRow read_row(const std::string &name, const redisReply &reply, const ReadLimits &limits) {
  if (reply.type == REDIS_REPLY_ERROR) {  // the one that is left is a wrong type
    return {{}, {{0, 0, shown(name), "found a value of another type", "a hash"}}};
  }
  if (reply.type != REDIS_REPLY_ARRAY) refuse_answer("an answer to HGETALL that is not a list");
  if (reply.elements % 2 != 0) {
    refuse_answer("an answer to HGETALL with an odd number of elements");
  }
  if (reply.elements == 0) return {};
  ReadRow read{Row{}, {}};
  const std::string table = split_row_name(name).first;
  for (std::size_t i = 0; i < reply.elements; i += 2) {
    std::string field = text_in(reply, i, "HGETALL");
    const std::string value = text_in(reply, i + 1, "HGETALL");
    const bool has_list = field.ends_with('@');
    if (has_list) field.pop_back();
    if (field == "NULL" || !(is_read(table, field) || table == "STP_PORT")) continue;
    check_size(field, limits.name_bytes, "a name");
    check_size(value, limits.value_bytes, "a value");
    const bool is_new =
        read.row->try_emplace(field, has_list ? FieldValue(split_list(value)) : FieldValue(value))
            .second;
    if (!is_new) {
      read.errors.push_back(
          {0, 0, shown(name) + " " + shown(field), "found it as a list and as a text", "it once"});
    }
  }
  return read;
}

bool has_notifications(const redisReply &reply) {
  const std::string_view flags = is_list(reply, 2) ? text_of(*reply.element[1]) : "";
  const auto has = [flags](char flag) { return flags.find(flag) != flags.npos; };
  return has('K') && (has('A') || (has('g') && has('h')));
}

std::optional<std::string> notified_row(const redisReply &reply, const std::string &channel,
                                        const ReadLimits &limits) {
  if (!is_list(reply, 4) || text_of(*reply.element[0]) != "pmessage") return std::nullopt;
  const std::string text = text_in(reply, 2, "PSUBSCRIBE");
  std::string row = text.substr(std::min(channel.size(), text.size()));
  if (!text.starts_with(channel) || !tables_read().contains(split_row_name(row).first)) {
    refuse_answer("a notification that was not asked for");
  }
  check_size(row, limits.name_bytes, "a name");
  return row;
}

}  // namespace lab
