// Writing files.
#pragma once

#include <string>
#include <string_view>

namespace lab {

// Write a file whole: what stood there is replaced by all of the text, or stays as it is. A link stays
// a link; what is no file, as a pipe, is written to. Returns what went wrong, else nothing.
std::string write_whole(const std::string &path, std::string_view text);

}  // namespace lab
