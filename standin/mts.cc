#include "mts.h"

#include <cstring>

#include "extents.h"
#include "requests.h"
#include "state.h"

uint32_t mts_opc_get(const mts_msg_t *msg) {
  return msg->opcode;
}

const char *mts_opc_name_get(uint32_t opcode) {
  switch (opcode) {
    case STP_MCEC_MTS_OPC_CMD_REQ:
      return "MTS_OPC_CMD_REQ";
    case STP_MCEC_MTS_OPC_TYPE1_UPD:
      return "MTS_OPC_STP_TYPE1_UPD";
    default:
      return "MTS_OPC_UNKNOWN";
  }
}

void *mts_payload_get(mts_msg_t *msg) {
  return msg->payload();
}

void *standin_message(uint32_t opcode, const void *payload, size_t size) {
  auto *message = new mts_msg_t{.opcode = opcode, .buffer = nullptr};
  if (payload != nullptr) {
    message->buffer = std::make_unique<uint8_t[]>(size + 1);
    message->size = size;
    if (size > 0) std::memcpy(message->payload(), payload, size);
    standin::note_extent(message->payload(), size);
  }
  return message;
}

void standin_message_free(void *msg) {
  auto *message = static_cast<mts_msg_t *>(msg);
  standin::forget_extent(message->payload());
  delete message;
}
