#include "check/compare.h"

namespace mcec::check {

CheckResult missing_array(Step step, const void *local, const void *remote) {
  if (local != nullptr && remote != nullptr) return no_result;
  if (local == remote) {
    hist_log(step, "type-1 compat check invalid args\n");
    return STP_MCEC_ERR_INVALID_ARG;
  }
  hist_log(step, "type-1 compat check failed %s\n",
           local == nullptr ? "Local param is Null" : "Remote Param is Null");
  return STP_MCEC_ERR_TYPE1_PARAM_NULL;
}

const Parameter *find_compared(stp_mcec_compared compared, uint16_t type) {
  const Parameter *parameter = find_parameter(type);
  return parameter != nullptr && parameter->compared == compared ? parameter : nullptr;
}

CheckResult find_peer_value(Step step, const void *remote, uint16_t type, Tlv &found) {
  const uint32_t code = tlv_find(remote, type, found);
  if (code == 0) return no_result;
  log_failure(step, not_read, code);
  return STP_MCEC_ERR_FAILURE;
}

bool values_agree(Bytes local, Bytes remote) {
  return local.size() <= remote.size() && std::equal(local.begin(), local.end(), remote.begin());
}

uint32_t log_mismatch(Step step, const Parameter &parameter) {
  hist_log(step, "%d type-1 compat check failed\n", parameter.type);
  return parameter.mismatch;
}

CheckResult compare(Step step, stp_mcec_compared compared, const Tlv &local, const void *remote,
                    bool on_pod_port) {
  const Parameter *parameter = find_compared(compared, local.type);
  if (parameter == nullptr) return no_result;
  Tlv peer{};
  if (const CheckResult absent = find_peer_value(step, remote, local.type, peer)) return absent;
  if (values_agree(local.value, peer.value)) return no_result;

  const uint32_t local_word = word_of(local.value);
  const uint32_t peer_word = word_of(peer.value);
  if (is_word(parameter->kind)) {
    hist_log(step, "type-1 compat check failed type=%d, len=%zu, lcl_value=%d, rmt_value=%d\n",
             local.type, local.value.size(), local_word, peer_word);
  } else if (parameter->kind == STP_MCEC_KIND_TEXT) {
    const std::string_view local_text = text_of(local.value);
    const std::string_view peer_text = text_of(peer.value);
    hist_log(step, "type-1 compat check failed type=%d, len=%zu, lcl_value=%.*s, rmt_value=%.*s\n",
             local.type, local.value.size(), static_cast<int>(local_text.size()), local_text.data(),
             static_cast<int>(peer_text.size()), peer_text.data());
  }
  if (on_pod_port && !parameter->is_compared_on_pod) {
    hist_log(step, "local port type %d remote port type %d type-1 compat check ignored\n",
             local_word, peer_word);
    return no_result;
  }
  return log_mismatch(step, *parameter);
}

}  // namespace mcec::check
