// Reads dumps: the parser builds a tree of the values that are needed, then rows are read from it.
#include <fmt/core.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>

#include "sonic/rows.h"

namespace lab {
namespace {

constexpr char a_dump[] = "a dump of a configuration database, a JSON object of tables";
constexpr std::string_view a_string = "a string";
constexpr std::string_view a_list = "a list";
constexpr std::string_view an_object = "an object";

// Detects empty input, gzip, UTF-16, and text before the JSON. Returns nullopt for possible JSON.
std::optional<InputError> find_other_text(std::string_view text) {
  const auto error = [](const std::string &found, const std::string &where = "") {
    return InputError{0, 0, where, found, a_dump};
  };
  if (text.starts_with("\x1F\x8B")) return error("found gzip-compressed data");
  if (text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF") ||
      (text.size() >= 2 && (text[0] == '\0') != (text[1] == '\0'))) {
    return error("found UTF-16, not UTF-8");
  }
  text = without_byte_order_mark(text);
  const std::size_t first = text.find_first_not_of(" \t\r\n");
  if (first == text.npos) {
    return error(text.empty() ? "found empty input" : "found only white space");
  }
  if (text[first] == '{' || text[first] == '[') return std::nullopt;
  for (std::size_t at = text.find('{'); at != text.npos; at = text.find('{', at + 1)) {
    if (text[text.find_last_not_of(" \t\r", at - 1)] != '\n') continue;
    return error("found text before the JSON, which begins at " + place_in_text(text, at),
                 place_in_text(text, first));
  }
  return std::nullopt;
}

struct Node {
  std::string name;       // in the enclosing object
  std::string_view kind;  // "a string", "null"
  std::string text;
  std::vector<Node> members;  // of an object or a list
};

// Returns true if the part of a name before '|' is a table that is read.
bool has_table_name(const std::string &name) {
  return tables_read().contains(name.substr(0, name.find('|')));
}

bool has_table_prefix(const std::string &key) {
  return key.find('|') != key.npos && has_table_name(key);
}

// A SAX handler; a member function that returns false stops the parser. Values that are not needed
// are skipped: neither their depth nor their size costs memory.
struct TreeParser {
  // The dump, a namespace, a table, a row, and the list of a field.
  static constexpr std::size_t max_open = 5;

  std::string_view json;
  std::string name_space;
  Node root = {};
  InputErrors errors = {};
  std::vector<Node *> open = {};  // objects and lists
  std::size_t skipped_depth = 0;  // depth inside a skipped value
  std::string name = {};

  void set_error(std::size_t at, const std::string &problem) {
    errors = {{0, 0, place_in_text(json, at), problem, a_dump}};
  }

  // Skips other namespaces, other tables except for misplaced rows, and the members of a list after
  // the first that is not a string.
  bool is_needed() const {
    const Node &around = *open.back();
    const std::size_t tables = name_space.empty() ? 1 : 2;
    if (open.size() == tables && around.name != name_space) return false;
    if (open.size() == tables + 1 && !has_table_name(around.name)) return has_table_prefix(name);
    return around.kind != a_list || around.members.empty() ||
           around.members.back().kind == a_string;
  }

  Node *add(std::string_view kind, std::string text = "") {
    if (skipped_depth > 0 || (!open.empty() && !is_needed())) return nullptr;
    Node node = {std::move(name), kind, std::move(text), {}};
    if (open.empty()) return &(root = std::move(node));
    return &open.back()->members.emplace_back(std::move(node));
  }

  bool scalar(std::string_view kind, std::string text = "") {
    add(kind, std::move(text));
    return root.kind == an_object;
  }

  bool begin(std::string_view kind) {
    Node *node = add(kind);
    if (node == nullptr || open.size() == max_open) {
      ++skipped_depth;
    } else {
      open.push_back(node);
    }
    return root.kind == an_object;
  }

  bool end_object() {
    if (skipped_depth > 0) {
      --skipped_depth;
    } else {
      open.pop_back();
    }
    return true;
  }

  bool null() { return scalar("null"); }
  bool boolean(bool value) { return scalar(value ? "true" : "false"); }
  bool number_integer(int64_t) { return scalar("a number"); }
  bool number_unsigned(uint64_t) { return scalar("a number"); }
  bool number_float(double, const std::string &) { return scalar("a number"); }
  bool binary(nlohmann::json::binary_t &) { return scalar("bytes"); }
  bool string(std::string &text) { return scalar(a_string, std::move(text)); }
  bool start_object(std::size_t) { return begin(an_object); }
  bool start_array(std::size_t) { return begin(a_list); }
  bool end_array() { return end_object(); }

