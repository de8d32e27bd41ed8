#include "check/compare.h"

#include "draimiofaf/foundation.h"
#include "syserr.h"

namespace mcec::check {

Ended missing_array(const char *operation, const void *local, const void *remote) {
  if (local != nullptr && remote != nullptr) return go_on;
  if (local == remote) {
    MCEC_LOG(operation, "type-1 compat check invalid args\n");
    return STP_MCEC_ERR_INVALID_ARG;
  }
  MCEC_LOG(operation, "type-1 compat check failed %s\n",
           local == nullptr ? "Local param is Null" : "Remote Param is Null");
  return STP_MCEC_ERR_TYPE1_PARAM_NULL;
}

uint32_t log_unread(const char *operation, uint32_t code, int line) {
  MCEC_LOG_AT(line, operation, "failed (rc=0x%x, %s) get_next_tlv\n", code, syserr2str(code));
  return code;
}

Ended find_at_peer(const char *operation, const void *remote, uint16_t type, Tlv &found) {
  const uint32_t code = tlv_find(remote, type, found);
  if (code == 0) return go_on;
  log_unread(operation, code);
  return STP_MCEC_ERR_FAILURE;
}

bool agree(Bytes local, Bytes remote) {
  return local.size() <= remote.size() && std::equal(local.begin(), local.end(), remote.begin());
}

uint32_t mismatch(const char *operation, uint16_t type) {
  MCEC_LOG(operation, "%d type-1 compat check failed\n", type);
  return stp_mcec_get_type1_cfg_compat_chk_errcode(type);
}

Ended compare_value(const char *operation, bool is_pod_hif, const Tlv &local, const void *remote) {
  Tlv peer{};
  if (const Ended absent = find_at_peer(operation, remote, local.type, peer)) return absent;
  if (agree(local.value, peer.value)) return go_on;

  const Form form = find_parameter(local.type)->form;
  const uint32_t local_word = word_of(local.value);
  const uint32_t peer_word = word_of(peer.value);
  if (is_word(form)) {
    MCEC_LOG(operation, "type-1 compat check failed type=%d, len=%zu, lcl_value=%d, rmt_value=%d\n",
             local.type, local.value.size(), local_word, peer_word);
  } else if (form == Form::text) {
    MCEC_LOG(operation,
             "type-1 compat check failed type=%d, len=%zu, lcl_value=%.*s, rmt_value=%.*s\n",
             local.type, local.value.size(), text_length(local.value), text_of(local.value),
             text_length(peer.value), text_of(peer.value));
  }
  if (local.type == STP_MCEC_TYPE1_IFI_PORT_TYPE && is_pod_hif) {
    MCEC_LOG(operation, "local port type %d remote port type %d type-1 compat check ignored\n",
             local_word, peer_word);
    return go_on;
  }
  return mismatch(operation, local.type);
}

}  // namespace mcec::check
