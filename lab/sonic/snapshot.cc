#include "sonic/snapshot.h"

#include <set>

namespace lab {
namespace {

std::optional<Row> copy_of(const Row *row) {
  return row != nullptr ? std::optional<Row>(*row) : std::nullopt;
}

}  // namespace

std::pair<std::string, std::string> split_row_name(const std::string &name) {
  const std::size_t bar = name.find('|');
  if (bar == name.npos) return {"", name};
  return {name.substr(0, bar), name.substr(bar + 1)};
}

const Row *find_row(const Rows &rows, const std::string &name) {
  const auto [table, key] = split_row_name(name);
  const auto of_table = rows.find(table);
  if (of_table == rows.end()) return nullptr;
  const auto row = of_table->second.find(key);
  return row != of_table->second.end() ? &row->second : nullptr;
}

void set_row(Rows &rows, const std::string &name, std::optional<Row> row) {
  const auto [table, key] = split_row_name(name);
  if (row) {
    rows[table].insert_or_assign(key, std::move(*row));
  } else if (const auto of_table = rows.find(table); of_table != rows.end()) {
    of_table->second.erase(key);
    if (of_table->second.empty()) rows.erase(of_table);
  }
}

std::vector<std::string> differing_rows(const Rows &a, const Rows &b) {
  std::set<std::string> names;
  for (const auto &[these, others] : {std::pair{&a, &b}, std::pair{&b, &a}}) {
    for (const auto &[table, rows] : *these) {
      const auto same = others->find(table);
      if (same != others->end() && same->second == rows) continue;  // as nearly always
      for (const auto &[key, row] : rows) {
        const std::string name = table + "|" + key;
        const Row *other = find_row(*others, name);
        if (other == nullptr || *other != row) names.insert(name);
      }
    }
  }
  return {names.begin(), names.end()};
}

void notice_change(Snapshot &snapshot, TimePoint now) {
  if (!snapshot.first_change) snapshot.first_change = now;
  snapshot.last_change = now;
}

void change_row(Snapshot &snapshot, const std::string &name, std::optional<Row> row) {
  const Row *now = find_row(snapshot.rows, name);
  if (row ? now != nullptr && *now == *row : now == nullptr) return;
  snapshot.before.try_emplace(name, copy_of(now));
  set_row(snapshot.rows, name, std::move(row));
}

void lose(Snapshot &snapshot, std::string reason, bool refused) {
  snapshot = Snapshot{};
  snapshot.state = SourceState::lost;
  snapshot.reason = std::move(reason);
  snapshot.refused = refused;
}

ReadRows take_reading(Snapshot snapshot) {
  ReadRows read{std::move(snapshot.rows), {}};
  if (snapshot.state == SourceState::lost) {
    read.errors.push_back({0, 0, "", snapshot.reason, "a configuration database"});
  }
  for (const auto &[row, errors] : snapshot.errors) {
    read.errors.insert(read.errors.end(), errors.begin(), errors.end());
  }
  return read;
}

}  // namespace lab
