// The reset of the MST region: as far as name, revision and VLAN map are cached, they return to
// their defaults and are handed out.

#include <algorithm>
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
    .fills_records_last = true,
    .no_records = extract::Told::both,
};

// The defaults of all three parameters are zero bytes.
constexpr uint8_t zeros[std::ranges::max(mst_region, {}, &RegionParameter::length).length] = {};

}  // namespace

extern "C" uint32_t stp_mcec_extract_reset_mst_region_cfg(
    void *handle, uint32_t cmd_id, uint8_t **tlv_array, uint32_t *num_extract_info,
    uint32_t *is_cmd, mcecm_app_cmd_extract_info_t **extract_info) {
  hist_log(here(), "Reset MST Region Config\n");
  const auto request = receive(rules, handle, tlv_array, num_extract_info, is_cmd, extract_info);
  if (cmd_id != STP_MCEC_CMD_MST_REGION_RESET) {
    return extract::refuse_command(here(), request, cmd_id);
  }
  std::array<Tlv, std::size(mst_region)> entries;
  std::size_t count = 0;
  for (const RegionParameter &parameter : mst_region) {
    if (cache::find(0, parameter.type) == nullptr) continue;
    hist_log(here(), "Found avl node\n");
    hist_log(here(), {parameter.reset_line, "\n"});
    cache::put(0, parameter.type, {});
    entries[count++] = {parameter.type, Bytes(zeros).first(parameter.length)};
  }
  if (count == 0) return 0;
  return extract::hand_out(here(), request, stp_mcec_get_mst_region_cfg_tlv_payld_size(),
                           std::span(entries).first(count));
}
