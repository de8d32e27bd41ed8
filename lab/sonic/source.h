// Where the settings of a switch come from: a file, or the switch's configuration database.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>

#include "text/error.h"

namespace lab {

struct Source {
  enum class Kind { file, tcp, unix_socket };
  Kind kind = Kind::file;
  std::string label;  // for people and programs: as it was given, without the password
  std::string place;  // a path ("-": the standard input), or a host's name or address
  uint16_t port = 6379;
  uint32_t database = 4;
  bool has_database = false;  // it was given
  std::string user;           // empty: the server's default one
  std::string password;
  std::string name_space = {};  // of a dump of several ASICs; empty: the only one

  bool operator==(const Source &) const = default;
};

struct ParsedSource {
  Source source;
  InputErrors errors;  // with some, only `label` is set

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

// --- credentials ---

// Users and passwords of databases, in a file of their own: lines of a source, a user (which may be
// empty) and a password, separated by tabs.
//
// redis://host:port and unix:///path stand for all databases of a server, redis://host:port/4 and
// unix:///path?db=4 for one of them.

struct Login {
  std::string user;
  std::string password;
};

// Of a server's databases: their kind, place and port, and the number of one of them.
using Databases = std::tuple<Source::Kind, std::string, uint16_t, std::optional<uint32_t>>;

using Credentials = std::map<Databases, Login>;

// Errors show nothing of a line.
Credentials read_credentials(std::string_view text, InputErrors &errors);

// The same of a file, which is refused when others than its owner can read it. Of those that
// systemd passes in $CREDENTIALS_DIRECTORY a group can read some.
Credentials load_credentials(const std::string &path, InputErrors &errors);

// Give a database that has no password one of its own, else that of its server. A user that the
// source names gets none that is another one's.
void apply_credentials(const Credentials &credentials, Source &source);

}  // namespace lab
