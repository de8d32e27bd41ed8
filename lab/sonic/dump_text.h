// What a file that should be a dump is, when it is not JSON at all.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "text/error.h"

namespace lab {

inline constexpr char a_dump[] = "a dump of a configuration database, a JSON object of tables";

// "line 3, column 1".
std::string place_in_text(std::string_view text, std::size_t at);

// Nothing, gzip, UTF-16, or lines before the JSON; nothing is returned of what may be JSON.
std::optional<InputError> text_that_is_no_json(std::string_view text);

}  // namespace lab
