/* Fixtures of draimiofaf-platform-check for the stand-in. */
#include <draimiofaf/standin/standin.h>

#include "platform_check.h"

const platform_check_skip_t platform_check_skips[] = {
    {NULL, NULL},
};

const platform_check_object_t platform_check_objects[] = {
    {"*", "libdraimiofaf_standin.so*"},
    {NULL, NULL},
};

const platform_check_switch_t *platform_check_set_up(const platform_check_switch_t *wanted) {
  standin_reset();
  for (size_t i = 0; i < wanted->port_count; ++i) {
    const platform_check_port_t *port = &wanted->ports[i];
    standin_add_ports(port->if_index, port->if_index, port->type, port->layer_mode);
    standin_set_pod_port(port->if_index, port->is_pod);
    if (port->has_record == 0) continue;
    if (port->record[0] != 0) {
      standin_set_member(port->if_index, port->record[1]);
    } else {
      standin_set_void_member(port->if_index, port->record[1]);
    }
  }
  standin_set_internal(wanted->internal_channel, 1);
  standin_add_user_vlans(wanted->first_user_vlan, wanted->last_user_vlan);
  standin_set_trunk(wanted->has_trunk);
  standin_set_partition(wanted->partition);
  return wanted;
}

mts_msg_t *platform_check_message(uint32_t opcode, const void *payload, uint32_t size) {
  return standin_message(opcode, payload, size);
}

mts_msg_t *platform_check_command(uint32_t cmd_id, uint32_t is_positive,
                                  const platform_check_attribute_t *attributes, size_t count) {
  standin_attribute_t copies[8];
  for (size_t i = 0; i < count; ++i) {
    copies[i] = (standin_attribute_t){attributes[i].id, attributes[i].length, attributes[i].value};
  }
  return standin_command(cmd_id, is_positive, copies, (uint32_t)count);
}

/* The stand-in keeps all answers in order: returns the latest. */
const char *platform_check_answer(const mts_msg_t *msg) {
  (void)msg;
  const uint32_t count = standin_answer_count();
  return count > 0 ? standin_answer_at(count - 1).text : NULL;
}

void platform_check_release(mts_msg_t *msg) {
  standin_message_free(msg);
}

const char *platform_check_last_line(void) {
  const uint32_t count = standin_history_count();
  return count > 0 ? standin_history_line(count - 1) : NULL;
}