  bool key(std::string &key) {
    name = std::move(key);
    return true;
  }

  bool parse_error(std::size_t position, const std::string &,
                   const nlohmann::detail::exception &problem) {
    // The parser counts the end of the text as one character.
    if (position > json.size()) {
      set_error(json.size(), "found the end of the text inside the JSON: the dump is cut off");
      return false;
    }
    // "[...] parse error at line 1, column 6: syntax error ... - invalid literal; last read: ..."
    const std::string_view whole = problem.what();
    const std::size_t dash = whole.find(" - ");
    const std::string_view text =
        dash == whole.npos ? "number out of range" : whole.substr(dash + 3);
    set_error(position - std::min<std::size_t>(position, 1),
              "invalid JSON: " + printable(text.substr(0, text.find(';'))));
    return false;
  }
};

// "localhost" or "asic0", a part of a multi-ASIC switch.
bool is_namespace(std::string_view name) {
  return name == "localhost" || (name.starts_with("asic") && decimal(name.substr(4)));
}

// Returns the name of a field without the '@' suffix of lists.
std::string name_of_field(const Node &value) {
  return value.name.substr(0, value.name.size() - value.name.ends_with('@'));
}

// The object that encloses the fields of a row in the output of sonic-db-dump.
struct Envelope {
  std::string type;
  const Node *hash = nullptr;
};

std::optional<Envelope> find_envelope(const Node &row) {
  static const std::set<std::string> envelope_names = {"expireat", "ttl", "type", "value"};
  Envelope envelope;
  std::set<std::string> names;
  for (const Node &value : row.members) {
    const std::string &name = *names.insert(name_of_field(value)).first;
    if (name == "type" && value.kind == a_string) envelope.type = value.text;
    if (name == "value" && value.kind == an_object && !envelope.hash) envelope.hash = &value;
  }
  const bool is_envelope =
      names.contains("type") && (names.contains("value") || envelope.type == "hash") &&
      std::includes(envelope_names.begin(), envelope_names.end(), names.begin(), names.end());
  return is_envelope || envelope.hash ? std::optional(envelope) : std::nullopt;
}

struct DumpReader {
  Rows rows = {};
  InputErrors errors = {};

  // The first of each, to detect the form of the dump.
  std::string first_table = {}, first_row = {}, misplaced = {};
  std::set<std::string> namespaces = {};

  void add_error(const std::string &where, std::string_view found, const std::string &expected) {
    errors.push_back({0, 0, where, "found " + std::string(found), expected});
  }

  void add_repeated(const std::string &where) {
    errors.push_back({0, 0, where, "found this key twice", "each key once"});
  }

  void read_field(const std::string &where, const Field *field, const Node &value, Row &row) {
    const std::string name = name_of_field(value);
    const bool accepts_list = field == nullptr || field->accepts_list;
    const bool is_joined = value.kind == a_string && name != value.name;
    const bool has_non_string = !value.members.empty() && value.members.back().kind != a_string;
    if (value.kind == a_string && !is_joined) {
      row.emplace(name, value.text);
    } else if (is_joined && accepts_list) {
      row.emplace(name, members_of(value.text));
    } else if (value.kind == a_list && accepts_list && !has_non_string) {
      std::vector<std::string> list;
      for (const Node &member : value.members) list.push_back(member.text);
      row.emplace(name, std::move(list));
    } else if (field != nullptr && field->use == FieldUse::read) {
      const bool is_list = value.kind == a_list && accepts_list;
      add_error(where,
                is_joined ? a_list
                : is_list ? value.members.back().kind
                          : value.kind,
                accepts_list ? "a string, or a list of strings" : "a string");
    }
  }

  void read_fields(const std::string &table, const std::string &key, const Node &object, Row &row,
                   bool has_value = true) {
    std::set<std::string> names;
    for (const Node &value : object.members) {
      const std::string name = name_of_field(value);
      if (!is_read(table, name) || name == "NULL" || (name == "value" && !has_value)) continue;
      const std::string where = row_place(table, key, name);
      if (names.insert(name).second) {
        read_field(where, find_field(table, name), value, row);
      } else {
        add_repeated(where);
      }
    }
  }

