// Extracts a type-1 update message: stores every parameter as received, and returns it.

#include <cstring>

#include "cache/store.h"
#include "draimiofaf/extract.h"
#include "foundation/catalogue.h"
#include "foundation/runtime.h"
#include "mts.h"

using namespace mcec;

namespace {

struct Header {
  uint32_t is_global;
  uint32_t if_index;
  uint32_t unused;
  uint32_t array_length;
};
static_assert(sizeof(Header) == STP_MCEC_TYPE1_UPD_HDR_SIZE);

using Record = mcecm_app_cmd_extract_info_t;

bool is_default(const Tlv &tlv) {
  const Parameter *parameter = find_parameter(tlv.type);
  return parameter != nullptr && is_default(*parameter, tlv.value);
}

uint32_t fail_no_memory(Step step, uint32_t result) {
  hist_log(step, "Failed malloc\n");
  return result;
}

// True if a value is inside the length that the header states for the array.
bool lies_within(Bytes array, Bytes value) {
  const auto start = reinterpret_cast<uintptr_t>(array.data());
  const auto at = reinterpret_cast<uintptr_t>(value.data());
  return at >= start && at - start <= array.size() && value.size() <= array.size() - (at - start);
}

}  // namespace

extern "C" uint32_t stp_mcec_param_extractor_from_stp_type1_upd(
    void *msg, uint8_t **tlv_array, uint32_t *num_extract_info, uint32_t *is_cmd,
    mcecm_app_cmd_extract_info_t **extract_info) {
  const auto *payload =
      static_cast<const uint8_t *>(mts_payload_get(static_cast<mts_msg_t *>(msg)));
  if (payload == nullptr) {
    hist_log(here(), "null payload\n");
    return STP_MCEC_ERR_INVALID_ARG;
  }
  const auto header = load<Header>(payload);
  if (header.array_length == 0) {
    hist_log(here(), "Invalid param len=%d\n", header.array_length);
    return STP_MCEC_ERR_INVALID_ARG;
  }
  const Bytes array{payload + sizeof header, header.array_length};
  Walk walk = walk_over(array.data());
  if (walk.count == 0) return STP_MCEC_ERR_INVALID_ARG;

  Block<Record> records(static_cast<Record *>(zalloc_records(
      STP_MCEC_LIB_MEM_mcecm_app_cmd7_extract_info_t, 0, walk.count, sizeof(Record))));
  *extract_info = nullptr;
  if (!records) return fail_no_memory(here(), STP_MCEC_RESULT_NO_BLOCK);
  Block<uint8_t> copy(
      static_cast<uint8_t *>(zalloc(STP_MCEC_LIB_MEM_tlv_array_8_t, header.array_length)));
  if (!copy) return fail_no_memory(here(), STP_MCEC_RESULT_NO_BLOCK);
  Record *record = *extract_info = records.release();
  *num_extract_info = walk.count;
  *is_cmd = 0;

  for (Tlv tlv; next(walk, tlv);) {
    if (!lies_within(array, tlv.value)) {
      return log_failure(here(), not_retrieved, STP_MCEC_ERR_INVALID_ARG);
    }
    hist_log(here(), "updating type=%d, len=%zu (is_default=%d)\n", tlv.type, tlv.value.size(),
             is_default(tlv) ? 1 : 0);
    if (cache::put(header.if_index, tlv.type, tlv.value).node == nullptr) {
      return fail_no_memory(here(), STP_MCEC_ERR_NO_MEMORY);
    }
    *record++ = {
        .type = tlv.type, .valid = 1, .is_global = header.is_global, .if_index = header.if_index};
  }
  if (walk.code != 0) return log_failure(here(), not_retrieved, walk.code);
  std::memcpy(copy.get(), array.data(), array.size());
  *tlv_array = copy.release();
  return 0;
}
