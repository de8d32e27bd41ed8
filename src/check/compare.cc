#include "check/compare.h"

#include "syserr.h"

namespace mcec::check {

Ended missing_array(Step step, const void *local, const void *remote) {
  if (local != nullptr && remote != nullptr) return go_on;
  if (local == remote) {
    hist_log(step, "type-1 compat check invalid args\n");
    return STP_MCEC_ERR_INVALID_ARG;
  }
  hist_log(step, "type-1 compat check failed %s\n",
           local == nullptr ? "Local param is Null" : "Remote Param is Null");
  return STP_MCEC_ERR_TYPE1_PARAM_NULL;
}

uint32_t log_unread(Step step, uint32_t code) {
  hist_log(step, "failed (rc=0x%x, %s) get_next_tlv\n", code, syserr2str(code));
  return code;
}

const Parameter *find_compared(Compared compared, uint16_t type) {
  const Parameter *parameter = find_parameter(type);
  return parameter != nullptr && parameter->compared == compared ? parameter : nullptr;
}

Ended find_at_peer(Step step, const void *remote, uint16_t type, Tlv &found) {
  const uint32_t code = tlv_find(remote, type, found);
  if (code == 0) return go_on;
  log_unread(step, code);
  return STP_MCEC_ERR_FAILURE;
}

bool agree(Bytes local, Bytes remote) {
  return local.size() <= remote.size() && std::equal(local.begin(), local.end(), remote.begin());
}

uint32_t mismatch(Step step, const Parameter &parameter) {
  hist_log(step, "%d type-1 compat check failed\n", parameter.type);
  return parameter.mismatch;
}

Ended compare(Step step, Compared compared, const Tlv &local, const void *remote,
              bool on_pod_port) {
  const Parameter *parameter = find_compared(compared, local.type);
  if (parameter == nullptr) return go_on;
  Tlv peer{};
  if (const Ended absent = find_at_peer(step, remote, local.type, peer)) return absent;
  if (agree(local.value, peer.value)) return go_on;

  const uint32_t local_word = word_of(local.value);
  const uint32_t peer_word = word_of(peer.value);
  if (is_word(parameter->form)) {
    hist_log(step, "type-1 compat check failed type=%d, len=%zu, lcl_value=%d, rmt_value=%d\n",
             local.type, local.value.size(), local_word, peer_word);
  } else if (parameter->form == Form::text) {
    hist_log(step, "type-1 compat check failed type=%d, len=%zu, lcl_value=%.*s, rmt_value=%.*s\n",
             local.type, local.value.size(), text_length(local.value), chars_of(local.value),
             text_length(peer.value), chars_of(peer.value));
  }
  if (on_pod_port && parameter->on_pod_ports == OnPodPorts::is_passed_over) {
    hist_log(step, "local port type %d remote port type %d type-1 compat check ignored\n",
             local_word, peer_word);
    return go_on;
  }
  return mismatch(step, *parameter);
}

}  // namespace mcec::check
