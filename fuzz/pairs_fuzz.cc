// Lists of pairs and of credentials.

#include "cli/commands.h"
#include "sonic/source.h"
#include "texts.h"

namespace {

void check_list_errors(const lab::InputErrors &errors, std::string_view text) {
  check_errors_with_lines(errors, text);
  for (const lab::InputError &error : errors) {
    must(error.found.size() < 100, "an error does not quote a line");
  }
}

}  // namespace

void check_text(std::string_view text) {
  lab::InputErrors errors;
  const auto pairs = lab::read_pair_list(text, "folder/", "asic0", errors);
  check_list_errors(errors, text);
  must(!pairs.empty() || !errors.empty(), "a list without errors has a pair");
  for (const lab::PairEntry &pair : pairs) {
    must(!pair.name.empty() && lab::printable(pair.name) == pair.name, "a name is printable");
    for (const lab::ParsedSource &source : pair.sources) check_source(source);
  }
  lab::InputErrors refused;
  const lab::Credentials credentials = lab::read_credentials(text, refused);
  check_list_errors(refused, text);
  for (const auto &[databases, login] : credentials) {
    must(!login.password.empty(), "a login has a password");
  }
}
