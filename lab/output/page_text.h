// Texts of the page: what comes from the document, made safe in it.
#pragma once

#include <string>
#include <string_view>

#include "output/json.h"

namespace lab {

inline constexpr const char *sides[] = {"left", "right"};

// A text from outside, safe in an element and in quotation marks. Long lists may break at commas.
std::string escaped(std::string_view text, const char *comma = ",");

// The same in a direction of writing of its own, so that it does not turn the text around it.
std::string said(std::string_view text);

// A long value is folded behind its beginning.
std::string folded(const std::string &text);

// A member of an object, and its text; null and "" when it is not there.
const Json &field(const Json &object, const char *key);
std::string text_at(const Json &object, const char *key);

// "1 scope", "2 scopes".
std::string counted(std::size_t count, const char *what);

}  // namespace lab
