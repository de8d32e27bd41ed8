// A type-1 update message: every parameter that it carries is stored as it comes, and handed out.

#include <cstring>
#include <utility>

#include "draimiofaf/extract.h"
#include "draimiofaf/foundation.h"
#include "extract/request.h"
#include "foundation/catalogue.h"
#include "mts.h"

using namespace mcec;

namespace {

constexpr extract::Rules rules = {
    .source = extract::Source::update_message,
    .records = STP_MCEC_LIB_MEM_mcecm_app_cmd7_extract_info_t,
    .array = STP_MCEC_LIB_MEM_tlv_array_8_t,
    .no_entry = extract::Told::reader,
    .no_records = extract::Told::reader,
    .no_array = extract::Told::reader,
};

// The header of the payload; the third word is not read.
struct Header {
  uint32_t is_global;
  uint32_t if_index;
  uint32_t unread;
  uint32_t array_length;
};
static_assert(sizeof(Header) == STP_MCEC_TYPE1_UPD_HDR_SIZE);

// The default test reads as far as the catalogue says, so a shorter value is not put to it.
bool is_default(const Tlv &tlv) {
  const Parameter *parameter = find_parameter(tlv.type);
  if (parameter == nullptr || tlv.value.size() < parameter->length) return false;
  return stp_mcec_type1_cfg_param_is_default(tlv.type, static_cast<uint32_t>(tlv.value.size()),
                                             const_cast<uint8_t *>(tlv.value.data())) != 0;
}

// Does a value lie within the length that the header gives the array?
bool lies_within(Bytes array, Bytes value) {
  const auto start = reinterpret_cast<uintptr_t>(array.data());
  const auto at = reinterpret_cast<uintptr_t>(value.data());
  return at >= start && at - start <= array.size() && value.size() <= array.size() - (at - start);
}

}  // namespace

extern "C" uint32_t stp_mcec_param_extractor_from_stp_type1_upd(
    void *msg, uint8_t **tlv_array, uint32_t *num_extract_info, uint32_t *is_cmd,
    mcecm_app_cmd_extract_info_t **extract_info) {
  const auto request = receive(rules, nullptr, tlv_array, num_extract_info, is_cmd, extract_info);
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

  extract::Record *record = extract::new_records(here(), request, walk.count);
  if (record == nullptr) return STP_MCEC_RESULT_NO_BLOCK;
  Block<uint8_t> copy = extract::new_array(here(), request, header.array_length);
  if (!copy) {
    const Block<extract::Record> taken_back(std::exchange(*extract_info, nullptr));
    return STP_MCEC_RESULT_NO_BLOCK;
  }
  extract::announce(request, walk.count);

  for (Tlv tlv; next(walk, tlv);) {
    if (!lies_within(array, tlv.value)) return log_unstored(here(), STP_MCEC_ERR_INVALID_ARG);
    hist_log(here(), "updating type=%d, len=%zu (is_default=%d)\n", tlv.type, tlv.value.size(),
             is_default(tlv) ? 1 : 0);
    if (extract::put(here(), request, header.if_index, tlv.type, tlv.value) == nullptr) {
      return STP_MCEC_ERR_NO_MEMORY;
    }
    *record++ = {tlv.type, 1, header.is_global, header.if_index};
  }
  if (walk.code != 0) return log_unstored(here(), walk.code);
  std::memcpy(copy.get(), array.data(), array.size());
  *tlv_array = copy.release();
  return 0;
}
