// Lists of pairs, and of credentials: their lines and sources, or what is wrong with them.

#include "cli/pair_list.h"
#include "sonic/credentials.h"
#include "sources.h"

int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
  const std::string_view text = text_of(data, size);
  lab::InputErrors errors;
  const auto pairs = lab::read_pair_list(text, "folder/", errors);
  check_errors(errors, text);
  must(!pairs.empty() || !errors.empty(), "a list has pairs, or an error");
  for (const lab::InputError &error : errors) {
    must(error.line > 0 && error.found.size() < 100, "an error shows nothing of a line");
  }
  for (const lab::PairEntry &pair : pairs) {
    must(!pair.name.empty() && lab::printable(pair.name) == pair.name, "a name can be shown");
    for (const std::string &source : pair.sources) look_at_source(source);
  }
  lab::InputErrors refused;
  const lab::Credentials credentials = lab::read_credentials(text, refused);
  check_errors(refused, text);
  for (const lab::InputError &error : refused) {
    must(error.line > 0 && error.found.size() < 100, "an error shows nothing of a line");
  }
  for (const auto &[databases, login] : credentials) {
    must(!login.password.empty(), "a login has a password");
  }
  return 0;
}
