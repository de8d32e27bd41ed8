#include "sonic/patch.h"

#include <utility>

namespace lab {
namespace {

using Op = PatchOperation::Op;

// From one row to the other, field by field.
void change_row(const std::string &table, const std::string &key, const Row &before,
                const Row &after, std::vector<PatchOperation> &patch) {
  for (const auto &[field, value] : before) {
    if (!after.contains(field)) patch.push_back({Op::remove, {table, key, field}, {}});
  }
  for (const auto &[field, value] : after) {
    const auto old = before.find(field);
    if (old != before.end() && old->second == value) continue;
    patch.push_back({old == before.end() ? Op::add : Op::replace, {table, key, field}, value});
  }
}

}  // namespace

Rows apply_changes(Rows rows, const Changes &changes) {
  for (const auto &[table, key, field, value] : changes) {
    Row &row = rows[table][key];
    row.erase(field);
    if (value) row.emplace(field, *value);
  }
  return rows;
}

std::vector<PatchOperation> make_patch(const Rows &rows, const Changes &changes) {
  Rows touched;
  for (const Change &change : changes) {
    const auto table = rows.find(change.table);
    if (table == rows.end()) continue;
    const auto row = table->second.find(change.key);
    if (row != table->second.end()) touched[change.table].insert(*row);
  }
  // Tables and rows that are missing are added whole.
  std::vector<PatchOperation> patch;
  for (auto &[table, rows_after] : apply_changes(std::move(touched), changes)) {
    const auto before = rows.find(table);
    if (before == rows.end()) {
      patch.push_back({Op::add, {table}, rows_after});
      continue;
    }
    for (const auto &[key, row] : rows_after) {
      const auto row_before = before->second.find(key);
      if (row_before == before->second.end()) {
        patch.push_back({Op::add, {table, key}, row});
      } else {
        change_row(table, key, row_before->second, row, patch);
      }
    }
  }
  return patch;
}

}  // namespace lab
