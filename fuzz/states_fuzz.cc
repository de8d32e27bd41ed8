// State files.

#include "tasks/side.h"
#include "texts.h"

void check_text(std::string_view text) {
  const lab::Side read = lab::parse_side({}, std::string(text), lab::Format::state);
  check_errors_with_lines(read.errors, text);
  if (read.errors.empty()) write_and_read(read.settings);
}
