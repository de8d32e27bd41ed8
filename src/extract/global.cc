// Sets loop guard, bridge assurance or MST simulate PVST of the switch: on or off.

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
  const char *log_word;  // simulate PVST is also logged as BA
};

constexpr Setting settings[] = {
    {STP_MCEC_CMD_GBL_LOOPGUARD, "Loopguard"},
    {STP_MCEC_CMD_GBL_BRIDGE_ASSURANCE, "BA"},
    {STP_MCEC_CMD_GBL_MST_SIMULATE_PVST, "BA"},
};

}  // namespace

extern "C" uint32_t stp_mcec_extract_gbl_params(void *handle, uint32_t cmd_id, uint8_t **tlv_array,
                                                uint32_t *num_extract_info, uint32_t *is_cmd,
                                                mcecm_app_cmd_extract_info_t **extract_info) {
  hist_log(here(), "extract gbl params\n");
  const auto request = receive(rules, handle, tlv_array, num_extract_info, is_cmd, extract_info);
  const uint32_t value = cmd_req_action_is_set(request.handle) != 0 ? 1 : 0;
  const Setting *setting = extract::find_command(settings, cmd_id);
  if (setting == nullptr) {
    return extract::reject_command(here(), request, cmd_id, "Invalid command ID %d");
  }
  hist_log(here(), "Global %s changed to %s\n", setting->log_word, value != 0 ? "True" : "False");
  return extract::set_word(here(), request, extract::parameter_set_by(cmd_id), value);
}
