// What must hold of mistakes, wherever they are told, and of settings, wherever they come from.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

#include "fuzz.h"
#include "language/text.h"
#include "language/told.h"
#include "read/rows.h"
#include "read/state_writer.h"
#include "read/switch.h"

inline std::string_view text_of(const uint8_t *data, std::size_t size) {
  return {reinterpret_cast<const char *>(data), size};
}

// Each says where it is and what was found, and can be shown to people and programs.
inline void look_at(const lab::Mistakes &mistakes, std::string_view text) {
  const auto lines =
      2 + std::count(text.begin(), text.end(), '\n') + std::count(text.begin(), text.end(), '\r');
  for (const lab::Mistake &mistake : mistakes) {
    must(!mistake.found.empty(), "a mistake says what was found");
    must(mistake.line >= 0 && mistake.line <= lines && (mistake.line > 0) == (mistake.column > 0),
         "a mistake lies in the text");
    for (const std::string &said : {mistake.where, mistake.found, mistake.expected}) {
      must(lab::printable(said) == said, ("a mistake can be shown: " + said).c_str());
    }
  }
  lab::told_mistakes("source", mistakes).dump();
}

// What is written can be read again, and says the same.
inline void write_and_read(const lab::Settings &settings) {
  const lab::ReadSettings again = lab::read_state(lab::state_file(settings));
  must(again.mistakes.empty() && again.settings == settings, "a state file says what was written");
}
