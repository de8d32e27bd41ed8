/* The switch: mcecm.h, if_index.h, im.h, satmgr.h, sysmgr.h. */
#include <draimiofaf/platform/if_index.h>
#include <draimiofaf/platform/im.h>
#include <draimiofaf/platform/mcecm.h>
#include <draimiofaf/platform/satmgr.h>
#include <draimiofaf/platform/sysmgr.h>
#include <stdlib.h>
#include <string.h>

#include "check.h"

/* Returns the first port. Fails if there is none. */
static const platform_check_port_t *first_port(void) {
  REQUIRE(the_switch->port_count > 0, "the switch has no port: set one up, or skip this");
  return the_switch->ports;
}

static const platform_check_port_t *end_of_ports(void) {
  return the_switch->ports + the_switch->port_count;
}

/* --- mcecm.h --- */

typedef union key {
  uint64_t alignment;
  uint8_t bytes[MCECM_SDB_KEY_SIZE + 8];
} db_key_t;

static void verify_keys(void) {
  db_key_t keys[2];
  memset(keys, 0xEE, sizeof keys);
  mcecm_sdb_generate_if_key(UINT32_MAX, keys[0].bytes);
  mcecm_sdb_generate_mct_key(1, keys[1].bytes);
  for (size_t i = MCECM_SDB_KEY_SIZE; i < sizeof keys[0].bytes; ++i) {
    REQUIRE(keys[0].bytes[i] == 0xEE && keys[1].bytes[i] == 0xEE, "a key is larger than %d bytes",
            MCECM_SDB_KEY_SIZE);
  }
}

static void verify_records(void) {
  uint32_t count = 0;
  for (const platform_check_port_t *port = first_port(); port < end_of_ports(); ++port) {
    db_key_t key = {0};
    uint32_t words[2];
    mcecm_sdb_generate_if_key(port->if_index, key.bytes);
    const void *record = mcecm_sdb_info_get(key.bytes);
    REQUIRE((record != NULL) == (port->has_record != 0), "interface 0x%X has %s record",
            port->if_index, record != NULL ? "a" : "no");
    if (record == NULL) continue;
    ++count;
    memcpy(words, record, sizeof words);
    REQUIRE((words[0] != 0) == (port->record[0] != 0) && words[1] == port->record[1],
            "the record of interface 0x%X is %u, 0x%X", port->if_index, words[0], words[1]);
  }
  REQUIRE(count > 0, "the switch has no port with a record: set one up, or skip this");
}

static const void *trunk_record(void) {
  db_key_t key = {0};
  mcecm_sdb_generate_mct_key(1, key.bytes);
  return mcecm_sdb_info_get(key.bytes);
}

static void verify_trunk(void) {
  REQUIRE(the_switch->has_trunk != 0, "the switch has no trunk: set one up, or skip this");
  REQUIRE(trunk_record() != NULL, "the trunk has no record");
}

static void verify_no_trunk(void) {
  platform_check_switch_t wanted = *the_switch;
  wanted.has_trunk = 0;
  REQUIRE(platform_check_set_up(&wanted)->has_trunk == 0, "the trunk cannot be removed: skip this");
  REQUIRE(trunk_record() == NULL, "a trunk that does not exist has a record");
}

static void verify_internal_channels(void) {
  REQUIRE(mcecm_api_is_internal_mcec(the_switch->internal_channel) != 0,
          "channel %u is not internal", the_switch->internal_channel);
  REQUIRE(mcecm_api_is_internal_mcec(the_switch->other_channel) == 0, "channel %u is internal",
          the_switch->other_channel);
}

static void verify_user_vlans(void) {
  for (uint32_t vlan = 0; vlan < 4096; ++vlan) {
    const int is_set = (mcec_stp_vlan_count.bmp[vlan / 8] & (0x80 >> vlan % 8)) != 0;
    const int is_user = vlan >= the_switch->first_user_vlan && vlan <= the_switch->last_user_vlan;
    REQUIRE(is_set == is_user, "VLAN %u is %s", vlan, is_set ? "set" : "not set");
  }
}

/* --- if_index.h, im.h, satmgr.h, sysmgr.h --- */

