// Filling the cache from outside: parameters that are not cached yet are added, none is changed.

#include "cache/scope.h"
#include "cache/store.h"
#include "draimiofaf/cache.h"
#include "foundation/runtime.h"
#include "mts.h"

using namespace mcec;

namespace {

uint32_t no_memory(Step step) {
  hist_log(step, "Failed malloc\n");
  return STP_MCEC_ERR_NO_MEMORY;
}

}  // namespace

extern "C" uint32_t stp_mcec_type1_cfg_cache_update(int32_t del, int32_t gbl, uint32_t if_index,
                                                    void *msg) {
  hist_log(here(), "update cache (delete=%s, gbl=%d, if_index=0x%x)\n", del != 0 ? "True" : "False",
           gbl, if_index);
  const cache::ScopeOf scope = cache::scope_of(gbl, if_index);
  if (del != 0) {
    for (const Parameter &parameter : scope.parameters) {
      stp_mcec_type1_cfg_delete_cache_node(parameter.type, scope.if_index);
    }
    return 0;
  }
  const auto *payload =
      static_cast<const uint8_t *>(mts_payload_get(static_cast<mts_msg_t *>(msg)));
  if (payload == nullptr) {
    hist_log(here(), "No Resp\n");
    return 0;
  }
  Walk walk = walk_over(payload + STP_MCEC_TYPE1_UPD_HDR_SIZE);
  hist_log(here(), "Num TLVs %d\n", walk.count);
  for (Tlv tlv; next(walk, tlv);) {
    if (cache::find(scope.if_index, tlv.type) != nullptr) {
      hist_log(here(), "Found avl node for type %d\n", tlv.type);
      continue;
    }
    hist_log(here(), "Add type %d to cache\n", tlv.type);
    if (cache::add(scope.if_index, tlv.type, tlv.value) == nullptr) return no_memory(here());
    hist_log(here(), "success add type %d len %zu to cache\n", tlv.type, tlv.value.size());
  }
  return walk.code == 0 ? 0 : log_unstored(here(), walk.code);
}

extern "C" uint32_t stp_mcec_type1_cfg_cache_rebuild(void *array, uint32_t, uint32_t if_index) {
  hist_log(here(), "rebuilding type-1 cache\n");
  if (array == nullptr) return STP_MCEC_ERR_INVALID_ARG;
  Walk walk = walk_over(array);
  hist_log(here(), "num_tlvs = %d\n", walk.count);
  for (Tlv tlv; next(walk, tlv);) {
    hist_log(here(), "type = %d, tlen=%zu\n", tlv.type, tlv.value.size());
    if (cache::find(if_index, tlv.type) != nullptr) continue;
    if (cache::add(if_index, tlv.type, tlv.value) == nullptr) return no_memory(here());
  }
  return walk.code == 0 ? 0 : log_unstored(here(), walk.code);
}
