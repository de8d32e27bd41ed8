// State files: what they say, or what is wrong with them.

#include "read/side.h"
#include "texts.h"

int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
  const std::string text(text_of(data, size));
  const lab::ReadText read = lab::read_text(text, lab::Format::state);
  look_at(read.mistakes, text);
  for (const lab::Mistake &mistake : read.mistakes) must(mistake.line > 0, "a mistake has a line");
  if (read.mistakes.empty()) write_and_read(read.settings);
  return 0;
}
