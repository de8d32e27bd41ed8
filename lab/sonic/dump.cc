// Reads dumps as they come, piece by piece: no depth of nesting and no size of what is passed over
// costs more than the reading itself.
#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>

#include "sonic/rows.h"
#include "sonic/spelling.h"

namespace lab {
namespace {

using Parser = nlohmann::ordered_json;

constexpr char a_dump[] = "a dump of a configuration database, a JSON object of tables";

// Where a value lies, which is how many objects and lists are open around it.
enum Depth { WHOLE, IN_DUMP, IN_TABLE, IN_ROW, IN_LIST };

std::string place_at(std::string_view json, std::size_t at) {
  const std::string_view before = json.substr(0, at);
  const std::string_view line =
      before.substr(before.rfind('\n') + 1);  // of the only line: npos + 1
  const auto starts_character = [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
  };
  return "line " + std::to_string(1 + std::count(before.begin(), before.end(), '\n')) +
         ", column " +
         std::to_string(1 + std::count_if(line.begin(), line.end(), starts_character));
}

// The parser calls a function for each piece of the dump; one that returns false ends the reading.
struct DumpReader {
  std::string_view json;
  Rows rows;
  InputErrors errors;

  int depth = WHOLE;
  int passed = 0;  // the depth of a value that is passed over, with all that is in it; 0: of none
  std::string table, key_name, field;
  std::map<std::string, Row> *rows_of_table = nullptr;
  Row *row = nullptr;
  std::set<std::string> fields;  // of the row
  std::optional<std::vector<std::string>> list;

  // --- errors ---

  void no_json(std::size_t at, const std::string &problem) {
    rows.clear();
    errors = {{0, 0, place_at(json, at), "no JSON here: " + problem, a_dump}};
  }

  void add_error(const std::string &found, const std::string &expected) {
    std::string where = shown(table);
    if (depth >= IN_TABLE) where += '|' + shown(key_name);
    if (depth >= IN_ROW) where += ' ' + shown(field);
    errors.push_back({0, 0, where, found, expected});
  }

  // --- values ---

  bool is_passed_over() const { return passed != 0 && depth >= passed; }

  bool takes_list() const { return field == "vlan_list" || !is_read(table, field); }

  // A value that cannot stand where it does.
  bool misfit(const std::string &what) {
    if (depth == WHOLE) {
      errors.push_back({0, 0, "", "found " + what, a_dump});
      return false;
    }
    passed = depth;
    list.reset();
    if (depth == IN_DUMP) {
      add_error("found " + what, "a table, an object of rows");
    } else if (depth == IN_TABLE) {
      add_error("found " + what, "a row, an object of fields");
    } else if (is_read(table, field)) {
      add_error("found " + what, takes_list() ? "a text, or a list of texts" : "a text");
    }
    return true;
  }

  bool scalar(const char *what) { return is_passed_over() || misfit(what); }

  bool open(const char *what, bool fits) {
    const bool goes_on = is_passed_over() || fits || misfit(what);
    ++depth;
    return goes_on;
  }

  bool close() {
    --depth;
    if (list && depth == IN_ROW) {
      row->emplace(field, std::move(*list));
      list.reset();
    }
    return true;
  }

  // --- what the parser calls ---

  bool null() { return scalar("null"); }
  bool boolean(bool value) { return scalar(value ? "a bare true" : "a bare false"); }
  bool number_integer(int64_t) { return scalar("a number"); }
  bool number_unsigned(uint64_t) { return scalar("a number"); }
  bool number_float(double, const std::string &) { return scalar("a number"); }
  bool binary(Parser::binary_t &) { return scalar("bytes"); }

  bool string(std::string &text) {
    if (is_passed_over()) return true;
    if (depth < IN_ROW) return misfit("a text");
    if (list) {
      list->push_back(std::move(text));
    } else {
      row->emplace(field, std::move(text));
    }
    return true;
  }

  bool start_object(std::size_t) { return open("an object", depth < IN_ROW); }
  bool end_object() { return close(); }

  bool start_array(std::size_t) {
    const bool fits = depth == IN_ROW && takes_list();
    if (fits && !is_passed_over()) list.emplace();
    return open("a list", fits);
  }
  bool end_array() { return close(); }

  bool key(std::string &name) {
    if (passed != 0 && depth > passed) return true;
    passed = 0;
    bool is_looked_at = true;
    bool is_new = true;
    if (depth == IN_DUMP) {
      table = std::move(name);
      is_looked_at = tables_read().contains(table);
      if (is_looked_at) {
        const auto [at, is_first] = rows.try_emplace(table);
        rows_of_table = &at->second;
        is_new = is_first;
      }
    } else if (depth == IN_TABLE) {
      key_name = std::move(name);
      const auto [at, is_first] = rows_of_table->try_emplace(key_name);
      row = &at->second;
      is_new = is_first;
      fields.clear();
    } else {
      field = std::move(name);
      is_looked_at = is_read(table, field) || table == "STP_PORT";
      is_new = fields.insert(field).second;
    }
    if (is_looked_at && is_new) return true;
    passed = depth;
    if (is_looked_at) add_error("this key stands twice", "it once");
    return true;
  }

  bool parse_error(std::size_t position, const std::string &,
                   const nlohmann::detail::exception &problem) {
    // "[...] parse error at line 1, column 6: syntax error while ... - invalid literal; last read: ..."
    const std::string_view whole = problem.what();
    const std::size_t dash = whole.find(" - ");
    const std::string_view text =
        dash == whole.npos ? "a number that is too great" : whole.substr(dash + 3);
    no_json(std::min(position - std::min<std::size_t>(position, 1), json.size()),
            printable(text.substr(0, text.find(';'))));
    return false;
  }
};

}  // namespace

ReadRows read_dump(std::string_view json) {
  DumpReader reader;
  reader.json = json;
  if (Parser::sax_parse(json.begin(), json.end(), &reader)) {
    // The parser takes a NUL for the end.
    if (const std::size_t nul = json.find('\0'); nul != json.npos) {
      reader.no_json(nul, "a NUL byte");
    }
  }
  return {std::move(reader.rows), std::move(reader.errors)};
}

}  // namespace lab
