#include "sonic/source.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <utility>

#include "sonic/rows.h"
#include "text/file.h"
#include "text/text.h"

namespace lab {
namespace {

constexpr std::array<const char *, 2> password_variables = {"MCEC_LEFT_PASSWORD",
                                                            "MCEC_RIGHT_PASSWORD"};
constexpr std::string_view redis_scheme = "redis://";
constexpr std::string_view unix_scheme = "unix://";
constexpr std::string_view tls_scheme = "rediss://";
// Prefixes of URLs, also of those without the two slashes.
constexpr std::array<std::string_view, 3> url_prefixes = {"redis:", "rediss:", "unix:"};
constexpr const char *source_syntax = "redis://host, unix:///path, or a file";
constexpr uint32_t max_database = UINT16_MAX;

void add_source_error(std::string found, std::string expected, InputErrors &errors) {
  errors.push_back({0, 0, "", std::move(found), std::move(expected)});
}

std::string percent_decode(std::string_view text, ParsedSource &parsed) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      out += text[i];
      continue;
    }
    const std::string_view digits = text.substr(i + 1, 2);
    if (digits.size() < 2 || digits.find_first_not_of("0123456789abcdefABCDEF") != digits.npos ||
        digits == "00") {
      add_source_error("found an invalid '%' escape", "%25 for '%'", parsed.errors);
      return out;
    }
    out += static_cast<char>(unhex(digits)[0]);
    i += 2;
  }
  return out;
}

// Errors do not contain the text: it may be the end of a password.
uint32_t parse_url_number(std::string_view text, const std::string &what, uint32_t min,
                          uint32_t max, ParsedSource &parsed) {
  const auto value = decimal(text);
  if (value && *value >= min && *value <= max) return *value;
  add_source_error("found an invalid " + what,
                   "a number from " + std::to_string(min) + " to " + std::to_string(max),
                   parsed.errors);
  return min;
}

// "host", "host:port" or "[::1]:port", then "/4".
void parse_tcp(std::string_view authority, std::string_view path, ParsedSource &parsed) {
  Source &source = parsed.source;
  source.kind = Source::Kind::tcp;
  std::string_view host = authority.substr(0, authority.find(':'));
  std::string_view port = authority.substr(host.size());
  if (authority.starts_with('[')) {
    const std::size_t end = authority.find(']');
    host = end != authority.npos ? authority.substr(1, end - 1) : "";
    port = end != authority.npos ? authority.substr(end + 1) : "";
  }
  if (host.empty() || (!port.empty() && port.rfind(':') != 0)) {
    add_source_error("found no host, or more than one",
                     "redis://host:port/4, an IPv6 address in brackets", parsed.errors);
    return;
  }
  source.place = percent_decode(host, parsed);
  if (!port.empty()) {
    source.port =
        static_cast<uint16_t>(parse_url_number(port.substr(1), "port", 1, UINT16_MAX, parsed));
  }
  if (path.size() > 1 || path == "?") {
    source.database = parse_url_number(path.substr(1), "database", 0, max_database, parsed);
    parsed.source.has_database = true;
  }
}

// "/path?db=4".
void parse_unix(std::string_view path, ParsedSource &parsed) {
  constexpr std::size_t longest = sizeof(sockaddr_un::sun_path) - 1;
  constexpr std::string_view database = "?db=";
  Source &source = parsed.source;
  source.kind = Source::Kind::unix_socket;
  const std::size_t end = std::min(path.find('?'), path.size());
  source.place = percent_decode(path.substr(0, end), parsed);
  if (source.place.size() > longest) {
    add_source_error("found a path of " + std::to_string(source.place.size()) + " bytes",
                     "one of at most " + std::to_string(longest), parsed.errors);
  }
  const std::string_view query = path.substr(end);
  if (query.starts_with(database)) {
    source.database =
        parse_url_number(query.substr(database.size()), "database", 0, max_database, parsed);
    parsed.source.has_database = true;
  } else if (!query.empty()) {
    add_source_error("found other text after the path", "?db=N", parsed.errors);
  }
}

