// Errors in files, dumps and databases.
#pragma once

#include <string>
#include <vector>

namespace lab {

struct InputError {
  // In a text file, from 1; 0: `where` is the place.
  int line = 0;
  int column = 0;
  // In rows: "STP_PORT|PortChannel10 root_guard"; empty: the whole source.
  std::string where;
  std::string found;
  std::string expected;  // may be empty

  bool operator==(const InputError &) const = default;
};

using InputErrors = std::vector<InputError>;

// "found 'pvst'; expected mst".
inline std::string error_text(const InputError &error) {
  return error.expected.empty() ? error.found : error.found + "; expected " + error.expected;
}

// "4:11" or "STP_PORT|PortChannel10 root_guard".
inline std::string place_of(const InputError &error) {
  return error.line > 0 ? std::to_string(error.line) + ":" + std::to_string(error.column)
                        : error.where;
}

}  // namespace lab
