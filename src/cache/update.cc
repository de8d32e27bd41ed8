// Filling the cache from outside: parameters that are not cached yet are added, none is changed.

#include "cache/scope.h"
#include "cache/store.h"
#include "draimiofaf/cache.h"
#include "foundation/runtime.h"
#include "mts.h"

using namespace mcec;

namespace {

// Add one entry, the line of a failure included.
Ended add(const char *operation, uint32_t if_index, const Tlv &tlv, int line = __builtin_LINE()) {
  if (cache::add(if_index, tlv.type, tlv.value) != nullptr) return go_on;
  MCEC_LOG_AT(line, operation, "Failed malloc\n");
  return STP_MCEC_ERR_NO_MEMORY;
}

}  // namespace

extern "C" uint32_t stp_mcec_type1_cfg_cache_update(int32_t del, int32_t gbl, uint32_t if_index,
                                                    void *msg) {
  MCEC_LOG(__func__, "update cache (delete=%s, gbl=%d, if_index=0x%x)\n",
           del != 0 ? "True" : "False", gbl, if_index);
  if (del != 0) {
    cache::for_each_of_scope(gbl, if_index, stp_mcec_type1_cfg_delete_cache_node);
    return 0;
  }
  const auto *payload = static_cast<const uint8_t *>(mts_payload_get(msg));
  if (payload == nullptr) {
    MCEC_LOG(__func__, "No Resp\n");
    return 0;
  }
  const void *array = payload + STP_MCEC_TYPE1_UPD_HDR_SIZE;
  const uint32_t count = tlv_count(array);
  MCEC_LOG(__func__, "Num TLVs %d\n", count);

  const char *const operation = __func__;
  const uint32_t index = gbl != 0 ? 0 : if_index;
  const Ended ended = walk(
      array, count, [=](uint32_t code) { return log_unstored(operation, code); },
      [=](const Tlv &tlv) -> Ended {
        if (cache::find(index, tlv.type) != nullptr) {
          MCEC_LOG(operation, "Found avl node for type %d\n", tlv.type);
          return go_on;
        }
        MCEC_LOG(operation, "Add type %d to cache\n", tlv.type);
        if (const Ended failed = add(operation, index, tlv)) return failed;
        MCEC_LOG(operation, "success add type %d len %zu to cache\n", tlv.type, tlv.value.size());
        return go_on;
      });
  return ended.value_or(0);
}

extern "C" uint32_t stp_mcec_type1_cfg_cache_rebuild(void *array, uint32_t, uint32_t if_index) {
  MCEC_LOG(__func__, "rebuilding type-1 cache\n");
  if (array == nullptr) return STP_MCEC_ERR_INVALID_ARG;
  const uint32_t count = tlv_count(array);
  MCEC_LOG(__func__, "num_tlvs = %d\n", count);

  const char *const operation = __func__;
  const Ended ended = walk(
      array, count, [=](uint32_t code) { return log_unstored(operation, code); },
      [=](const Tlv &tlv) -> Ended {
        MCEC_LOG(operation, "type = %d, tlen=%zu\n", tlv.type, tlv.value.size());
        if (cache::find(if_index, tlv.type) != nullptr) return go_on;
        return add(operation, if_index, tlv);
      });
  return ended.value_or(0);
}
