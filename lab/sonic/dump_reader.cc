#include "sonic/dump_reader.h"

#include <algorithm>

#include "sonic/dump_text.h"
#include "sonic/spelling.h"

namespace lab {
namespace {

// "localhost" and "asic0", the parts of a switch of several ASICs.
bool is_namespace(std::string_view name) {
  constexpr std::string_view asic = "asic";
  return name == "localhost" || (name.starts_with(asic) && decimal(name.substr(asic.size())));
}

// Does a key begin with the name of a table and a bar?
bool repeats_table(std::string_view key) {
  const std::size_t bar = key.find('|');
  return bar != key.npos && tables_read().contains(std::string(key.substr(0, bar)));
}

}  // namespace

void DumpReader::add_error(const std::string &found, const std::string &expected) {
  std::string where = shown(slot == Slot::name_space ? key_name : table);
  if (slot == Slot::row || slot == Slot::field) {
    where += '|' + shown(key_name);
  }
  if (slot == Slot::field) where += ' ' + shown(field);
  errors.push_back({0, 0, where, found, expected});
}

void DumpReader::name_namespace(const std::string &name) {
  if (is_namespace(name)) namespaces.insert(name);
  key_name = name;
  slot = name == name_space ? Slot::name_space : Slot::unknown;
  if (slot == Slot::name_space && selected++ > 0) add_error("this key stands twice", "it once");
}

void DumpReader::name_table(const std::string &name) {
  const std::size_t bar = name.find('|');
  table = name.substr(0, bar);
  const bool is_known = tables_read().contains(table);
  if (bar == name.npos) {
    if (!is_known && is_namespace(name)) namespaces.insert(name);
    slot = is_known ? Slot::table : Slot::unknown;
    if (is_known && first_table.empty()) first_table = name;
    if (is_known && !rows.try_emplace(table).second) repeated();
  } else {
    key_name = name.substr(bar + 1);
    slot = Slot::unknown_row;
    if (is_known) name_row(key_name);
  }
}

void DumpReader::name_row(const std::string &name) {
  slot = Slot::row;
  key_name = name;
  if (first_row.empty() && open.back() == Open::dump) first_row = table + '|' + name;
  if (open.back() == Open::table && repeats_table(name)) {
    add_error("found a key that begins with the name of a table",
              quote(name.substr(name.find('|') + 1)));
    slot = Slot::unknown;
  } else if (!rows[table].try_emplace(name).second) {
    repeated();
  }
}

void DumpReader::name_field(const std::string &name) {
  field = name;
  is_list = field.ends_with('@');
  if (is_list) field.pop_back();
  const bool is_new = names.insert(field).second;
  const bool is_outside = envelope && open.back() == Open::row;
  slot = Slot::field;
  const bool is_after_hash = is_outside && envelope->has_hash;
  if (is_outside && field == "value" && !is_after_hash) {
    slot = Slot::hash;
  } else if (!is_read(table, field) || field == "NULL" || is_after_hash) {
    slot = Slot::unknown;
  } else if (!is_new) {
    repeated();
  }
}

void DumpReader::repeated() {
  add_error("this key stands twice", "it once");
  slot = Slot::unknown;
}

void DumpReader::name_next(const std::string &name) {
  is_empty = false;
  switch (open.back()) {
    case Open::namespaces:
      name_namespace(name);
      break;
    case Open::dump:
      name_table(name);
      break;
    case Open::table:
      name_row(name);
      break;
    case Open::unknown_table:
      slot = Slot::unknown;
      if (misplaced.empty() && repeats_table(name)) misplaced = table;
      break;
    default:
      name_field(name);
  }
}

void DumpReader::begin_row() {
  row = &rows[table][key_name];
  names.clear();
  envelope.reset();
  if (open.back() == Open::dump) envelope = Envelope{false, "", errors.size()};
  open.push_back(Open::row);
}

// What the row says itself was the envelope.
void DumpReader::begin_hash() {
  envelope->has_hash = true;
  errors.resize(envelope->errors_before);
  row->clear();
  names.clear();
  open.push_back(Open::hash);
}

void DumpReader::end_row() {
  if (!envelope) return;
  static const std::set<std::string> of_envelope = {"expireat", "ttl", "type", "value"};
  const bool is_envelope =
      envelope->has_hash ||
      (names.contains("type") && (names.contains("value") || envelope->type == "hash") &&
       std::includes(of_envelope.begin(), of_envelope.end(), names.begin(), names.end()));
  if (!is_envelope) return;
  if (envelope->type == "hash" && envelope->has_hash) return;
  rows[table].erase(key_name);
  if (rows[table].empty()) rows.erase(table);
  errors.resize(envelope->errors_before);
  slot = Slot::row;
  if (envelope->type == "hash") add_error("found a hash without fields", "fields under 'value'");
}

void DumpReader::check_form() {
  const auto of_whole = [this](const std::string &found, const std::string &expected) {
    errors.insert(errors.begin(), InputError{0, 0, "", found, expected});
  };
  const std::vector<std::string> known(namespaces.begin(), namespaces.end());
  if (is_empty) {
    of_whole("found an empty object", a_dump);
  } else if (!name_space.empty() && selected == 0) {
    of_whole("found no namespace " + quote(name_space),
             known.empty() ? "a dump of several ASICs" : one_of(known));
  } else if (!first_table.empty() && !first_row.empty()) {
    of_whole("found the table " + quote(first_table) + " and the row " + quote(first_row),
             "tables of rows, or rows with the names of their tables");
  } else if (rows.empty() && errors.empty() && name_space.empty() && !known.empty()) {
    of_whole("found a dump of several ASICs: " + listed(known), "the namespace of one of them");
  } else if (rows.empty() && errors.empty() && !misplaced.empty()) {
    of_whole("found rows with the names of their tables in " + quote(misplaced), "them at the top");
  }
}

}  // namespace lab
