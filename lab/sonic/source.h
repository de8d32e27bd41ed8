// Sources of settings: files, and the configuration databases of switches.
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
  std::string label;  // for output: the argument without its password
  std::string place;  // a path ("-": standard input), or a host name or address
  uint16_t port = 6379;
  uint32_t database = 4;
  bool has_database = false;  // the URL names the database
  std::string user;           // empty: the server's default user
  std::string password;
  std::string name_space = {};  // selects a part of a multi-ASIC dump

  bool operator==(const Source &) const = default;
};

struct ParsedSource {
  Source source;
  InputErrors errors;  // if not empty, only `label` is valid

  bool operator==(const ParsedSource &) const = default;
};

// Parses redis://[user:password@]host[:port][/db], unix://[user:password@]/path[?db=4], or a path.
// Special characters in URLs can be escaped (%40); an IPv6 address needs brackets. A missing
// password is read from MCEC_LEFT_PASSWORD (side 0) or MCEC_RIGHT_PASSWORD (side 1), if a side is
// passed.
ParsedSource parse_source(std::string_view text, std::optional<std::size_t> side);

// Removes the logins from a message that may contain the URL of a database, even an invalid one.
std::string without_passwords(std::string_view text);

// Removes the login from a single argument that may be a source, even one without a scheme.
std::string hide_login(std::string_view word);

// --- credentials ---

// A file with users and passwords of databases: each line has a source, a user (may be empty) and a
// password, separated by tabs.
//
// redis://host:port and unix:///path match all databases of a server, redis://host:port/4 and
// unix:///path?db=4 match one.

struct Login {
  std::string user;
  std::string password;
};

// Kind, place and port of a server, and the number of a database; nullopt: all its databases.
using DatabaseKey = std::tuple<Source::Kind, std::string, uint16_t, std::optional<uint32_t>>;

using Credentials = std::map<DatabaseKey, Login>;

// Parses credentials. Errors contain no text of the lines.
Credentials read_credentials(std::string_view text, InputErrors &errors);

// Reads a file of credentials. Refuses a file that is accessible to users other than its owner;
// a group may read a file that systemd passes in $CREDENTIALS_DIRECTORY.
Credentials load_credentials(const std::string &path, InputErrors &errors);

// Sets user and password of a source without a password, from the line of its database, else from
// that of its server. If the source names a user, a line for another user does not apply.
void apply_credentials(const Credentials &credentials, Source &source);

}  // namespace lab
