#include "mts.h"

#include "requests.h"
#include "state.h"

using standin::Message;

uint32_t mts_opc_get(const mts_msg_t *msg) {
  return static_cast<const Message *>(msg)->opcode;
}

const char *mts_opc_name_get(uint32_t opcode) {
  switch (opcode) {
    case 7682:
      return "MTS_OPC_CMD_REQ";
    case 0x1A00B:
      return "MTS_OPC_STP_TYPE1_UPD";
    default:
      return "MTS_OPC_UNKNOWN";
  }
}

void *mts_payload_get(mts_msg_t *msg) {
  auto &payload = static_cast<Message *>(msg)->payload;
  return payload ? payload->data() : nullptr;
}

void *standin_message(uint32_t opcode, const void *payload, size_t size) {
  auto *message = new Message{opcode, std::nullopt};
  if (payload != nullptr) {
    const auto *bytes = static_cast<const uint8_t *>(payload);
    // A payload has an address even when it is empty.
    message->payload.emplace().reserve(size + 1);
    message->payload->assign(bytes, bytes + size);
  }
  return message;
}

void standin_message_free(void *msg) {
  delete static_cast<Message *>(msg);
}
