// The switch: ports, channels, VLANs and partition, as the managers of the platform report them.

#include <algorithm>
#include <cstring>
#include <set>
#include <span>
#include <vector>

#include "if_index.h"
#include "im.h"
#include "internal.h"
#include "mcecm.h"
#include "satmgr.h"
#include "sysmgr.h"

bmp4096_t mcec_stp_vlan_count = {sizeof mcec_stp_vlan_count.bmp, {}};

namespace {

// The record of a port in the database.
struct Membership {
  uint32_t counts;  // 0: treated as missing
  uint32_t mcec_id;
};

struct Port {
  uint32_t if_index;
  uint8_t type = 0;
  uint32_t layer_mode = 0;
  bool is_pod = false;
  bool has_record = false;
  Membership membership = {};
};

enum KeyKind : uint32_t { of_interface = 0x4946, of_trunk = 0x4D54 };

struct Key {
  uint32_t kind;
  uint32_t number;
};
static_assert(sizeof(Key) == MCECM_SDB_KEY_SIZE);

std::vector<Port> ports;  // in ascending order of if_index
std::set<uint32_t> internal_channels;
bool trunk_exists = false;
uint32_t partition = 0;

// Returns the number of ports with a smaller index.
std::size_t ports_before(uint64_t if_index) {
  const auto at = std::ranges::lower_bound(ports, if_index, {}, &Port::if_index);
  return static_cast<std::size_t>(at - ports.begin());
}

std::size_t ports_in(uint32_t first, uint32_t last) {
  return first <= last ? ports_before(uint64_t{last} + 1) - ports_before(first) : 0;
}

// Returns nullptr if there is no such port.
Port *find_port(uint32_t if_index) {
  const std::size_t at = ports_before(if_index);
  return at < ports.size() && ports[at].if_index == if_index ? &ports[at] : nullptr;
}

// Returns the port, and adds it if it does not exist.
Port &port_at(uint32_t if_index) {
  if (Port *port = find_port(if_index); port != nullptr) return *port;
  const auto place = ports.begin() + static_cast<std::ptrdiff_t>(ports_before(if_index));
  return *ports.insert(place, Port{.if_index = if_index});
}

void set_record(uint32_t if_index, bool has_record, Membership membership) {
  Port &port = port_at(if_index);
  port.has_record = has_record;
  port.membership = membership;
}

// Records are returned at an odd address, like those of a database that packs them.
uint8_t record_buffer[1 + sizeof(Membership)];

void *write_record(const Membership &membership) {
  std::memcpy(record_buffer + 1, &membership, sizeof membership);
  return record_buffer + 1;
}

void write_key(void *key, KeyKind kind, uint32_t number) {
  if (reinterpret_cast<uintptr_t>(key) % 8 != 0) {
    standin::misuse("the key at %p is not aligned to 8", key);
  }
  const Key value{kind, number};
  std::memcpy(key, &value, sizeof value);
}

// The library must set an output argument to 0 before the call.
template <class Number>
void expect_zero(const Number *answer) {
  if (*answer != 0) standin::misuse("an output argument is %u; expected 0", unsigned{*answer});
}

}  // namespace

void standin::reset_switch() {
  ports.clear();
  internal_channels.clear();
  standin_clear_user_vlans();
  trunk_exists = false;
  partition = 0;
}

// --- if_index.h ---

uint32_t if_index_get_type(uint32_t if_index, uint8_t *type) {
  expect_zero(type);
  const Port *port = find_port(if_index);
  if (port == nullptr) return 1;
  *type = port->type;
  return 0;
}

uint32_t if_index_get_num_ports_in_if_index_range(uint32_t first, uint32_t last,
                                                  uint32_t *num_ports) {
  expect_zero(num_ports);
  *num_ports = static_cast<uint32_t>(ports_in(first, last));
  return 0;
}

uint32_t if_index_get_if_index_in_range(uint32_t first, uint32_t last, uint32_t *if_index,
                                        uint32_t position) {
  expect_zero(if_index);
  if (position >= ports_in(first, last)) {
    standin::misuse("0x%x to 0x%x has no port at position %u", first, last, position);
    return 1;
  }
  *if_index = ports[ports_before(first) + position].if_index;
  return 0;
}

// --- im.h, satmgr.h, sysmgr.h ---

uint32_t im_get_ifindex_layermode_list(void *entries, uint32_t count) {
  if (standin::fails(STANDIN_LAYER_MODE)) return 1;
  for (auto &entry : std::span(static_cast<im_ifindex_layermode_t *>(entries), count)) {
    const auto *bytes = reinterpret_cast<const uint8_t *>(&entry);
    if (reinterpret_cast<uintptr_t>(bytes) % 8 != 0 ||
        std::any_of(bytes + sizeof entry.if_index, bytes + sizeof entry,
                    [](uint8_t byte) { return byte != 0; })) {
      standin::misuse("the query at %p is not empty or not aligned to 8",
                      static_cast<const void *>(bytes));
    }
    const Port *port = find_port(entry.if_index);
    if (port == nullptr) return 1;
    entry.layer_mode = port->layer_mode;
  }
  return 0;
}

uint32_t satmgr_if_is_pod_port(uint32_t if_index) {
  const Port *port = find_port(if_index);
  return port != nullptr && port->is_pod ? 1 : 0;
}

uint32_t sysmgr_slc_get() {
  return partition;
}

// --- mcecm.h ---

void mcecm_sdb_generate_if_key(uint32_t if_index, void *key) {
  write_key(key, of_interface, if_index);
}

void mcecm_sdb_generate_mct_key(uint32_t number, void *key) {
  write_key(key, of_trunk, number);
}

void *mcecm_sdb_info_get(const void *key) {
  Key wanted;
  std::memcpy(&wanted, key, sizeof wanted);
  if (wanted.kind == of_trunk)
    return trunk_exists && wanted.number == 1 ? write_record({1, 0}) : nullptr;
  if (standin::fails(STANDIN_MEMBERSHIP)) return nullptr;
  const Port *port = find_port(wanted.number);
  return port != nullptr && port->has_record ? write_record(port->membership) : nullptr;
}

uint32_t mcecm_api_is_internal_mcec(uint32_t mcec_id) {
  return internal_channels.contains(mcec_id) ? 1 : 0;
}

// --- configuration ---

void standin_add_ports(uint32_t first, uint32_t last, uint8_t type, uint32_t layer_mode) {
  for (uint64_t if_index = first; if_index <= last; ++if_index) {
    Port &port = port_at(static_cast<uint32_t>(if_index));
    port.type = type;
    port.layer_mode = layer_mode;
  }
}

void standin_set_member(uint32_t if_index, uint32_t mcec_id) {
  set_record(if_index, mcec_id != 0, {1, mcec_id});
}

void standin_set_void_member(uint32_t if_index, uint32_t mcec_id) {
  set_record(if_index, true, {0, mcec_id});
}

void standin_set_pod_port(uint32_t if_index, uint32_t is_pod) {
  port_at(if_index).is_pod = is_pod != 0;
}

void standin_set_internal(uint32_t mcec_id, uint32_t is_internal) {
  if (is_internal != 0) {
    internal_channels.insert(mcec_id);
  } else {
    internal_channels.erase(mcec_id);
  }
}

void standin_set_trunk(uint32_t exists) {
  trunk_exists = exists != 0;
}

void standin_set_partition(uint32_t slc) {
  partition = slc;
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
