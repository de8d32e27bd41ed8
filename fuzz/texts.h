// Properties of the errors, settings and sources that the lab's readers return.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

#include "fuzz.h"
#include "output/json.h"
#include "sonic/rows.h"
#include "sonic/source.h"
#include "switch/state_file.h"
#include "text/text.h"

// Reads an input and checks the result. Defined by each target.
void check_text(std::string_view text);

int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
  check_text({reinterpret_cast<const char *>(data), size});
  return 0;
}

// Each error has a place and a finding, and is printable as text and as JSON.
inline void check_errors(const lab::InputErrors &errors, std::string_view text) {
  const auto lines =
      2 + std::count(text.begin(), text.end(), '\n') + std::count(text.begin(), text.end(), '\r');
  for (const lab::InputError &error : errors) {
    must(!error.found.empty(), "an error has a finding");
    must(error.line >= 0 && error.line <= lines && (error.line > 0) == (error.column > 0),
         "an error is inside of the text");
    for (const std::string &field : {error.where, error.found, error.expected}) {
      must(lab::printable(field) == field, ("an error is printable: " + field).c_str());
    }
  }
  lab::format_errors({{"source", errors}}, lab::JsonForm::line);
}

inline void check_errors_with_lines(const lab::InputErrors &errors, std::string_view text) {
  check_errors(errors, text);
  for (const lab::InputError &error : errors) must(error.line > 0, "an error has a line");
}

// Writes settings to a state file and reads them back.
inline void write_and_read(const lab::Settings &settings) {
  const lab::ReadSettings again = lab::read_state(lab::write_state(settings));
  must(again.errors.empty() && again.settings == settings,
       "a state file contains the settings that were written");
}

inline void check_source(const lab::ParsedSource &parsed) {
  const lab::Source &source = parsed.source;
  check_errors(parsed.errors, "");
  must(lab::printable(source.label) == source.label, "a label is printable");
  const std::size_t login = std::min(source.label.find("://"), source.label.size());
  const std::string host =
      source.label.substr(login, source.label.find_first_of("/?", login + 3) - login);
  must(source.password.empty() || host.find(':' + source.password + '@') == std::string::npos,
       "a label contains no password");
  must(!parsed.errors.empty() || !source.place.empty(), "a source has a place");
}
