// Something in a file, a dump or a database that is not as it must be.
#pragma once

#include <string>
#include <vector>

namespace lab {

struct InputError {
  // Of a text file, from 1; 0: it has no lines, `where` says it.
  int line = 0;
  int column = 0;
  // Of a row: "STP_PORT|PortChannel10 root_guard", as far as it is known; empty: the whole source.
  std::string where;
  std::string found;
  std::string expected;  // empty: `found` says it all

  bool operator==(const InputError &) const = default;
};

using InputErrors = std::vector<InputError>;

// "found 'pvst'; expected mst".
inline std::string text_of(const InputError &error) {
  return error.expected.empty() ? error.found : error.found + "; expected " + error.expected;
}

// "4:11" or "STP_PORT|PortChannel10 root_guard".
inline std::string place_of(const InputError &error) {
  return error.line > 0 ? std::to_string(error.line) + ":" + std::to_string(error.column)
                        : error.where;
}

}  // namespace lab
