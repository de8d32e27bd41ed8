// Reading and writing files.
#pragma once

#include <string>
#include <string_view>

#include "text/error.h"

namespace lab {

// No file that the lab reads is larger.
constexpr std::size_t most_mebibytes = 64;

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
