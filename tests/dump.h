// Dumps with their rows, settings and errors.
#pragma once

#include <string>

#include "files.h"
#include "sonic/rows.h"

namespace lab {

struct Dump {
  std::string json;
  Rows rows;
  Settings settings;
  std::string errors;  // a line each
};

inline Dump dump_of(const std::string &json, const std::string &name_space = "") {
  ReadRows rows = read_dump(json, name_space);
  ReadSettings read = interpret_rows(rows.rows, rows.errors);
  Dump dump{json, std::move(rows.rows), std::move(read.settings), ""};
  for (const InputError &error : read.errors) {
    dump.errors += place_of(error) + ": " + error_text(error) + "\n";
  }
  return dump;
}

inline std::string capture(const std::string &name) {
  return test::read_file(CAPTURES "/" + name + ".json");
}

}  // namespace lab
