// State files: the settings in them, or what is wrong with them.

#include "tasks/side.h"
#include "texts.h"

int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
  const std::string text(text_of(data, size));
  const lab::ReadText read = lab::read_text(text, lab::Format::state);
  check_errors(read.errors, text);
  for (const lab::InputError &error : read.errors) must(error.line > 0, "an error has a line");
  if (read.errors.empty()) write_and_read(read.settings);
  return 0;
}