void parse_url(std::string_view scheme, std::string_view rest, ParsedSource &parsed) {
  Source &source = parsed.source;
  std::string_view authority = rest.substr(0, rest.find_first_of("/?"));
  const std::string_view path = rest.substr(authority.size());
  if (const std::size_t at = authority.rfind('@'); at != authority.npos) {
    const std::string_view login = authority.substr(0, at);
    const std::size_t end = std::min(login.find(':'), login.size());
    source.user = percent_decode(login.substr(0, end), parsed);
    source.password = percent_decode(login.substr(std::min(end + 1, login.size())), parsed);
    authority.remove_prefix(at + 1);
    source.label = printable(std::string(scheme) + std::string(login.substr(0, end)) +
                             (end > 0 ? "@" : "") + std::string(authority) + std::string(path));
  } else if (!authority.empty() && path.find('@') != path.npos) {
    add_source_error("found a '/' or a '?' in a user or a password", "%2F or %3F", parsed.errors);
    return;
  }
  if (scheme == redis_scheme) {
    parse_tcp(authority, path, parsed);
  } else if (authority.empty() && path.starts_with('/')) {
    parse_unix(path, parsed);
  } else {
    add_source_error("found no path", "unix:///path, which begins with a slash", parsed.errors);
  }
}

bool has_url_prefix(std::string_view text) {
  const std::string lower = key_of(text.substr(0, text.find(':') + 1));
  return std::find(url_prefixes.begin(), url_prefixes.end(), lower) != url_prefixes.end();
}

// Returns the position of the colon after the first scheme in a text, or npos.
std::size_t find_scheme_end(std::string_view text) {
  const std::string lower = key_of(text);  // the same positions
  std::size_t end = lower.find("://");
  for (const std::string_view begin : url_prefixes) {
    const std::size_t at = lower.find(begin);
    if (at != lower.npos) end = std::min(end, at + begin.size() - 1);
  }
  return end;
}

// Replaces the text between the colon (with the slashes after it) and the last '@' by "...".
std::string without_login(std::string_view text, std::size_t colon) {
  const std::size_t begin = std::min(text.find_first_not_of(":/", colon), text.size());
  const std::size_t last = text.rfind('@');
  if (colon == text.npos || last == text.npos || last < begin) return printable(text);
  return printable(text.substr(0, begin)) + "..." + printable(text.substr(last));
}

// --- credentials ---

constexpr const char *credential_syntax =
    "a source without a login, a user or nothing, and a password, separated by tabs";

DatabaseKey database_key(const Source &source) {
  std::string place = source.place;
  const bool is_host = source.kind == Source::Kind::tcp;
  if (is_host) {
    std::transform(place.begin(), place.end(), place.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  }
  return {source.kind, place, is_host ? source.port : uint16_t{0}, source.database};
}

// Returns the error of a line, "" if it was added.
std::string add_credential(const std::vector<std::string_view> &fields, Credentials &credentials) {
  if (fields.size() != 3) {
    return fmt::format("found a line of {} field{}", fields.size(), fields.size() == 1 ? "" : "s");
  }
  if (fields[2].empty()) return "found an empty password";
  const ParsedSource parsed = parse_source(fields[0], std::nullopt);
  const Source &source = parsed.source;
  if (!parsed.errors.empty() || source.kind == Source::Kind::file) return "found no database";
  if (fields[0].find('@') != std::string_view::npos) return "found a source with a login";
  DatabaseKey databases = database_key(source);
  if (!parsed.source.has_database) std::get<std::optional<uint32_t>>(databases).reset();
  const Login login{std::string(fields[1]), std::string(fields[2])};
  return credentials.emplace(databases, login).second ? "" : "found a source twice";
}

bool is_passed_by_systemd(const std::string &path, const struct stat &status) {
  const char *folder = std::getenv("CREDENTIALS_DIRECTORY");
  if (folder == nullptr || (status.st_mode & 0037) != 0) return false;
  if (status.st_uid != 0 && status.st_uid != geteuid()) return false;
  std::error_code error;
  const auto real_folder = std::filesystem::canonical(folder, error);
  const auto real_path = std::filesystem::canonical(path, error);
  return !error && real_path.parent_path() == real_folder;
}

// Reads an open file if other users have no access to it.
std::string read_private(int file, const std::string &path, InputErrors &errors) {
  struct stat status {};
  std::string text;
  if (fstat(file, &status) != 0 || !(S_ISREG(status.st_mode) || S_ISFIFO(status.st_mode))) {
    add_source_error("cannot be read: it is not a file", "a file", errors);
  } else if ((status.st_mode & 0077) != 0 && !is_passed_by_systemd(path, status)) {
    add_source_error(fmt::format("users other than its owner have access (mode {:04o})",
                                 status.st_mode & 07777U),
                     "mode 0600", errors);
  } else if (const std::string problem = read_all(file, text); !problem.empty()) {
    add_source_error("cannot be read: " + problem, "a file", errors);
  }
  return text;
}

}  // namespace

