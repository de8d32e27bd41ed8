// Loop guard, bridge assurance and MST simulate PVST of the switch: on or off.

#include "cmd_req.h"
#include "draimiofaf/extract_port.h"
#include "extract/request.h"

using namespace mcec;

namespace {

constexpr extract::Rules rules = {
    .records = STP_MCEC_LIB_MEM_mcecm_app_cmd5_extract_info_t,
    .array = STP_MCEC_LIB_MEM_tlv_array_6_t,
};

struct Setting {
  uint32_t cmd_id;
  uint16_t type;
  const char *log_word;
};

constexpr Setting settings[] = {
    {STP_MCEC_CMD_GBL_LOOPGUARD, STP_MCEC_TYPE1_LOOP_GUARD, "Loopguard"},
    {STP_MCEC_CMD_GBL_BRIDGE_ASSURANCE, STP_MCEC_TYPE1_BRIDGE_ASSURANCE, "BA"},
    {STP_MCEC_CMD_GBL_MST_SIMULATE_PVST, STP_MCEC_TYPE1_GBL_MST_SIMULATE_PVST, "BA"},
};

const Setting *find_setting(uint32_t cmd_id) {
  for (const Setting &setting : settings) {
    if (setting.cmd_id == cmd_id) return &setting;
  }
  return nullptr;
}

}  // namespace

extern "C" uint32_t stp_mcec_extract_gbl_params(void *handle, uint32_t cmd_id, uint8_t **tlv_array,
                                                uint32_t *num_extract_info, uint32_t *is_cmd,
                                                mcecm_app_cmd_extract_info_t **extract_info) {
  MCEC_LOG(__func__, "extract gbl params\n");
  const uint32_t value = cmd_req_action_is_set(handle) != 0 ? 1 : 0;
  const Setting *setting = find_setting(cmd_id);
  if (setting == nullptr) {
    MCEC_LOG(__func__, "Invalid cmd id %d\n", cmd_id);
    cmd_rsp_send_nok(handle, 0, "Invalid command ID %d", cmd_id);
    return STP_MCEC_ERR_INVALID_ARG;
  }
  MCEC_LOG(__func__, "Global %s changed to %s\n", setting->log_word, value != 0 ? "True" : "False");
  return extract::set_word({__func__, handle, tlv_array, num_extract_info, is_cmd, extract_info},
                           rules, setting->type, value);
}
