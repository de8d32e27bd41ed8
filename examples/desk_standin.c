#include <draimiofaf/standin/standin.h>
#include <draimiofaf/types.h>

#include "desk.h"

void desk_set_up(void) {
  standin_reset();
  standin_set_trunk(1);
}

mts_msg_t *desk_command(uint32_t cmd_id) {
  standin_answers_clear();
  return standin_command(cmd_id, 1, NULL, 0);
}

mts_msg_t *desk_update(const void *payload, uint32_t size) {
  return standin_message(STP_MCEC_MTS_OPC_TYPE1_UPD, payload, size);
}

void desk_release(mts_msg_t *msg) {
  standin_message_free(msg);
}

const char *desk_answer(const mts_msg_t *msg) {
  (void)msg;
  return standin_answer_count() > 0 ? standin_answer_at(0).text : NULL;
}
