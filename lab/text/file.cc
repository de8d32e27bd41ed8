#include "text/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <optional>

#include "text/text.h"
#include "text/wait.h"

namespace lab {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t max_file_bytes = max_mebibytes << 20;
constexpr std::size_t read_bytes = 65536;
// A pipe that is ready for writing accepts this many bytes without blocking (PIPE_BUF).
constexpr std::size_t pipe_bytes = 4096;
// The kernel's limit.
constexpr int max_links = 40;

// Returns true if a signal interrupted the call. Throws Interrupted if the signal stops the lab.
bool should_retry() {
  if (errno != EINTR) return false;
  if (interrupted()) throw Interrupted{};
  return true;
}

int open_file(const std::string &path, int flags) {
  int file = -1;
  do {
    file = open(path.c_str(), flags | O_CLOEXEC);
  } while (file < 0 && should_retry());
  return file;
}

bool is_regular(int file) {
  struct stat status {};
  return fstat(file, &status) == 0 && S_ISREG(status.st_mode);
}

bool is_device(const std::string &path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && (S_ISCHR(status.st_mode) || S_ISBLK(status.st_mode));
}

// Returns the descriptor that a path names: /dev/stdout, /dev/fd/3. Opening such a path would start
// at the beginning of the file, and fails for a socket.
std::optional<int> named_descriptor(std::string_view path) {
  if (path == "/dev/stdout") return STDOUT_FILENO;
  if (path == "/dev/stderr") return STDERR_FILENO;
  for (const std::string_view folder : {"/dev/fd/", "/proc/self/fd/"}) {
    if (!path.starts_with(folder)) continue;
    if (const auto number = parse_number(path.substr(folder.size()))) return int(*number);
  }
  return std::nullopt;
}

// Follows symbolic links. The target need not exist.
fs::path without_links(fs::path path) {
  std::error_code error;
  for (int i = 0; i < max_links && fs::is_symlink(fs::symlink_status(path, error)); ++i) {
    const fs::path target = fs::read_symlink(path, error);
    if (error) break;
    path = path.parent_path() / target;
  }
  return path;
}

std::string read_path(const std::string &path, std::string &text) {
  if (path == "-") return read_all(STDIN_FILENO, text);
  if (is_device(path)) return "it is a device";
  const Descriptor file(open_file(path, O_RDONLY));
  return file >= 0 ? read_all(file, text) : std::strerror(errno);
}

// Returns the mode of a file, or the default mode of a new file.
mode_t mode_of(const fs::path &path) {
  struct stat status {};
  if (stat(path.c_str(), &status) == 0) return status.st_mode & 0777;
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

// Writes a temporary file and renames it. Removes it on failure.
std::string replace_file(const fs::path &path, std::string_view text) {
  std::string name = (path.parent_path() / ".mcec-lab-XXXXXX").string();
  const mode_t mode = mode_of(path);
  Descriptor file(mkostemp(name.data(), O_CLOEXEC));
  if (file < 0) return std::strerror(errno);
  const auto remove = [](const std::string *unfinished) { unlink(unfinished->c_str()); };
  std::unique_ptr<const std::string, decltype(remove)> unfinished(&name, remove);
  if (fchmod(file, mode) != 0) return std::strerror(errno);
  const std::string problem = write_all(file, text);
  if (!problem.empty()) return problem;
  if (!file.close() || rename(name.c_str(), path.c_str()) != 0) return std::strerror(errno);
  [[maybe_unused]] const std::string *finished = unfinished.release();
  return "";
}

}  // namespace

bool Descriptor::close() {
  return number < 0 || ::close(std::exchange(number, -1)) == 0;
}

std::string read_all(int file, std::string &text) {
  char buffer[read_bytes];
  const bool waits = !is_regular(file);
  while (true) {
    if (waits) wait_for(file, POLLIN);
    const ssize_t count = read(file, buffer, sizeof buffer);
    if (interrupted()) throw Interrupted{};
    if (count == 0) return "";
    if (count < 0) {
      if (should_retry() || errno == EAGAIN) continue;
      return std::strerror(errno);
    }
    text.append(buffer, static_cast<std::size_t>(count));
    if (text.size() > max_file_bytes) {
      return "it is larger than " + std::to_string(max_mebibytes) + " MiB";
    }
  }
}

std::string write_all(int file, std::string_view text) {
  const bool waits = !is_regular(file);
  while (!text.empty()) {
    if (waits) wait_for(file, POLLOUT);
    const std::string_view part = waits ? text.substr(0, pipe_bytes) : text;
    const ssize_t written = write(file, part.data(), part.size());
    if (written >= 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
    } else if (!should_retry() && errno != EAGAIN) {
      return std::strerror(errno);
    }
  }
  return "";
}

std::string read_file(const std::string &path, InputErrors &errors) {
  std::string text;
  const std::string problem = read_path(path, text);
  if (!problem.empty()) {
    errors.push_back({0, 0, "", "cannot be read: " + problem, "a file, or - for standard input"});
  }
  return text;
}

std::string write_file_atomically(const std::string &path, std::string_view text) {
  const auto number = named_descriptor(path);
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (!number && (!fs::exists(status) || fs::is_regular_file(status))) {
    return replace_file(without_links(path), text);
  }
  const Descriptor file(number ? fcntl(*number, F_DUPFD_CLOEXEC, 0) : open_file(path, O_WRONLY));
  if (file < 0) return std::strerror(errno);
  std::fflush(stdout);  // keep the order of the output
  return write_all(file, text);
}

bool is_same_file(const std::string &a, const std::string &b) {
  struct stat first {};
  struct stat second {};
  const bool has_first = stat(a.c_str(), &first) == 0;
  if (has_first != (stat(b.c_str(), &second) == 0)) return false;
  if (has_first) {
    const bool is_exempt = S_ISCHR(first.st_mode);  // /dev/null can be written to twice
    return first.st_dev == second.st_dev && first.st_ino == second.st_ino && !is_exempt;
  }
  const auto full = [](const std::string &path) {
    std::error_code error;
    return fs::weakly_canonical(fs::absolute(without_links(path), error), error);
  };
  return full(a) == full(b);
}

}  // namespace lab
