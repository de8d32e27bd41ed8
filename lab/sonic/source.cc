#include "sonic/source.h"

#include <sys/un.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <optional>

#include "sonic/rows.h"

namespace lab {
namespace {

constexpr std::array<const char *, 2> password_variables = {"MCEC_LEFT_PASSWORD",
                                                            "MCEC_RIGHT_PASSWORD"};
constexpr std::string_view redis_scheme = "redis://";
constexpr std::string_view unix_scheme = "unix://";
constexpr std::string_view tls_scheme = "rediss://";
// How a URL begins, however many slashes follow.
constexpr std::array<std::string_view, 3> url_begins = {"redis:", "rediss:", "unix:"};
constexpr const char *source_form = "redis://host, unix:///path, or a file";
constexpr uint32_t most_database = UINT16_MAX;

void add_error(ParsedSource &parsed, std::string found, std::string expected) {
  parsed.errors.push_back({0, 0, "", std::move(found), std::move(expected)});
}

std::string decoded(std::string_view text, ParsedSource &parsed) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      out += text[i];
      continue;
    }
    const std::string_view digits = text.substr(i + 1, 2);
    if (digits.size() < 2 || digits.find_first_not_of("0123456789abcdefABCDEF") != digits.npos ||
        digits == "00") {
      add_error(parsed, "found a '%' that stands for no character", "%25 for the sign itself");
      return out;
    }
    out += static_cast<char>(unhex(digits)[0]);
    i += 2;
  }
  return out;
}

// The text is not printed: it may be the end of a password.
uint32_t number(std::string_view text, const std::string &what, uint32_t least, uint32_t most,
                ParsedSource &parsed) {
  const auto value = decimal(text);
  if (value && *value >= least && *value <= most) return *value;
  add_error(parsed, "found a " + what + " that is none",
            "a number from " + std::to_string(least) + " to " + std::to_string(most));
  return least;
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
    add_error(parsed, "found no host, or more than one",
              "redis://host:port/4, an IPv6 address in brackets");
    return;
  }
  source.place = decoded(host, parsed);
  if (!port.empty()) {
    source.port = static_cast<uint16_t>(number(port.substr(1), "port", 1, UINT16_MAX, parsed));
  }
  if (path.size() > 1 || path == "?") {
    source.database = number(path.substr(1), "database", 0, most_database, parsed);
  }
}

// "/path?db=4".
void parse_unix(std::string_view path, ParsedSource &parsed) {
  constexpr std::size_t longest = sizeof(sockaddr_un::sun_path) - 1;
  constexpr std::string_view database = "?db=";
  Source &source = parsed.source;
  source.kind = Source::Kind::unix_socket;
  const std::size_t end = std::min(path.find('?'), path.size());
  source.place = decoded(path.substr(0, end), parsed);
  if (source.place.size() > longest) {
    add_error(parsed, "found a path of " + std::to_string(source.place.size()) + " bytes",
              "one of at most " + std::to_string(longest));
  }
  const std::string_view query = path.substr(end);
  if (query.starts_with(database)) {
    source.database = number(query.substr(database.size()), "database", 0, most_database, parsed);
  } else if (!query.empty()) {
    add_error(parsed, "found something else behind the path", "?db=4 or the like");
  }
}

void parse_url(std::string_view scheme, std::string_view rest, ParsedSource &parsed) {
  Source &source = parsed.source;
  std::string_view authority = rest.substr(0, rest.find_first_of("/?"));
  const std::string_view path = rest.substr(authority.size());
  if (const std::size_t at = authority.rfind('@'); at != authority.npos) {
    const std::string_view login = authority.substr(0, at);
    const std::size_t end = std::min(login.find(':'), login.size());
    source.user = decoded(login.substr(0, end), parsed);
    source.password = decoded(login.substr(std::min(end + 1, login.size())), parsed);
    authority.remove_prefix(at + 1);
    source.shown = printable(std::string(scheme) + std::string(login.substr(0, end)) +
                             (end > 0 ? "@" : "") + std::string(authority) + std::string(path));
  } else if (!authority.empty() && path.find('@') != path.npos) {
    add_error(parsed, "found a '/' or a '?' in a user or a password", "%2F or %3F");
    return;
  }
  if (scheme == redis_scheme) {
    parse_tcp(authority, path, parsed);
  } else if (authority.empty() && path.starts_with('/')) {
    parse_unix(path, parsed);
  } else {
    add_error(parsed, "found no path", "unix:///path, which begins with a slash");
  }
}

bool begins_url(std::string_view text) {
  const std::string lower = key_of(text.substr(0, text.find(':') + 1));
  return std::find(url_begins.begin(), url_begins.end(), lower) != url_begins.end();
}

// The colon behind the first scheme of a text; npos: there is none.
std::size_t find_scheme_end(std::string_view text) {
  const std::string lower = key_of(text);  // every character in its place
  std::size_t end = lower.find("://");
  for (const std::string_view begin : url_begins) {
    const std::size_t at = lower.find(begin);
    if (at != lower.npos) end = std::min(end, at + begin.size() - 1);
  }
  return end;
}

// A text without what is between a colon, with the slashes behind it, and the last '@'.
std::string without_login(std::string_view text, std::size_t colon) {
  const std::size_t begin = std::min(text.find_first_not_of(":/", colon), text.size());
  const std::size_t last = text.rfind('@');
  if (colon == text.npos || last == text.npos || last < begin) return printable(text);
  return printable(text.substr(0, begin)) + "..." + printable(text.substr(last));
}

}  // namespace

ParsedSource parse_source(std::string_view text, std::optional<std::size_t> side) {
  ParsedSource parsed;
  Source &source = parsed.source;
  source.shown = hide_login(text);
  source.place = text;
  const std::size_t colon = text.find("://");
  if (colon == text.npos || text.substr(0, colon).find('/') != text.npos) {
    if (begins_url(text)) {
      add_error(parsed, "found a URL without '//' behind its scheme", source_form);
    }
    return parsed;
  }
  const std::string_view scheme = text.substr(0, colon + 3);
  if (scheme == tls_scheme) {
    add_error(parsed, "found 'rediss://', and TLS is not supported",
              "redis:// or unix:// through ssh -L or stunnel, which encrypt");
  } else if (scheme != redis_scheme && scheme != unix_scheme) {
    add_error(parsed, "found '" + printable(scheme) + "'", source_form);
  } else {
    parse_url(scheme, text.substr(scheme.size()), parsed);
  }
  // What is wrong may be a part of the password, and stand anywhere.
  if (!parsed.errors.empty()) source.shown = printable(scheme) + "...";
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

}  // namespace lab
