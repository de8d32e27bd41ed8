// Texts of the page: what comes from the document, made safe in it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "switch/vlans.h"

namespace lab {

// A text from outside, safe in an element and in quotation marks. Long lists may break at commas.
std::string escaped(std::string_view text, const char *comma = ",");

// The same in a direction of writing of its own, so that it does not turn the text around it.
std::string isolated(std::string_view text);

// A long value is folded behind its beginning.
std::string folded(const std::string &text);
std::string folded(const Vlans &vlans);

// "1 scope", "2 scopes".
std::string count_of(std::size_t count, const char *what);

}  // namespace lab
