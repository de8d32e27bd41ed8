// Reading and writing files.
#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "text/error.h"

namespace lab {

// The size limit of a file that the lab reads.
constexpr std::size_t max_mebibytes = 64;

// An open file. The destructor closes it.
struct Descriptor {
  int number = -1;

  explicit Descriptor(int opened = -1) : number(opened) {}
  Descriptor(Descriptor &&other) noexcept : number(std::exchange(other.number, -1)) {}
  Descriptor &operator=(Descriptor &&other) noexcept {
    std::swap(number, other.number);
    return *this;
  }
  ~Descriptor() { close(); }

  operator int() const { return number; }
  bool close();
};

// Reads a file or a pipe; "-" is standard input. Refuses devices: reading one may never end, or may
// have side effects. Throws Interrupted.
std::string read_file(const std::string &path, InputErrors &errors);

// --- functions that return an error message, "" on success, and throw Interrupted ---

// Appends the rest of an open file to a text.
std::string read_all(int file, std::string &text);
std::string write_all(int file, std::string_view text);

// Replaces the contents of a file: on failure they stay unchanged. Keeps the mode and follows
// symbolic links. Writes directly to a pipe, a device or /dev/stdout.
std::string write_file_atomically(const std::string &path, std::string_view text);

// --- output paths ---

// Returns true if writing one file would overwrite the other. They need not exist.
bool is_same_file(const std::string &a, const std::string &b);

}  // namespace lab
