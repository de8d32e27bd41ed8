// A dump on its way from JSON to rows: what is open, what the next value is, and the rows so far.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "sonic/rows.h"

namespace lab {

// What an object or a list that is open is.
enum class Open { namespaces, dump, table, unknown_table, row, hash, list };

// What the next value is.
enum class Slot { whole, name_space, table, unknown, row, unknown_row, field, hash, member };

struct DumpReader {
  std::string name_space = {};  // that is to be read; empty: the dump has none
  Rows rows = {};
  InputErrors errors = {};

  std::vector<Open> open = {};
  Slot slot = Slot::whole;
  std::string table = {}, key_name = {}, field = {};
  Row *row = nullptr;
  std::set<std::string> names = {};  // in the row
  bool is_list = false;              // the field's name ends with '@'

  // A row of a flat form, whose fields may lie in an envelope.
  struct Envelope {
    bool has_hash = false;
    std::string type;
    std::size_t errors_before = 0;
  };
  std::optional<Envelope> envelope = {};  // of the row, when it is flat

  // What shows the form of the dump.
  bool is_empty = true;
  std::string first_table = {}, first_row = {}, misplaced = {};
  std::set<std::string> namespaces = {};
  std::size_t selected = 0;

  void add_error(const std::string &found, const std::string &expected);

  const Field *known() const { return find_field(table, field); }
  bool takes_list() const { return known() == nullptr || known()->takes_list; }

  // A key, and the rows that begin and end with their objects.
  void name_next(const std::string &key);
  void begin_row();
  void begin_hash();
  void end_row();

  // Adds what is wrong with the dump as a whole.
  void check_form();

  // Keys, by what is open around them.
  void name_namespace(const std::string &name);
  void name_table(const std::string &name);
  void name_row(const std::string &name);
  void name_field(const std::string &name);
  void repeated();
};

}  // namespace lab
