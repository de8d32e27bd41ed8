// Hashes of texts.
#pragma once

#include <string>
#include <string_view>

namespace lab {

// The SHA-256 hash of a text, in Base64.
std::string hash_text(std::string_view text);

}  // namespace lab
