#include <draimiofaf/types.h>
#include <stddef.h>

#include "desk.h"
#include "platform.h"

void desk_set_up(void) {
  static const platform_switch_t with_trunk = {.has_trunk = 1};
  platform_set_switch(&with_trunk);
}

mts_msg_t *desk_command(uint32_t cmd_id) {
  return platform_command(cmd_id, 1, NULL, 0);
}

mts_msg_t *desk_update(const void *payload, uint32_t size) {
  return platform_message(STP_MCEC_MTS_OPC_TYPE1_UPD, payload, size);
}

void desk_release(mts_msg_t *msg) {
  platform_message_free(msg);
}

const char *desk_answer(const mts_msg_t *msg) {
  return platform_answer(msg);
}
