#include "sonic/credentials.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <utility>

#include "text/file.h"
#include "text/text.h"

namespace lab {
namespace {

constexpr const char *credential_form =
    "a source without a login, a user or nothing, and a password, separated by tabs";

Databases databases_of(const Source &source) {
  std::string place = source.place;
  const bool is_host = source.kind == Source::Kind::tcp;
  if (is_host) {
    std::transform(place.begin(), place.end(), place.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  }
  return {source.kind, place, is_host ? source.port : uint16_t{0}, source.database};
}

// Does the text of a source name a database, or mean all of the server?
bool has_database(const Source &source, std::string_view text) {
  if (source.kind == Source::Kind::unix_socket) return text.find('?') != text.npos;
  const std::size_t path = text.find('/', text.find("://") + 3);
  return path != text.npos && path + 1 < text.size();
}

// What is wrong with a line, "" when it is added.
std::string add_credential(const std::vector<std::string_view> &fields, Credentials &credentials) {
  if (fields.size() != 3) {
    return fmt::format("found a line of {} field{}", fields.size(), fields.size() == 1 ? "" : "s");
  }
  if (fields[2].empty()) return "found an empty password";
  const ParsedSource parsed = parse_source(fields[0], std::nullopt);
  const Source &source = parsed.source;
  if (!parsed.errors.empty() || source.kind == Source::Kind::file) return "found no database";
  if (fields[0].find('@') != std::string_view::npos) return "found a source with a login";
  Databases databases = databases_of(source);
  if (!has_database(source, fields[0])) std::get<std::optional<uint32_t>>(databases).reset();
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

void add_file_error(std::string found, std::string expected, InputErrors &errors) {
  errors.push_back({0, 0, "", std::move(found), std::move(expected)});
}

// Its text, when nobody else can read it.
std::string read_private(int file, const std::string &path, InputErrors &errors) {
  struct stat status {};
  std::string text;
  if (fstat(file, &status) != 0 || !(S_ISREG(status.st_mode) || S_ISFIFO(status.st_mode))) {
    add_file_error("cannot be read: it is not a file", "a file", errors);
  } else if ((status.st_mode & 0077) != 0 && !is_passed_by_systemd(path, status)) {
    add_file_error(
        fmt::format("others than its owner have access (mode {:04o})", status.st_mode & 07777U),
        "mode 0600", errors);
  } else if (const std::string problem = read_all(file, text); !problem.empty()) {
    add_file_error("cannot be read: " + problem, "a file", errors);
  }
  return text;
}

}  // namespace

Credentials read_credentials(std::string_view text, InputErrors &errors) {
  Credentials credentials;
  for (const TabbedLine &line : read_tabbed(text)) {
    const std::string problem = add_credential(line.fields, credentials);
    if (!problem.empty()) errors.push_back({line.number, 1, "", problem, credential_form});
  }
  return credentials;
}

Credentials load_credentials(const std::string &path, InputErrors &errors) {
  // A pipe without a writer is not waited for.
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (file < 0) {
    add_file_error(fmt::format("cannot be read: {}", std::strerror(errno)), "a file", errors);
    return {};
  }
  std::string text;
  try {
    text = read_private(file, path, errors);
  } catch (...) {
    close(file);
    throw;
  }
  close(file);
  return errors.empty() ? read_credentials(text, errors) : Credentials{};
}

void apply_credentials(const Credentials &credentials, Source &source) {
  if (source.kind == Source::Kind::file || !source.password.empty()) return;
  Databases databases = databases_of(source);
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