ParsedSource parse_source(std::string_view text, std::optional<std::size_t> side) {
  ParsedSource parsed;
  Source &source = parsed.source;
  source.label = hide_login(text);
  source.place = text;
  const std::size_t colon = text.find("://");
  if (colon == text.npos || text.substr(0, colon).find('/') != text.npos) {
    if (has_url_prefix(text)) {
      add_source_error("found a URL without '//' after its scheme", source_syntax, parsed.errors);
    }
    return parsed;
  }
  const std::string_view scheme = text.substr(0, colon + 3);
  if (scheme == tls_scheme) {
    add_source_error("found 'rediss://', and TLS is not supported",
                     "redis:// or unix:// through ssh -L or stunnel, which encrypt", parsed.errors);
  } else if (scheme != redis_scheme && scheme != unix_scheme) {
    add_source_error("found '" + printable(scheme) + "'", source_syntax, parsed.errors);
  } else {
    parse_url(scheme, text.substr(scheme.size()), parsed);
  }
  // A part of the password may be anywhere in an invalid URL.
  if (!parsed.errors.empty()) source.label = printable(scheme) + "...";
  const char *password = side ? std::getenv(password_variables.at(*side)) : nullptr;
  if (source.password.empty() && password != nullptr) source.password = password;
  return parsed;
}

std::string without_passwords(std::string_view text) {
  return without_login(text, find_scheme_end(text));
}

std::string hide_login(std::string_view word) {
  return without_login(word, word.find(':'));
}

Credentials read_credentials(std::string_view text, InputErrors &errors) {
  Credentials credentials;
  for (const TabbedLine &line : read_tabbed(text)) {
    const std::string problem = add_credential(line.fields, credentials);
    if (!problem.empty()) errors.push_back({line.number, 1, "", problem, credential_syntax});
  }
  return credentials;
}

Credentials load_credentials(const std::string &path, InputErrors &errors) {
  // O_NONBLOCK: do not wait for a writer if the path names a pipe.
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (file < 0) {
    add_source_error("cannot be read: " + std::string(std::strerror(errno)), "a file", errors);
    return {};
  }
  const std::string text = read_private(file, path, errors);
  return errors.empty() ? read_credentials(text, errors) : Credentials{};
}

void apply_credentials(const Credentials &credentials, Source &source) {
  if (source.kind == Source::Kind::file || !source.password.empty()) return;
  DatabaseKey databases = database_key(source);
  auto found = credentials.find(databases);
  if (found == credentials.end()) {
    std::get<std::optional<uint32_t>>(databases).reset();
    found = credentials.find(databases);
  }
  if (found == credentials.end()) return;
  const auto &[user, password] = found->second;
  if (!source.user.empty() && !user.empty() && user != source.user) return;
  if (source.user.empty()) source.user = user;
  source.password = password;
}

}  // namespace lab
