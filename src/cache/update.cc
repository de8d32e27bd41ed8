// Adds received parameters to the cache. Parameters that are already cached do not change.

#include "cache/store.h"
#include "draimiofaf/cache.h"
#include "foundation/runtime.h"
#include "mts.h"

using namespace mcec;

namespace {

// Log lines: one per array, with the number of entries; the others per entry, with type and length.
// nullptr: not logged.
struct LogLines {
  const char *count;
  const char *read = nullptr;
  const char *found = nullptr;
  const char *add = nullptr;
  const char *added = nullptr;
};

constexpr LogLines update_lines = {.count = "Num TLVs %d\n",
                                   .found = "Found avl node for type %d\n",
                                   .add = "Add type %d to cache\n",
                                   .added = "success add type %d len %zu to cache\n"};
constexpr LogLines rebuild_lines = {.count = "num_tlvs = %d\n", .read = "type = %d, tlen=%zu\n"};

void log_entry(Step step, const char *line, const Tlv &tlv) {
  if (line != nullptr) hist_log(step, line, tlv.type, tlv.value.size());
}

uint32_t add_entries(Step step, const LogLines &lines, const void *array, uint32_t if_index) {
  Walk walk = walk_over(array);
  hist_log(step, lines.count, walk.count);
  for (Tlv tlv; next(walk, tlv);) {
    log_entry(step, lines.read, tlv);
    if (cache::find(if_index, tlv.type) != nullptr) {
      log_entry(step, lines.found, tlv);
      continue;
    }
    log_entry(step, lines.add, tlv);
    if (cache::add(if_index, tlv.type, tlv.value) == nullptr) {
      hist_log(step, "Failed malloc\n");
      return STP_MCEC_ERR_NO_MEMORY;
    }
    log_entry(step, lines.added, tlv);
  }
  return walk.code == 0 ? 0 : log_failure(step, not_retrieved, walk.code);
}

}  // namespace

extern "C" uint32_t stp_mcec_type1_cfg_cache_update(int32_t del, int32_t gbl, uint32_t if_index,
                                                    void *msg) {
  hist_log(here(), "update cache (delete=%s, gbl=%d, if_index=0x%x)\n", del != 0 ? "True" : "False",
           gbl, if_index);
  const cache::CacheScope scope = cache::scope_of(gbl, if_index);
  if (del != 0) {
    for (const Parameter &parameter : scope.parameters) {
      cache::remove(scope.if_index, parameter.type);
    }
    return 0;
  }
  const auto *payload =
      static_cast<const uint8_t *>(mts_payload_get(static_cast<mts_msg_t *>(msg)));
  if (payload == nullptr) {
    hist_log(here(), "No Resp\n");
    return 0;
  }
  return add_entries(here(), update_lines, payload + STP_MCEC_TYPE1_UPD_HDR_SIZE, scope.if_index);
}

extern "C" uint32_t stp_mcec_type1_cfg_cache_rebuild(void *array, uint32_t, uint32_t if_index) {
  hist_log(here(), "rebuilding type-1 cache\n");
  if (array == nullptr) return STP_MCEC_ERR_INVALID_ARG;
  return add_entries(here(), rebuild_lines, array, if_index);
}
