// Reads dumps as they come, piece by piece: no depth of nesting and no size of what is passed over
// costs more than the reading itself.
#include <algorithm>
#include <nlohmann/json.hpp>

#include "sonic/dump_reader.h"
#include "sonic/dump_text.h"
#include "sonic/spelling.h"

namespace lab {
namespace {

using Parser = nlohmann::ordered_json;

// The parser calls a function for each piece of the dump; one that returns false ends the reading.
struct DumpParser : DumpReader {
  std::string_view json = {};
  std::size_t passed = 0;  // objects and lists that are open in a value that is passed over
  std::vector<std::string> list = {};

  // --- errors ---

  void not_json(std::size_t at, const std::string &problem) {
    rows.clear();
    errors = {{0, 0, place_in_text(json, at), problem, a_dump}};
  }

  // --- values ---

  // A value that cannot stand where it does.
  bool misfit(const std::string &what) {
    switch (slot) {
      case Slot::whole:
        errors.push_back({0, 0, "", "found " + what, a_dump});
        return false;
      case Slot::name_space:
        add_error("found " + what, "a dump, an object of tables");
        break;
      case Slot::table:
        add_error("found " + what, "a table, an object of rows");
        break;
      case Slot::row:
        add_error("found " + what, "a row, an object of fields");
        break;
      case Slot::member:
        slot = Slot::field;
        [[fallthrough]];
      case Slot::field:
        row->erase(field);
        if (known() != nullptr && known()->use == FieldUse::read) {
          add_error("found " + what, takes_list() ? "a text, or a list of texts" : "a text");
        }
        break;
      default:
        break;
    }
    slot = Slot::unknown;
    return true;
  }

  bool scalar(const char *what) { return passed > 0 || misfit(what); }

  // Passes over a value that is an object or a list.
  bool pass(const char *what) {
    passed = 1;
    return misfit(what);
  }

  // --- what the parser calls ---

  bool null() { return scalar("null"); }
  bool boolean(bool value) { return scalar(value ? "a bare true" : "a bare false"); }
  bool number_integer(int64_t) { return scalar("a number"); }
  bool number_unsigned(uint64_t) { return scalar("a number"); }
  bool number_float(double, const std::string &) { return scalar("a number"); }
  bool binary(Parser::binary_t &) { return scalar("bytes"); }

  bool string(std::string &text) {
    if (passed > 0) return true;
    const bool is_outside = envelope && !open.empty() && open.back() == Open::row;
    if (is_outside && field == "type") envelope->type = text;
    if (slot == Slot::member) {
      list.push_back(std::move(text));
    } else if (slot == Slot::hash) {
      slot = Slot::unknown;  // of another type than a hash, or a field of that name
    } else if (slot == Slot::field && is_list && !takes_list()) {
      return misfit("a list");
    } else if (slot == Slot::field && is_list) {
      row->emplace(field, members_of(FieldValue(std::move(text))));
    } else if (slot == Slot::field) {
      row->emplace(field, std::move(text));
    } else {
      return misfit("a text");
    }
    return true;
  }

  bool start_object(std::size_t) {
    if (passed > 0) return ++passed > 0;
    switch (slot) {
      case Slot::whole:
        open.push_back(name_space.empty() ? Open::dump : Open::namespaces);
        break;
      case Slot::name_space:
        open.push_back(Open::dump);
        break;
      case Slot::table:
        open.push_back(Open::table);
        break;
      case Slot::row:
        begin_row();
        break;
      case Slot::hash:
        begin_hash();
        break;
      case Slot::unknown_row:
        if (first_row.empty()) first_row = table + '|' + key_name;
        return pass("an object");
      case Slot::unknown:
        if (open.back() != Open::dump) return pass("an object");
        open.push_back(Open::unknown_table);
        break;
      default:
        return pass("an object");
    }
    return true;
  }

  bool end_object() {
    if (passed > 0) return --passed, true;
    const Open ended = open.back();
    open.pop_back();
    if (ended == Open::row) end_row();
    return true;
  }

  bool start_array(std::size_t) {
    if (passed > 0) return ++passed > 0;
    if (slot == Slot::hash) slot = Slot::unknown;
    if (slot != Slot::field || !takes_list()) return pass("a list");
    list.clear();
    open.push_back(Open::list);
    slot = Slot::member;
    return true;
  }

  bool end_array() {
    if (passed > 0) return --passed, true;
    open.pop_back();
    if (slot == Slot::member) row->emplace(field, std::move(list));
    return true;
  }

  bool key(std::string &name) {
    if (passed == 0) name_next(name);
    return true;
  }

  bool parse_error(std::size_t position, const std::string &,
                   const nlohmann::detail::exception &problem) {
    // The end of the text counts as a piece of it.
    if (position > json.size()) {
      not_json(json.size(), "found the end of the text inside the JSON: the dump is cut off");
      return false;
    }
    // "[...] parse error at line 1, column 6: syntax error ... - invalid literal; last read: ..."
    const std::string_view whole = problem.what();
    const std::size_t dash = whole.find(" - ");
    const std::string_view text =
        dash == whole.npos ? "a number that is too great" : whole.substr(dash + 3);
    not_json(position - std::min<std::size_t>(position, 1),
             "no JSON here: " + printable(text.substr(0, text.find(';'))));
    return false;
  }
};

}  // namespace

ReadRows read_dump(std::string_view json, std::string_view name_space) {
  if (auto problem = text_that_is_no_json(json)) return {{}, {std::move(*problem)}};
  DumpParser reader;
  reader.json = without_byte_order_mark(json);
  reader.name_space = name_space;
  const std::string_view text = reader.json;
  if (Parser::sax_parse(text.begin(), text.end(), &reader)) {
    reader.check_form();
    // The parser takes a NUL for the end.
    if (const std::size_t nul = text.find('\0'); nul != text.npos) {
      reader.not_json(nul, "no JSON here: a NUL byte");
    }
  }
  return {std::move(reader.rows), std::move(reader.errors)};
}

}  // namespace lab
