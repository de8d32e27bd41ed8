// The entry point of all extractions, and the dispatch of commands to their extractors.

#include <algorithm>

#include "draimiofaf/extract.h"
#include "draimiofaf/extract_port.h"
#include "extract/request.h"
#include "foundation/runtime.h"
#include "mts.h"

using namespace mcec;

namespace {

// A handle is on the stack, so its size is limited.
constexpr uint32_t max_handle_size = 64 * 1024;
constexpr std::size_t buffer_alignment = 16 * 8;  // in bits

using Extractor = uint32_t (*)(void *handle, uint32_t cmd_id, uint8_t **tlv_array,
                               uint32_t *num_extract_info, uint32_t *is_cmd,
                               mcecm_app_cmd_extract_info_t **extract_info);

enum class Gate { UNGATED, GATED };

struct Command {
  uint32_t cmd_id;
  Extractor extractor;
  Gate gate;
};

constexpr Command commands[] = {
#define MCEC_ROW(name, id, extractor, gate, ...) {id, extractor, Gate::gate},
    STP_MCEC_COMMANDS(MCEC_ROW)
#undef MCEC_ROW
    // Not in STP_MCEC_COMMANDS, but dispatched: the extractor rejects it as an invalid identifier.
    {62, stp_mcec_extract_gbl_params, Gate::GATED},
};

}  // namespace

extern "C" uint32_t stp_mcec_type1_cfg_param_extractor(
    void *msg, uint8_t **tlv_array, uint32_t *num_extract_info, uint32_t *is_cmd,
    mcecm_app_cmd_extract_info_t **extract_info) {
  hist_log(here(), "type-1 param extractor\n");
  auto *message = static_cast<mts_msg_t *>(msg);
  switch (mts_opc_get(message)) {
    case STP_MCEC_MTS_OPC_CMD_REQ: {
      const uint32_t size = cmd_req_handle_get_1(message);
      const bool fits = size <= max_handle_size;
      // On the stack, valid until the end of this block.
      void *buffer = __builtin_alloca_with_align(fits ? std::max(size, 1U) : 1, buffer_alignment);
      cmd_req_t *handle = fits ? cmd_req_handle_get_2(message, buffer) : nullptr;
      if (handle == nullptr) {
        hist_log(here(), "Failed to get CMI (TLV) request handle\n");
        return STP_MCEC_ERR_INVALID_ARG;
      }
      return stp_mcec_param_extractor_from_cli(msg, handle, tlv_array, num_extract_info, is_cmd,
                                               extract_info);
    }
    case STP_MCEC_MTS_OPC_TYPE1_UPD:
      hist_log(here(), "type-1 (%s) param extractor\n",
               mts_opc_name_get(STP_MCEC_MTS_OPC_TYPE1_UPD));
      return stp_mcec_param_extractor_from_stp_type1_upd(msg, tlv_array, num_extract_info, is_cmd,
                                                         extract_info);
    default:
      return STP_MCEC_ERR_INVALID_ARG;
  }
}

extern "C" uint32_t stp_mcec_param_extractor_from_cli(void *, void *handle, uint8_t **tlv_array,
                                                      uint32_t *num_extract_info, uint32_t *is_cmd,
                                                      mcecm_app_cmd_extract_info_t **extract_info) {
  hist_log(here(), "CLI extractor\n");
  auto *request = static_cast<cmd_req_t *>(handle);
  const uint32_t id = cmd_req_cmdId_getnext(request);
  *num_extract_info = 0;
  const Command *command = extract::find_command(commands, id);
  if (command == nullptr) return STP_MCEC_ERR_INVALID_ARG;
  if (command->gate == Gate::UNGATED || has_trunk()) {
    const uint32_t result =
        command->extractor(handle, id, tlv_array, num_extract_info, is_cmd, extract_info);
    if (result != 0) return result;
  }
  cmd_rsp_send_ok(request);
  return 0;
}
