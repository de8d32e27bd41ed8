// Exports the cached parameters of a scope as a TLV array for the peer.

#include "cache/store.h"
#include "draimiofaf/cache.h"
#include "foundation/runtime.h"

using namespace mcec;

namespace {

uint32_t array_size(const cache::CacheScope &scope) {
  uint32_t size = STP_MCEC_TLV_ARRAY_HDR_SIZE;
  for (const Parameter &parameter : scope.parameters) {
    const cache::Node key = cache::key_of(scope.if_index, parameter.type);
    stp_mcec_params_tlv_size_add(&key, &size);
  }
  return size;
}

}  // namespace

extern "C" uint32_t stp_mcec_type1_cfg_get_params(int32_t gbl, uint32_t if_index, void **out) {
  hist_log(here(), "type-1 cfg param get gbl=%d, ifi=0x%x\n", gbl, if_index);
  *out = nullptr;
  const cache::CacheScope scope = cache::scope_of(gbl, if_index);
  const uint32_t size = array_size(scope);
  hist_log(here(), "TLV array size %d\n", size);
  void *array = zalloc(STP_MCEC_LIB_MEM_tlv_array_1_t, size);
  if (array == nullptr) return STP_MCEC_RESULT_NO_BLOCK;
  for (const Parameter &parameter : scope.parameters) {
    const cache::Node key = cache::key_of(scope.if_index, parameter.type);
    stp_mcec_params_tlv_add(&key, array, size);
  }
  hist_log(here(), "num_tlvs = %d\n", tlv_count(array));
  *out = array;
  return 0;
}

extern "C" uint32_t stp_mcec_get_mcec_params_tlv_size(int32_t gbl, uint32_t if_index) {
  return array_size(cache::scope_of(gbl, if_index));
}

extern "C" void stp_mcec_params_tlv_size_add(const void *key, uint32_t *size) {
  hist_log(here(), "finding type %d", static_cast<const cache::Node *>(key)->type);
  const cache::Node *node = cache::find(*static_cast<const cache::Node *>(key));
  if (node == nullptr) return;
  hist_log(no_prefix, " found len=%d", node->len);
  *size += tlv_aligned_data_size_get(node->len);
}

extern "C" void stp_mcec_params_tlv_add(const void *key, void *array, uint32_t array_size) {
  const cache::Node *node = cache::find(*static_cast<const cache::Node *>(key));
  if (node == nullptr) return;
  hist_log(here(), "adding TLV type %d len %d\n", node->type, node->len);
  const uint32_t code = tlv_add(array, array_size, node->type, cache::value_of(*node));
  if (code != 0) log_failure(here(), "Failed (rc=0x%x, %s) to add tlv\n", code);
}