static void verify_types(void) {
  for (const platform_check_port_t *port = first_port(); port < end_of_ports(); ++port) {
    uint8_t type = 0;
    if_index_get_type(port->if_index, &type);
    REQUIRE(type == port->type, "interface 0x%X has type %u", port->if_index, type);
  }
}

static uint32_t ports_in(uint32_t first, uint32_t last) {
  uint32_t count = 0;
  if_index_get_num_ports_in_if_index_range(first, last, &count);
  return count;
}

static void verify_counts(void) {
  const platform_check_port_t *const ports = first_port();
  for (size_t first = 0; first < the_switch->port_count; ++first) {
    for (size_t last = 0; last < the_switch->port_count; ++last) {
      const uint32_t expected = last >= first ? (uint32_t)(last - first + 1) : 0;
      const uint32_t count = ports_in(ports[first].if_index, ports[last].if_index);
      REQUIRE(count == expected, "0x%X to 0x%X has %u ports; expected %u", ports[first].if_index,
              ports[last].if_index, count, expected);
    }
  }
}

static void verify_positions(void) {
  const platform_check_port_t *const ports = first_port();
  for (size_t first = 0; first < the_switch->port_count; ++first) {
    for (size_t at = first; at < the_switch->port_count; ++at) {
      uint32_t if_index = 0;
      if_index_get_if_index_in_range(ports[first].if_index, end_of_ports()[-1].if_index, &if_index,
                                     (uint32_t)(at - first));
      REQUIRE(if_index == ports[at].if_index, "position %zu from 0x%X is 0x%X; expected 0x%X",
              at - first, ports[first].if_index, if_index, ports[at].if_index);
    }
  }
}

static void verify_layer_modes(void) {
  const platform_check_port_t *const ports = first_port();
  for (uint32_t count = 1; count <= the_switch->port_count; ++count) {
    im_ifindex_layermode_t *entries = guarded_buffer(count * sizeof *entries);
    for (uint32_t i = 0; i < count; ++i) entries[i].if_index = ports[i].if_index;
    const uint32_t result = im_get_ifindex_layermode_list(entries, count);
    REQUIRE(result == 0, "im_get_ifindex_layermode_list returned 0x%X", result);
    for (uint32_t i = 0; i < count; ++i) {
      REQUIRE(
          entries[i].if_index == ports[i].if_index && entries[i].layer_mode == ports[i].layer_mode,
          "interface 0x%X has layer mode %u", entries[i].if_index, entries[i].layer_mode);
    }
  }
}

static void verify_pods(void) {
  uint32_t count = 0;
  for (const platform_check_port_t *port = first_port(); port < end_of_ports(); ++port) {
    count += port->is_pod != 0;
    REQUIRE((satmgr_if_is_pod_port(port->if_index) != 0) == (port->is_pod != 0),
            "interface 0x%X is %s", port->if_index, port->is_pod ? "not a pod port" : "a pod port");
  }
  REQUIRE(count > 0, "the switch has no port of a pod: set one up, or skip this");
}

static void verify_partition(void) {
  REQUIRE((sysmgr_slc_get() & 0xFFFF) == (the_switch->partition & 0xFFFF),
          "sysmgr_slc_get returned %u", sysmgr_slc_get());
}

const contract_t switch_contracts[] = {
    {"mcecm.key", "a key has eight bytes", verify_keys},
    {"mcecm.record", "an interface has its record, or none", verify_records},
    {"mcecm.trunk", "the trunk has a record", verify_trunk},
    {"mcecm.no-trunk", "a trunk that does not exist has no record", verify_no_trunk},
    {"mcecm.internal", "internal channels are recognized", verify_internal_channels},
    {"mcecm.user-vlans", "VLAN n is bit 0x80 >> n % 8 of byte n / 8", verify_user_vlans},
    {"if_index.type", "an interface has its type", verify_types},
    {"if_index.count", "a range includes both ends, a reversed one is empty", verify_counts},
    {"if_index.position", "the ports of a range are numbered from 0", verify_positions},
    {"im.layer-mode", "each entry of a query is answered, and no more", verify_layer_modes},
    {"satmgr.pod", "ports of pods are recognized", verify_pods},
    {"sysmgr.partition", "the partition is that of the process", verify_partition},
    {NULL, NULL, NULL},
};
