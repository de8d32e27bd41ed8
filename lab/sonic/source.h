// Where the settings of a switch come from: a file, or the switch's configuration database.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "text/error.h"

namespace lab {

struct Source {
  enum class Kind { file, tcp, unix_socket };
  Kind kind = Kind::file;
  std::string shown;  // for people and programs: as it was given, without the password
  std::string place;  // a path ("-": the standard input), or a host's name or address
  uint16_t port = 6379;
  uint32_t database = 4;
  std::string user;  // empty: the server's default one
  std::string password;
  std::string name_space = {};  // of a dump of several ASICs; empty: the only one

  bool operator==(const Source &) const = default;
};

struct ParsedSource {
  Source source;
  InputErrors errors;  // with some, only `shown` is set

  bool operator==(const ParsedSource &) const = default;
};

/*
 * redis://[user:password@]host[:port][/db], unix://[user:password@]/path[?db=4], or a file. What is
 * special in these can be written %40; an IPv6 address stands in brackets. A password that is not
 * there is taken from MCEC_LEFT_PASSWORD or MCEC_RIGHT_PASSWORD, by `side`, 0 or 1; without a side
 * from neither.
 */
ParsedSource parse_source(std::string_view text, std::optional<std::size_t> side);

// A message in which a database's URL may stand, as a person may see it: without passwords, however
// wrong the URL is.
std::string without_passwords(std::string_view text);

// The same of a word that may be meant as a source, which may lack its scheme.
std::string hide_login(std::string_view word);

}  // namespace lab
