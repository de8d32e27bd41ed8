#include "sonic/snapshot.h"

#include <set>

#include "pair/fields.h"

namespace lab {

SharedContents pack(const Rows &rows) {
  const Bytes bytes = encode_record(rows);
  return std::make_shared<Contents>(Contents{true, {bytes.begin(), bytes.end()}});
}

Rows unpack(const SharedContents &contents) {
  if (contents == nullptr || !contents->has_rows) return {};
  return decode_record<Rows>({contents->text.begin(), contents->text.end()});
}

std::pair<std::string, std::string> split_row_name(const std::string &name) {
  const std::size_t bar = name.find('|');
  if (bar == name.npos) return {"", name};
  return {name.substr(0, bar), name.substr(bar + 1)};
}

const Row *find_row(const Rows &rows, const std::string &name) {
  const auto [table, key] = split_row_name(name);
  const Table &found = table_of(rows, table);
  const auto row = found.find(key);
  return row != found.end() ? &row->second : nullptr;
}

void set_row(Rows &rows, const std::string &name, std::optional<Row> row) {
  const auto [table, key] = split_row_name(name);
  if (row) {
    rows[table].insert_or_assign(key, std::move(*row));
  } else if (const auto found = rows.find(table); found != rows.end()) {
    found->second.erase(key);
    if (found->second.empty()) rows.erase(found);
  }
}

std::vector<std::string> differing_rows(const Rows &a, const Rows &b) {
  std::set<std::string> names;
  for (const auto &[own, other] : {std::pair{&a, &b}, std::pair{&b, &a}}) {
    for (const auto &[table, rows] : *own) {
      const Table &same = table_of(*other, table);
      for (const auto &[key, row] : rows) {
        const auto found = same.find(key);
        if (found == same.end() || found->second != row) names.insert(table + "|" + key);
      }
    }
  }
  return {names.begin(), names.end()};
}

void record_change(Snapshot &snapshot, TimePoint now) {
  if (!snapshot.first_change) snapshot.first_change = now;
  snapshot.last_change = now;
}

bool set_contents(Snapshot &snapshot, SharedContents contents) {
  if (snapshot.contents != nullptr && *snapshot.contents == *contents) return false;
  snapshot.contents = std::move(contents);
  return true;
}

InputErrors all_errors(const Snapshot &snapshot) {
  InputErrors all;
  if (snapshot.state == SourceState::disconnected) {
    all.push_back({0, 0, "", snapshot.reason, "a configuration database"});
  }
  for (const auto &[row, errors] : snapshot.errors) {
    all.insert(all.end(), errors.begin(), errors.end());
  }
  return all;
}

void mark_disconnected(Snapshot &snapshot, std::string reason, bool refused) {
  snapshot = Snapshot{};
  snapshot.state = SourceState::disconnected;
  snapshot.reason = std::move(reason);
  snapshot.refused = refused;
}

}  // namespace lab
