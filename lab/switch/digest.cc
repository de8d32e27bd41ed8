#include "switch/digest.h"

#include <nettle/hmac.h>

#include <algorithm>
#include <cctype>

#include "switch/vlans.h"

namespace lab {

std::string region_digest(const Bytes &map) {
  // The standard's key, the same in every bridge: the digest is a checksum, not a secret.
  static constexpr uint8_t key[] = {0x13, 0xAC, 0x06, 0xA6, 0x2E, 0x47, 0xFD, 0x51,
                                    0xF9, 0x5D, 0x2B, 0xA2, 0x43, 0xCD, 0x03, 0x46};
  Bytes table = map;
  table.resize(std::size_t{2} * vlan_count);
  set_instance(table, 0, 0);
  set_instance(table, vlan_count - 1, 0);
  hmac_md5_ctx context;
  hmac_md5_set_key(&context, sizeof key, key);
  hmac_md5_update(&context, table.size(), table.data());
  Bytes digest(MD5_DIGEST_SIZE);
  hmac_md5_digest(&context, digest.size(), digest.data());
  std::string text = hex(digest);
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return text;
}

}  // namespace lab
