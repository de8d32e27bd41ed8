#include <algorithm>
#include <ctime>

#include "report/acceptance.h"
#include "switch/state_file.h"
#include "text/yaml.h"

namespace lab {
namespace {

constexpr const char *incomplete_keys[] = {"no-channels", "no-twin-vlans"};

// A date that exists.
bool is_date(const std::string &text) {
  std::tm parts{};
  const char *end = strptime(text.c_str(), "%Y-%m-%d", &parts);
  if (end == nullptr || *end != '\0' || text.size() != 10) return false;
  std::tm normal = parts;
  normal.tm_hour = 12;
  normal.tm_isdst = -1;
  return std::mktime(&normal) != -1 && normal.tm_mday == parts.tm_mday;
}

void read_scope(Reader &reader, const YAML::Node &node, AcceptEntry &entry) {
  entry.scope = reader.name(node, "a scope: switch, a channel or a pattern");
  if (entry.scope.empty()) reader.expected(node, "a scope: switch, a channel or a pattern");
}

void read_pair_pattern(Reader &reader, const YAML::Node &node, AcceptEntry &entry) {
  entry.pair = reader.name(node, "the name of a pair, or a pattern");
}

void read_reason(Reader &reader, const YAML::Node &node, AcceptEntry &entry) {
  entry.acceptance.reason = reader.text(node, "a reason");
  if (node.IsNull() || entry.acceptance.reason.empty()) reader.expected(node, "a reason");
}

void read_until(Reader &reader, const YAML::Node &node, AcceptEntry &entry) {
  entry.acceptance.until = node.IsScalar() ? node.Scalar() : "";
  if (!is_date(entry.acceptance.until)) reader.expected(node, "a date like 2026-12-31");
}

void read_accepted_parameter(Reader &reader, const YAML::Node &node, AcceptEntry &entry) {
  const Parameter *parameter = read_parameter_name(reader, node);
  if (parameter != nullptr) entry.type = parameter->type;
}

void read_value_text(Reader &reader, const YAML::Node &node, AcceptEntry &entry, std::size_t side) {
  if (node.IsNull()) {
    entry.values[side] = ValueText();
  } else {
    entry.values[side] = reader.text(node, "a value, or null: not sent");
  }
}

void read_left(Reader &reader, const YAML::Node &node, AcceptEntry &entry) {
  read_value_text(reader, node, entry, 0);
}

void read_right(Reader &reader, const YAML::Node &node, AcceptEntry &entry) {
  read_value_text(reader, node, entry, 1);
}

void read_missing_channel(Reader &reader, const YAML::Node &node, AcceptEntry &entry) {
  entry.kind = AcceptEntry::Kind::missing_channel;
  if (scalar_text(node) != "missing") reader.expected(node, "missing");
}

void read_note_kind(Reader &reader, const YAML::Node &node, AcceptEntry &entry) {
  entry.kind = AcceptEntry::Kind::note;
  std::vector<std::string> keys;
  for (const NoteRule &rule : note_rules()) keys.emplace_back(rule.key);
  const NoteRule *rule = find_note_rule(scalar_text(node));
  if (rule == nullptr) {
    reader.expected(node, "a kind of note: " + one_of(keys, scalar_text(node)));
  } else {
    entry.note = rule->kind;
  }
}

void read_incomplete(Reader &reader, const YAML::Node &node, AcceptEntry &entry) {
  entry.kind = AcceptEntry::Kind::incomplete;
  const auto *key =
      std::find(std::begin(incomplete_keys), std::end(incomplete_keys), scalar_text(node));
  if (key == std::end(incomplete_keys)) {
    reader.expected(node, one_of({std::begin(incomplete_keys), std::end(incomplete_keys)}));
  } else {
    entry.incomplete = Incomplete(key - incomplete_keys);
  }
}

struct AcceptKey {
  const char *key;
  void (*read)(Reader &reader, const YAML::Node &node, AcceptEntry &entry);
  bool is_subject = false;  // an entry has exactly one of these
};

constexpr AcceptKey accept_keys[] = {
    {"scope", read_scope},
    {"pair", read_pair_pattern},
    {"reason", read_reason},
    {"until", read_until},
    {"parameter", read_accepted_parameter, true},
    {"left", read_left},
    {"right", read_right},
    {"channel", read_missing_channel, true},
    {"note", read_note_kind, true},
    {"incomplete", read_incomplete, true},
};

AcceptEntry read_entry(Reader &reader, const YAML::Node &node) {
  AcceptEntry entry;
  entry.line = node.Mark().line + 1;
  std::vector<std::string> keys;
  std::vector<std::string> subjects;
  for (const AcceptKey &key : accept_keys) {
    keys.emplace_back(key.key);
    if (key.is_subject) subjects.emplace_back(key.key);
  }
  if (!reader.mapping(node, "an accepted difference", keys)) return entry;
  std::size_t subjects_found = 0;
  for (const AcceptKey &key : accept_keys) {
    if (!node[key.key].IsDefined()) continue;
    key.read(reader, node[key.key], entry);
    if (key.is_subject) ++subjects_found;
  }
  reader.required(node, "reason", "an accepted difference");
  if (subjects_found != 1) {
    reader.add_error(
        node, "an accepted difference with " + std::to_string(subjects_found) + " of its subjects",
        "one of " + one_of(subjects));
  } else if (entry.kind != AcceptEntry::Kind::incomplete) {
    reader.required(node, "scope", "an accepted difference");
  }
  for (const char *side : {"left", "right"}) {
    if (node[side].IsDefined() && !node["parameter"].IsDefined()) {
      reader.add_error(node[side], std::string("found '") + side + "' without 'parameter'",
                       "values of a parameter");
    }
  }
  return entry;
}

}  // namespace

ReadAcceptList read_accept_list(const std::string &text) {
  ReadAcceptList read;
  Reader reader;
  read_yaml(
      text, "a file of accepted differences", reader,
      [&](const YAML::Node &root) {
        for (const auto &node : root) read.entries.push_back(read_entry(reader, node));
      },
      YamlRoot::list);
  read.errors = std::move(reader.errors);
  sort_errors(read.errors);
  return read;
}

}  // namespace lab
