// Mappings in YAML that are read by a table: a key, and how its value is read.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "text/yaml.h"

namespace lab {

// A key of a mapping, and how its value is read.
template <class Record>
struct KeyRule {
  const char *key;
  void (*read)(Reader &reader, const YAML::Node &value, Record &record);
};

template <class Record>
using KeyRules = std::span<const KeyRule<Record>>;

template <class Record>
void add_keys(std::vector<std::string> &keys, KeyRules<Record> rules) {
  for (const auto &rule : rules) keys.emplace_back(rule.key);
}

// The values of the keys that a mapping has, in the order of the rules.
template <class Record>
void read_values(Reader &reader, const YAML::Node &node, KeyRules<Record> rules, Record &record) {
  for (const auto &rule : rules) {
    if (node[rule.key]) rule.read(reader, node[rule.key], record);
  }
}

// A mapping with the keys of the rules only; false: it is none.
template <class Record>
bool read_mapping(Reader &reader, const YAML::Node &node, const std::string &what,
                  KeyRules<Record> rules, Record &record) {
  std::vector<std::string> keys;
  add_keys(keys, rules);
  if (!reader.mapping(node, what, keys)) return false;
  read_values(reader, node, rules, record);
  return true;
}

// Each entry of a list.
template <class Read>
void read_list(Reader &reader, const YAML::Node &node, const std::string &what, Read read) {
  if (!reader.sequence(node, what)) return;
  for (const auto &entry : node) read(entry);
}

}  // namespace lab
