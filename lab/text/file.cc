#include "text/file.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

namespace lab {
namespace {

bool write_all(int file, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(file, text.data(), text.size());
    if (written < 0 && errno != EINTR) return false;
    text.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
  }
  return true;
}

bool write_and_close(int file, std::string_view text) {
  if (file < 0) return false;
  const bool written = write_all(file, text);
  const int problem = errno;
  const bool closed = close(file) == 0;
  if (!written) errno = problem;
  return written && closed;
}

}  // namespace

std::string write_whole(const std::string &path, std::string_view text) {
  std::error_code error;
  const auto there = std::filesystem::status(path, error);
  if (std::filesystem::exists(there) && !std::filesystem::is_regular_file(there)) {
    const int file = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    return write_and_close(file, text) ? "" : std::strerror(errno);
  }
  const std::filesystem::path target = std::filesystem::weakly_canonical(path, error);
  const std::string place = error ? path : target.string();
  const std::string unfinished = place + "." + std::to_string(getpid());
  const int file =
      open(unfinished.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0666);
  if (write_and_close(file, text) && rename(unfinished.c_str(), place.c_str()) == 0) return "";
  const std::string problem = std::strerror(errno);
  if (file >= 0) unlink(unfinished.c_str());
  return problem;
}

}  // namespace lab
