// What must hold of errors and of settings, wherever they come from.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

#include "fuzz.h"
#include "output/json.h"
#include "sonic/rows.h"
#include "switch/state_file.h"
#include "text/text.h"

inline std::string_view text_of(const uint8_t *data, std::size_t size) {
  return {reinterpret_cast<const char *>(data), size};
}

// Each has a place and what was found, and can be printed as text and as JSON.
inline void check_errors(const lab::InputErrors &errors, std::string_view text) {
  const auto lines =
      2 + std::count(text.begin(), text.end(), '\n') + std::count(text.begin(), text.end(), '\r');
  for (const lab::InputError &error : errors) {
    must(!error.found.empty(), "an error has what was found");
    must(error.line >= 0 && error.line <= lines && (error.line > 0) == (error.column > 0),
         "an error lies in the text");
    for (const std::string &field : {error.where, error.found, error.expected}) {
      must(lab::printable(field) == field, ("an error can be shown: " + field).c_str());
    }
  }
  lab::format_errors({{"source", errors}}, lab::JsonForm::line);
}

// What is written can be read again, and is the same.
inline void write_and_read(const lab::Settings &settings) {
  const lab::ReadSettings again = lab::read_state(lab::write_state(settings));
  must(again.errors.empty() && again.settings == settings,
       "a state file is read as it was written");
}
