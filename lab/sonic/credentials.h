// Users and passwords of databases, in a file of their own: lines of a source, a user (which may be
// empty) and a password, separated by tabs.
//
// redis://host:port and unix:///path stand for all databases of a server, redis://host:port/4 and
// unix:///path?db=4 for one of them.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>

#include "sonic/source.h"
#include "text/error.h"

namespace lab {

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
