// Reading and writing files.
#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "text/error.h"

namespace lab {

// No file that the lab reads is larger.
constexpr std::size_t most_mebibytes = 64;

// An open file, which is closed with this record.
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

// The text of a file, of a pipe, or of standard input when the path is "-"; an error says why it
// cannot be read. A device is refused: its reading may never end, or change it. Throws Interrupted.
std::string read_file(const std::string &path, InputErrors &errors);

// --- these return what went wrong, else "", and throw Interrupted ---

// Append what is left of an open file to a text.
std::string read_all(int file, std::string &text);
std::string write_all(int file, std::string_view text);

// Write a file whole: what stood there is replaced by all of the text, or stays as it is. Its mode
// stays, and a symbolic link stays a link. A pipe, a device and /dev/stdout are written to.
std::string write_file_atomically(const std::string &path, std::string_view text);

// --- outputs ---

// Would writing the one replace the other? They need not exist.
bool is_same_file(const std::string &a, const std::string &b);

}  // namespace lab
