// The reset of the MST region: as far as name, revision and VLAN map are cached, they return to
// their defaults and are handed out.

#include <array>

#include "cache/store.h"
#include "draimiofaf/cache.h"
#include "draimiofaf/extract.h"
#include "extract/request.h"
#include "foundation/catalogue.h"

using namespace mcec;

namespace {

constexpr extract::Rules rules = {
    .records = STP_MCEC_LIB_MEM_mcecm_app_cmd2_extract_info_t,
    .array = STP_MCEC_LIB_MEM_tlv_array_3_t,
    .logs_no_records = true,
    .array_comes_first = true,
};

// The defaults of all three parameters are zero bytes.
constexpr std::array<uint8_t, mst_region_map_entry_length> zeros{};

const char *reset_line(uint16_t type) {
  switch (type) {
    case STP_MCEC_TYPE1_MST_REGION_NAME:
      return "Default MST Region Config Name, deleting avl node";
    case STP_MCEC_TYPE1_MST_REGION_REVISION:
      return "Default MST Region Config Revision, deleting avl node";
    default:
      return "Default MST Region Config VI Map, deleting avl node";
  }
}

}  // namespace

extern "C" uint32_t stp_mcec_extract_reset_mst_region_cfg(
    void *handle, uint32_t cmd_id, uint8_t **tlv_array, uint32_t *num_extract_info,
    uint32_t *is_cmd, mcecm_app_cmd_extract_info_t **extract_info) {
  MCEC_LOG(__func__, "Reset MST Region Config\n");
  if (cmd_id != STP_MCEC_CMD_MST_REGION_RESET) {
    MCEC_LOG(__func__, "Invalid cmd id %d\n", cmd_id);
    return STP_MCEC_ERR_INVALID_ARG;
  }
  std::array<Tlv, std::size(mst_region_types)> entries;
  std::size_t count = 0;
  for (const uint16_t type : mst_region_types) {
    if (cache::find(0, type) == nullptr) continue;
    MCEC_LOG(__func__, "Found avl node\n");
    MCEC_LOG(__func__, "%s\n", reset_line(type));
    cache::put(0, type, {});
    entries[count++] = {type, Bytes(zeros).first(mst_region_entry_length(type))};
  }
  if (count == 0) return 0;
  return extract::hand_out({__func__, extract::Source::command, handle, tlv_array, num_extract_info,
                            is_cmd, extract_info},
                           rules, stp_mcec_get_mst_region_cfg_tlv_payld_size(),
                           std::span(entries).first(count));
}
