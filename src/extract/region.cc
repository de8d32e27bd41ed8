// Resets the MST region: sets name, revision and VLAN map to their defaults if they are cached.

#include <array>
#include <utility>

#include "cache/store.h"
#include "draimiofaf/cache.h"
#include "draimiofaf/extract.h"
#include "extract/request.h"

using namespace mcec;

namespace {

constexpr extract::Rules rules = {
    .records = STP_MCEC_LIB_MEM_mcecm_app_cmd2_extract_info_t,
    .array = STP_MCEC_LIB_MEM_tlv_array_3_t,
    .logs_records_failure = true,
};

// In the order of the returned entries. The default is an entry of `length` zero bytes, which is
// shorter than a cached VLAN map.
struct Reset {
  uint16_t type;
  uint16_t length;
  const char *what;
};

constexpr Reset resets[] = {
    {STP_MCEC_TYPE1_MST_REGION_NAME, 32, "Name"},
    {STP_MCEC_TYPE1_MST_REGION_REVISION, 4, "Revision"},
    {STP_MCEC_TYPE1_MST_REGION_VI_MAP, 80, "VI Map"},
};

constexpr uint8_t zeros[std::ranges::max(resets, {}, &Reset::length).length] = {};

// The size for all three, even if not all are cached.
uint32_t array_size() {
  uint32_t size = STP_MCEC_TLV_ARRAY_HDR_SIZE;
  for (const Reset &reset : resets) size += tlv_aligned_data_size_get(reset.length);
  return size;
}

}  // namespace

extern "C" uint32_t stp_mcec_get_mst_region_cfg_tlv_payld_size() {
  return array_size();
}

extern "C" uint32_t stp_mcec_extract_reset_mst_region_cfg(
    void *handle, uint32_t cmd_id, uint8_t **tlv_array, uint32_t *num_extract_info,
    uint32_t *is_cmd, mcecm_app_cmd_extract_info_t **extract_info) {
  hist_log(here(), "Reset MST Region Config\n");
  const auto request = receive(rules, handle, tlv_array, num_extract_info, is_cmd, extract_info);
  if (cmd_id != STP_MCEC_CMD_MST_REGION_RESET) {
    hist_log(here(), "Invalid cmd id %d\n", cmd_id);  // not answered
    return STP_MCEC_ERR_INVALID_ARG;
  }
  std::array<Tlv, std::size(resets)> all;
  std::size_t count = 0;
  for (const Reset &reset : resets) {
    if (cache::find(0, reset.type) == nullptr) continue;
    hist_log(here(), "Found avl node\n");
    hist_log(here(), "Default MST Region Config %s, deleting avl node\n", reset.what);
    cache::put(0, reset.type, {});
    all[count++] = {reset.type, Bytes(zeros).first(reset.length)};
  }
  if (count == 0) return 0;
  const auto entries = std::span(all).first(count);
  extract::Record *records =
      extract::new_records(here(), request, static_cast<uint32_t>(entries.size()));
  if (records == nullptr) return STP_MCEC_RESULT_NO_BLOCK;
  const uint32_t size = array_size();
  Block<uint8_t> array = extract::new_array(here(), request, size);
  if (array) extract::fill_records(request, records, entries);
  return extract::return_array(here(), request, std::move(array), size, entries);
}
