// Sets the spanning-tree mode.

#include "draimiofaf/extract.h"
#include "extract/request.h"
#include "foundation/bitmap.h"
#include "mcecm.h"

using namespace mcec;

namespace {

constexpr extract::Rules rules = {
    .records = STP_MCEC_LIB_MEM_mcecm_app_cmd3_extract_info_t,
    .array = STP_MCEC_LIB_MEM_tlv_array_4_t,
    .replaced_line = "Found avl node",
    .added_line = "added avl node for stp mode",
    .logs_records_failure = true,
    .logs_array_failure = true,
};

// Returns the mode that the command sets; the default is Rapid-PVST.
uint32_t mode_of(const extract::Request &request) {
  uint32_t mode = STP_MCEC_STP_MODE_RAPID_PVST;
  if (const auto value = extract::attribute(request, STP_MCEC_ATTR_STP_MODE)) {
    mode = extract::word_of_attribute(*value).value_or(mode);
  }
  return cmd_req_action_is_del(request.handle) != 0 ? uint32_t{STP_MCEC_STP_MODE_RAPID_PVST} : mode;
}

}  // namespace

extern "C" uint32_t stp_mcec_extract_stp_mode_param(void *handle, uint32_t cmd_id,
                                                    uint8_t **tlv_array, uint32_t *num_extract_info,
                                                    uint32_t *is_cmd,
                                                    mcecm_app_cmd_extract_info_t **extract_info) {
  hist_log(here(), "Extract stp mode\n");
  const auto request = receive(rules, handle, tlv_array, num_extract_info, is_cmd, extract_info);
  if (cmd_id != STP_MCEC_CMD_STP_MODE) {
    return extract::reject_command(here(), request, cmd_id, "Invalid cmd id %d\n");
  }
  const uint32_t mode = mode_of(request);
  if (mode == STP_MCEC_STP_MODE_RAPID_PVST &&
      count(vlans_of(&mcec_stp_vlan_count)) > STP_MCEC_PVRST_MAX_USER_VLANS) {
    cmd_rsp_send_nok(request.handle, 0,
                     "PVRST mode is not supported when there are more than %d user VLANs "
                     "configured\n",
                     STP_MCEC_PVRST_MAX_USER_VLANS);
    return STP_MCEC_RESULT_PVRST_REFUSED;
  }
  hist_log(here(), "Changing to mode %d\n", mode);
  return extract::set_word(here(), request, STP_MCEC_TYPE1_STP_MODE, mode);
}
