/* The switch: interfaces, channels and pods, from the tables of the process. */
#include <draimiofaf/platform/if_index.h>
#include <draimiofaf/platform/im.h>
#include <draimiofaf/platform/mcecm.h>
#include <draimiofaf/platform/satmgr.h>
#include <draimiofaf/platform/sysmgr.h>
#include <string.h>

#include "platform.h"

static platform_switch_t current;

void platform_set_switch(const platform_switch_t *tables) {
  current = tables != NULL ? *tables : (platform_switch_t){.ports = NULL};
}

/* Returns the number of ports with a smaller index. */
static size_t ports_before(uint64_t if_index) {
  size_t low = 0;
  size_t high = current.port_count;
  while (low < high) {
    const size_t middle = low + (high - low) / 2;
    if (current.ports[middle].if_index < if_index) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  return low;
}

static const platform_port_t *find_port(uint32_t if_index) {
  const size_t at = ports_before(if_index);
  return at < current.port_count && current.ports[at].if_index == if_index ? &current.ports[at]
                                                                           : NULL;
}

static size_t ports_in(uint32_t first, uint32_t last) {
  return first <= last ? ports_before(UINT64_C(1) + last) - ports_before(first) : 0;
}

/* --- interface indexes --- */

uint32_t if_index_get_type(uint32_t if_index, uint8_t *type) {
  const platform_port_t *port = find_port(if_index);
  if (port == NULL) return 1;
  *type = port->type;
  return 0;
}

uint32_t if_index_get_num_ports_in_if_index_range(uint32_t first, uint32_t last,
                                                  uint32_t *num_ports) {
  *num_ports = (uint32_t)ports_in(first, last);
  return 0;
}

uint32_t if_index_get_if_index_in_range(uint32_t first, uint32_t last, uint32_t *if_index,
                                        uint32_t position) {
  if (position >= ports_in(first, last)) return 1;
  *if_index = current.ports[ports_before(first) + position].if_index;
  return 0;
}

/* --- interface manager --- */

uint32_t im_get_ifindex_layermode_list(void *entries, uint32_t count) {
  im_ifindex_layermode_t *entry = entries;
  for (; count > 0; --count, ++entry) {
    const platform_port_t *port = find_port(entry->if_index);
    if (port == NULL) return 1;
    entry->layer_mode = port->layer_mode;
  }
  return 0;
}

/* --- multi-chassis manager: a key is the kind of its record and a number --- */

bmp4096_t mcec_stp_vlan_count = {512, {0}};

enum { of_interface = 1, of_trunk = 2 };

static void write_key(void *key, uint32_t kind, uint32_t number) {
  memcpy(key, &kind, sizeof kind);
  memcpy((unsigned char *)key + sizeof kind, &number, sizeof number);
}

void mcecm_sdb_generate_if_key(uint32_t if_index, void *key) {
  write_key(key, of_interface, if_index);
}

void mcecm_sdb_generate_mct_key(uint32_t number, void *key) {
  write_key(key, of_trunk, number);
}

void *mcecm_sdb_info_get(const void *key) {
  static uint32_t trunk;
  uint32_t wanted[2];
  memcpy(wanted, key, sizeof wanted);
  if (wanted[0] == of_trunk) return current.has_trunk != 0 && wanted[1] == 1 ? &trunk : NULL;
  const platform_port_t *port = find_port(wanted[1]);
  return port != NULL && port->has_record != 0 ? (void *)port->record : NULL;
}

uint32_t mcecm_api_is_internal_mcec(uint32_t mcec_id) {
  for (size_t i = 0; i < current.internal_count; ++i) {
    if (current.internal_channels[i] == mcec_id) return 1;
  }
  return 0;
}

/* --- satellite and system manager --- */

uint32_t satmgr_if_is_pod_port(uint32_t if_index) {
  const platform_port_t *port = find_port(if_index);
  return port != NULL && port->is_pod != 0 ? 1 : 0;
}

uint32_t sysmgr_slc_get(void) {
  return current.partition;
}
