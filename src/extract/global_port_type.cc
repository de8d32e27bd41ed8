// Sets or clears one flag of the global port type.

#include "cache/store.h"
#include "draimiofaf/extract_port.h"
#include "extract/request.h"

using namespace mcec;

namespace {

constexpr extract::Rules rules = {
    .records = STP_MCEC_LIB_MEM_mcecm_app_cmd4_extract_info_t,
    .array = STP_MCEC_LIB_MEM_tlv_array_5_t,
};

struct Flag {
  uint32_t cmd_id;
  uint32_t flag;
  uint32_t excludes;  // cleared when the flag is set
};

constexpr Flag flags[] = {
    {STP_MCEC_CMD_GBL_EDGE, STP_MCEC_GBL_PORT_TYPE_EDGE, STP_MCEC_GBL_PORT_TYPE_NETWORK},
    {STP_MCEC_CMD_GBL_EDGE_BPDUGUARD, STP_MCEC_GBL_PORT_TYPE_EDGE_BPDUGUARD, 0},
    {STP_MCEC_CMD_GBL_EDGE_BPDUFILTER, STP_MCEC_GBL_PORT_TYPE_EDGE_BPDUFILTER, 0},
    {STP_MCEC_CMD_GBL_NETWORK, STP_MCEC_GBL_PORT_TYPE_NETWORK, STP_MCEC_GBL_PORT_TYPE_EDGE},
};

uint32_t apply_flag(uint32_t word, const Flag &flag, bool set) {
  word = set ? (word | flag.flag) & ~flag.excludes : word & ~flag.flag;
  const bool normal = (word & (STP_MCEC_GBL_PORT_TYPE_EDGE | STP_MCEC_GBL_PORT_TYPE_NETWORK)) == 0;
  const uint32_t normal_flag = STP_MCEC_GBL_PORT_TYPE_NORMAL;
  return normal ? word | normal_flag : word & ~normal_flag;
}

}  // namespace

extern "C" uint32_t stp_mcec_extract_gbl_port_type_param(
    void *handle, uint32_t cmd_id, uint8_t **tlv_array, uint32_t *num_extract_info,
    uint32_t *is_cmd, mcecm_app_cmd_extract_info_t **extract_info) {
  hist_log(here(), "extract gbl port type\n");
  const auto request = receive(rules, handle, tlv_array, num_extract_info, is_cmd, extract_info);
  const cache::Node *cached = cache::find(0, STP_MCEC_TYPE1_GBL_PORT_TYPE);
  uint32_t word = cached != nullptr ? word_of(cache::value_of(*cached)) : 0;
  hist_log(here(), "Global port type before change to 0x%x\n", word);
  const bool set = cmd_req_action_is_set(request.handle) != 0;
  const Flag *flag = extract::find_command(flags, cmd_id);
  if (flag == nullptr) {
    return extract::reject_command(here(), request, cmd_id, "Invalid command ID %d");
  }
  word = apply_flag(word, *flag, set);
  hist_log(here(), "Global port type changed to 0x%x\n", word);
  return extract::set_word(here(), request, STP_MCEC_TYPE1_GBL_PORT_TYPE, word);
}
