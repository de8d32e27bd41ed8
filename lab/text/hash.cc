#include "text/hash.h"

#include <nettle/base64.h>
#include <nettle/sha2.h>

#include <array>

namespace lab {

std::string hash_text(std::string_view text) {
  std::array<uint8_t, SHA256_DIGEST_SIZE> digest{};
  sha256_ctx context;
  sha256_init(&context);
  sha256_update(&context, text.size(), reinterpret_cast<const uint8_t *>(text.data()));
  sha256_digest(&context, digest.size(), digest.data());
  std::string encoded(BASE64_ENCODE_RAW_LENGTH(digest.size()), '\0');
  base64_encode_raw(encoded.data(), digest.size(), digest.data());
  return encoded;
}

}  // namespace lab
