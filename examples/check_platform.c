/* Fixtures of draimiofaf-platform-check for the platform in platform/. */
#include <draimiofaf/platform/mcecm.h>
#include <string.h>

#include "platform.h"
#include "platform_check.h"

const platform_check_skip_t platform_check_skips[] = {
    {"tlv.forged-size", "the readers do not know how much memory an array has"},
    {NULL, NULL},
};

const platform_check_object_t platform_check_objects[] = {
    {"*", "libexample_platform.so*"},
    {NULL, NULL},
};

const platform_check_switch_t *platform_check_set_up(const platform_check_switch_t *wanted) {
  static platform_port_t ports[8];
  for (size_t i = 0; i < wanted->port_count; ++i) {
    const platform_check_port_t *port = &wanted->ports[i];
    ports[i] =
        (platform_port_t){port->if_index,   port->type,       port->is_pod,
                          port->has_record, port->layer_mode, {port->record[0], port->record[1]}};
  }
  const platform_switch_t tables = {ports, wanted->port_count, &wanted->internal_channel,
                                    1,     wanted->has_trunk,  wanted->partition};
  platform_set_switch(&tables);
  memset(mcec_stp_vlan_count.bmp, 0, sizeof mcec_stp_vlan_count.bmp);
  for (uint32_t vlan = wanted->first_user_vlan; vlan <= wanted->last_user_vlan; ++vlan) {
    mcec_stp_vlan_count.bmp[vlan / 8] |= (uint8_t)(0x80 >> vlan % 8);
  }
  return wanted;
}

mts_msg_t *platform_check_message(uint32_t opcode, const void *payload, uint32_t size) {
  return platform_message(opcode, payload, size);
}

mts_msg_t *platform_check_command(uint32_t cmd_id, uint32_t is_positive,
                                  const platform_check_attribute_t *attributes, size_t count) {
  platform_attribute_t copies[8];
  for (size_t i = 0; i < count; ++i) {
    copies[i] = (platform_attribute_t){attributes[i].id, attributes[i].length, attributes[i].value};
  }
  return platform_command(cmd_id, is_positive, copies, count);
}

const char *platform_check_answer(const mts_msg_t *msg) {
  return platform_answer(msg);
}

void platform_check_release(mts_msg_t *msg) {
  platform_message_free(msg);
}

const char *platform_check_last_line(void) {
  return platform_history_line(platform_history_count() - 1);
}
