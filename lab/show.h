// A run for a person: steps, answers, and tables that fit the terminal.
#pragma once

#include "vocabulary.h"

namespace lab {

struct ShowOptions {
  bool colour = false;
  bool quiet = false;      // verdicts and broken expectations only
  std::size_t width = 80;  // columns
};

void show_title(const Json &scenario, const ShowOptions &options);
void show_step(const Json &step, const ShowOptions &options);
void show_end(const Json &outcome, const ShowOptions &options);
void show_what_if(const Json &outcome, const ShowOptions &options);

// Rows under a heading; a text that is wider than its share of the terminal goes on in the next
// line. A cell may name a colour: "red", "green", "yellow", "cyan".
struct Cell {
  std::string text;
  const char *colour = nullptr;
};
void show_table(const std::vector<std::string> &heading, const std::vector<std::vector<Cell>> &rows,
                const ShowOptions &options);

// Text wrapped at blanks and commas; a word wider than the width is cut where it must be, and goes
// on in the next line.
std::string wrapped(const std::string &text, std::size_t width);

}  // namespace lab