  void read_row(const std::string &table, const std::string &key, const Node &value, bool is_flat) {
    const std::string where = row_place(table, key);
    const auto [place, is_new] = rows[table].try_emplace(key);
    Row &row = place->second;
    if (!is_new) return add_repeated(where);
    if (value.kind != an_object) return add_error(where, value.kind, "a row, an object of fields");
    if (!is_flat) return read_fields(table, key, value, row);
    const auto envelope = find_envelope(value);
    if (!envelope) return read_fields(table, key, value, row, false);
    const bool is_hash = envelope->type == "hash";
    if (is_hash && envelope->hash) return read_fields(table, key, *envelope->hash, row);
    rows[table].erase(place);
    if (rows[table].empty()) rows.erase(table);
    if (is_hash) add_error(where, "a hash without fields", "fields under 'value'");
  }

  void read_table(const std::string &table, const Node &value) {
    if (first_table.empty()) first_table = table;
    if (!rows.try_emplace(table).second) return add_repeated(table);
    if (value.kind != an_object) return add_error(table, value.kind, "a table, an object of rows");
    for (const Node &row : value.members) {
      if (has_table_prefix(row.name)) {
        add_error(row_place(table, row.name), "a key that begins with the name of a table",
                  quote(row.name.substr(row.name.find('|') + 1)));
      } else {
        read_row(table, row.name, row, false);
      }
    }
  }

  void read_tables(const Node &dump) {
    for (const Node &value : dump.members) {
      const std::size_t bar = value.name.find('|');
      const std::string table = value.name.substr(0, bar);
      const bool is_known = has_table_name(table);
      const bool is_object = value.kind == an_object;
      if (bar != value.name.npos) {
        if (first_row.empty() && (is_known || is_object)) first_row = value.name;
        if (is_known) read_row(table, value.name.substr(bar + 1), value, true);
      } else if (is_known) {
        read_table(table, value);
      } else {
        if (is_namespace(table)) namespaces.insert(table);
        // The tree keeps only misplaced rows of other tables.
        if (misplaced.empty() && is_object && !value.members.empty()) misplaced = table;
      }
    }
  }

  // Inserts errors of the whole dump before all others.
  void check_form(const Node &root, const std::string &name_space, bool is_selected) {
    const auto add_first = [this](const std::string &found, const std::string &expected) {
      errors.insert(errors.begin(), InputError{0, 0, "", "found " + found, expected});
    };
    const bool is_blank = rows.empty() && errors.empty();
    const std::vector<std::string> known(namespaces.begin(), namespaces.end());
    if (root.members.empty()) {
      add_first("an empty object", a_dump);
    } else if (!name_space.empty() && !is_selected) {
      add_first("no namespace " + quote(name_space),
                known.empty() ? "a dump of several ASICs" : one_of(known));
    } else if (!first_table.empty() && !first_row.empty()) {
      add_first("the table " + quote(first_table) + " and the row " + quote(first_row),
                "tables of rows, or rows with the names of their tables");
    } else if (is_blank && name_space.empty() && !known.empty()) {
      add_first("a dump of several ASICs: " + listed(known), "the namespace of one of them");
    } else if (is_blank && !misplaced.empty()) {
      add_first("rows with the names of their tables in " + quote(misplaced), "them at the top");
    }
  }

  void read(const Node &root, const std::string &name_space) {
    bool is_selected = false;
    if (name_space.empty()) read_tables(root);
    for (const Node &value : root.members) {
      if (!name_space.empty() && is_namespace(value.name)) namespaces.insert(value.name);
      if (name_space.empty() || value.name != name_space) continue;
      if (std::exchange(is_selected, true)) add_repeated(shorten(name_space));
      if (value.kind == an_object) {
        read_tables(value);
      } else {
        add_error(shorten(name_space), value.kind, "a dump, an object of tables");
      }
    }
    check_form(root, name_space, is_selected);
  }
};

}  // namespace

ReadRows read_dump(std::string_view json, std::string_view name_space) {
  if (auto problem = find_other_text(json)) return {{}, {std::move(*problem)}};
  TreeParser parser{without_byte_order_mark(json), std::string(name_space)};
  const std::string_view text = parser.json;
  if (nlohmann::json::sax_parse(text.begin(), text.end(), &parser)) {
    // The parser stops at a NUL without an error.
    if (const std::size_t nul = text.find('\0'); nul != text.npos) {
      parser.set_error(nul, "invalid JSON: NUL byte");
    }
  }
  if (!parser.errors.empty()) return {{}, std::move(parser.errors)};
  DumpReader reader;
  if (parser.root.kind == an_object) {
    reader.read(parser.root, parser.name_space);
  } else {
    reader.add_error("", parser.root.kind, a_dump);
  }
  return {std::move(reader.rows), std::move(reader.errors)};
}

}  // namespace lab
