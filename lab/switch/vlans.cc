#include "switch/vlans.h"

#include <fmt/format.h>
#include <nettle/hmac.h>

#include "draimiofaf/foundation.h"
#include "text/yaml.h"

namespace lab {

Vlans vlans_of(const Ranges &ranges) {
  Vlans vlans;
  for (const auto &[first, last] : ranges) {
    vlans |= ~Vlans() >> (vlan_count - 1 - (last - first)) << first;
  }
  return vlans;
}

Ranges ranges_of(const Vlans &vlans) {
  Ranges ranges;
  for (uint32_t vlan = 0; vlan < vlan_count; ++vlan) {
    if (!vlans[vlan]) continue;
    if (!ranges.empty() && ranges.back().second + 1 == vlan) {
      ranges.back().second = vlan;
    } else {
      ranges.emplace_back(vlan, vlan);
    }
  }
  return ranges;
}

std::string vlan_text(const Vlans &vlans) {
  return stp_mcec_lib_bmp4096_to_str(vlan_record(vlans).data());
}

Ranges read_vlan_ranges(Reader &reader, const YAML::Node &node, const std::string &what) {
  if (node.IsScalar() && (node.Scalar().empty() || key_of(node.Scalar()) == "none")) return {};
  return reader.ranges(node, what + ": VLANs 0 to 4095", vlan_count - 1, "1-10,20, or none");
}

Vlans read_vlan_list(Reader &reader, const YAML::Node &node, const std::string &what) {
  return vlans_of(read_vlan_ranges(reader, node, what));
}

std::string write_vlan_list(const Vlans &vlans) {
  return vlans.none() ? "none" : yaml_text(vlan_text(vlans));
}

std::string vlan_words(const Vlans &vlans) {
  return (vlans.count() == 1 ? "VLAN " : "VLANs ") + vlan_text(vlans);
}

Bytes vlan_record(const Vlans &vlans) {
  Bytes record(sizeof(bmp4096_t));
  record[2] = 2;  // 512, in network byte order
  for (uint32_t vlan = 0; vlan < vlan_count; ++vlan) {
    uint8_t &byte = record[offsetof(bmp4096_t, bmp) + vlan / 8];
    if (vlans[vlan]) byte = uint8_t(byte | 0x80U >> vlan % 8);
  }
  return record;
}

Vlans vlans_of_record(const Bytes &record) {
  Vlans vlans;
  for (uint32_t vlan = 0; vlan < vlan_count; ++vlan) {
    const std::size_t at = offsetof(bmp4096_t, bmp) + vlan / 8;
    vlans[vlan] = at < record.size() && (record[at] & 0x80U >> vlan % 8) != 0;
  }
  return vlans;
}

uint32_t instance_of(const Bytes &map, uint32_t vlan) {
  const std::size_t at = std::size_t{2} * vlan;
  return at + 1 < map.size() ? map[at] * 256U + map[at + 1] : 0;
}

void set_instance(Bytes &map, uint32_t vlan, uint32_t instance) {
  map[std::size_t{2} * vlan] = uint8_t(instance >> 8);
  map[std::size_t{2} * vlan + 1] = uint8_t(instance);
}

std::map<uint32_t, Vlans> instances_of(const Bytes &map) {
  std::map<uint32_t, Vlans> instances;
  for (uint32_t vlan = 0; vlan < vlan_count; ++vlan) {
    if (const uint32_t instance = instance_of(map, vlan); instance != 0) {
      instances[instance].set(vlan);
    }
  }
  return instances;
}

std::string region_digest(const Bytes &map) {
  // The standard's key is the same in every bridge: the digest is a checksum, not a secret.
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
  return fmt::format("{:02X}", fmt::join(digest, ""));
}

}  // namespace lab
