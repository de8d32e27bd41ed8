// Reading YAML for people: whatever is not as it must be becomes an error with its place, and
// reading goes on, so that all errors of a file are reported at once.
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

// Words and the numbers that they stand for.
using Words = std::map<std::string, uint32_t>;

// What a reading function is given as `what` names the thing in an error; what it returns after a
// error is of no use but harmless.
struct Reader {
  InputErrors errors;

  // --- errors ---

  void add_error(const YAML::Node &node, const std::string &found,
                 const std::string &expected = "");

  // The node itself is what was found.
  void expected(const YAML::Node &node, const std::string &what);

  // --- mappings ---

  // A mapping with these keys only, each once. Returns false when it is no mapping.
  bool mapping(const YAML::Node &node, const std::string &what,
               const std::vector<std::string> &allowed);

  // A mapping with keys of another kind, each once, by its text; each(key, value).
  bool entries(const YAML::Node &node, const std::string &what,
               const std::function<void(const YAML::Node &, const YAML::Node &)> &each);

  // A key that must be there.
  bool required(const YAML::Node &node, const char *key, const std::string &what);

  // A list; false when it is none.
  bool sequence(const YAML::Node &node, const std::string &what);

  // --- scalars ---

  // For people: what no terminal should see is escaped.
  std::string text(const YAML::Node &node, const std::string &what);

  // A text as it is, in UTF-8.
  std::string verbatim(const YAML::Node &node, const std::string &what);

  // The same without control characters.
  std::string name(const YAML::Node &node, const std::string &what);

  bool boolean(const YAML::Node &node, const std::string &what);

  uint32_t number(const YAML::Node &node, const std::string &what, uint32_t least = 0,
                  uint32_t most = UINT32_MAX);

  // One of some words, or, where numbers are allowed too, any number.
  uint32_t word(const YAML::Node &node, const std::string &what, const Words &words,
                bool numbers = true);

  // Numbers in ranges, "1-10,20", each range the right way round and up to `most`.
  Ranges ranges(const YAML::Node &node, const std::string &what, uint32_t most,
                const std::string &example);

  Bytes bytes(const YAML::Node &node, const std::string &what);
};

// A scalar as text that can be shown; "" of anything else.
std::string scalar_text(const YAML::Node &node);

// --- mappings that are read by a table ---

// Each entry of a list, if there is one.
template <class Read>
void read_list(Reader &reader, const YAML::Node &node, const std::string &what, Read read) {
  if (!node || !reader.sequence(node, what)) return;
  for (const auto &entry : node) read(entry);
}

// --- writing ---

// A text as YAML takes it for a text, in quotation marks.
std::string yaml_text(std::string_view text);

// --- files ---

enum class YamlRoot { mapping, list };

// The one document of a YAML text, a mapping, read with `read`; whatever keeps it from being read
// becomes an error. `what` names what should be there: "a scenario".
void read_yaml(const std::string &text, const std::string &what, Reader &reader,
               const std::function<void(const YAML::Node &)> &read,
               YamlRoot expected = YamlRoot::mapping);

// In the order of their places, each once.
void sort_errors(InputErrors &errors);

}  // namespace lab
