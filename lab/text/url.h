// Text inside of URLs.
#pragma once

#include <string>
#include <string_view>

namespace lab {

// What is special in a URL as %20.
std::string encode_url(std::string_view text);

// The reverse; a '%' that stands for no byte stays. In the value of a form's field a '+' is a
// blank.
std::string decode_url(std::string_view text);
std::string decode_form(std::string_view text);

}  // namespace lab
