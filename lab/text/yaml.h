// Reads YAML. Each error has its place, and reading continues after it, so that all errors of a
// file are reported at once.
#pragma once

#include <yaml-cpp/yaml.h>

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "text/error.h"
#include "text/text.h"

namespace lab {

// Words and the numbers that they represent.
using Words = std::map<std::string, uint32_t>;

// `what` names the expected value in error messages. After an error, a function returns a harmless
// value, such as an empty text.
struct Reader {
  InputErrors errors;

  // --- errors ---

  void add_error(const YAML::Node &node, const std::string &found,
                 const std::string &expected = "");

  // The same, with a description of the node as what was found.
  void expected(const YAML::Node &node, const std::string &what);

  // --- mappings ---

  // Checks for a mapping with these keys only, each once. Returns false if it is not a mapping.
  bool mapping(const YAML::Node &node, const std::string &what,
               const std::vector<std::string> &allowed);

  // Calls each(key, value) for the entries of a mapping with unique keys. Returns false if it is
  // not a mapping.
  bool entries(const YAML::Node &node, const std::string &what,
               const std::function<void(const YAML::Node &, const YAML::Node &)> &each);

  // Checks that a mapping has a key.
  bool required(const YAML::Node &node, const char *key, const std::string &what);

  // Returns false if the node is not a list.
  bool sequence(const YAML::Node &node, const std::string &what);

  // --- scalars ---

  // Returns a text for output, with unprintable characters except line feeds escaped.
  std::string text(const YAML::Node &node, const std::string &what);

  // Returns an unchanged text in UTF-8.
  std::string verbatim(const YAML::Node &node, const std::string &what);

  // The same, but refuses control characters.
  std::string name(const YAML::Node &node, const std::string &what);

  bool boolean(const YAML::Node &node, const std::string &what);

  uint32_t number(const YAML::Node &node, const std::string &what, uint32_t min = 0,
                  uint32_t max = UINT32_MAX);

  // Reads one of the words, or any number if `numbers` is set.
  uint32_t word(const YAML::Node &node, const std::string &what, const Words &words,
                bool numbers = true);

  // Reads ranges of numbers up to `max`: "1-10,20".
  Ranges ranges(const YAML::Node &node, const std::string &what, uint32_t max,
                const std::string &example);

  Bytes bytes(const YAML::Node &node, const std::string &what);
};

// Returns a scalar as printable text, "" for any other node.
std::string scalar_text(const YAML::Node &node);

// Reads each entry of an optional list.
template <class Read>
void read_list(Reader &reader, const YAML::Node &node, const std::string &what, Read read) {
  if (!node || !reader.sequence(node, what)) return;
  for (const auto &entry : node) read(entry);
}

// --- writing ---

// Returns a text as a YAML string in quotation marks.
std::string yaml_text(std::string_view text);

// --- files ---

enum class YamlRoot { mapping, list };

// Parses a YAML text with one document, and calls `read` with its root. `what` names the expected
// document in errors: "a scenario".
void read_yaml(const std::string &text, const std::string &what, Reader &reader,
               const std::function<void(const YAML::Node &)> &read,
               YamlRoot expected = YamlRoot::mapping);

// Sorts the errors by line and removes duplicates.
void sort_errors(InputErrors &errors);

}  // namespace lab
