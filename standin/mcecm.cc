#include "mcecm.h"

#include <cstring>
#include <set>

#include "ports.h"
#include "state.h"

bmp4096_t mcec_stp_vlan_count = {sizeof mcec_stp_vlan_count.bmp, {}};

namespace {

enum KeyKind : uint32_t { of_interface = 0x4946, of_trunk = 0x4D54 };

struct Key {
  uint32_t kind;
  uint32_t number;
};
static_assert(sizeof(Key) == MCECM_SDB_KEY_SIZE);

bool trunk_exists = false;
std::set<uint32_t> internal_channels;

// Records are handed out at an odd address, as a database that packs them would.
uint8_t record_buffer[1 + sizeof(standin::Membership)];

void *packed(const standin::Membership &membership) {
  std::memcpy(record_buffer + 1, &membership, sizeof membership);
  return record_buffer + 1;
}

void write_key(void *key, KeyKind kind, uint32_t number) {
  if (reinterpret_cast<uintptr_t>(key) % 8 != 0) standin::misuse("a key at %p", key);
  const Key made{kind, number};
  std::memcpy(key, &made, sizeof made);
}

}  // namespace

namespace standin {

void reset_channels() {
  trunk_exists = false;
  internal_channels.clear();
  standin_clear_user_vlans();
}

}  // namespace standin

void mcecm_sdb_generate_if_key(uint32_t if_index, void *key) {
  write_key(key, of_interface, if_index);
}

void mcecm_sdb_generate_mct_key(uint32_t number, void *key) {
  write_key(key, of_trunk, number);
}

void *mcecm_sdb_info_get(const void *key) {
  Key wanted;
  std::memcpy(&wanted, key, sizeof wanted);
  if (wanted.kind == of_trunk) return trunk_exists && wanted.number == 1 ? packed({1, 0}) : nullptr;
  if (standin::fails(STANDIN_MEMBERSHIP)) return nullptr;
  const standin::Port *port = standin::find_port(wanted.number);
  return port != nullptr && port->has_record ? packed(port->membership) : nullptr;
}

uint32_t mcecm_api_is_internal_mcec(uint32_t mcec_id) {
  return internal_channels.contains(mcec_id) ? 1 : 0;
}

void standin_set_trunk(uint32_t exists) {
  trunk_exists = exists != 0;
}

void standin_set_internal(uint32_t mcec_id, uint32_t is_internal) {
  if (is_internal != 0) {
    internal_channels.insert(mcec_id);
  } else {
    internal_channels.erase(mcec_id);
  }
}

void standin_add_user_vlans(uint32_t first, uint32_t last) {
  for (uint32_t vlan = first; vlan <= last && vlan < 4096; ++vlan) {
    uint8_t &byte = mcec_stp_vlan_count.bmp[vlan / 8];
    byte = static_cast<uint8_t>(byte | 0x80U >> vlan % 8);
  }
}

void standin_clear_user_vlans() {
  std::memset(mcec_stp_vlan_count.bmp, 0, sizeof mcec_stp_vlan_count.bmp);
}
