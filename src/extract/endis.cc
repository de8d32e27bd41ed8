// Enables or disables spanning tree on a list of VLANs. The parameter is the set of disabled VLANs.

#include <utility>

#include "cache/store.h"
#include "draimiofaf/extract.h"
#include "extract/request.h"
#include "foundation/bitmap.h"

using namespace mcec;

namespace {

constexpr extract::Rules rules = {
    .records = STP_MCEC_LIB_MEM_mcecm_app_cmd1_extract_info_t,
    .array = STP_MCEC_LIB_MEM_tlv_array_2_t,
    .added_line = "added avl node for disable STP",
};

constexpr std::size_t vlan_list_header_size = 8;

VlanSet vlans_of_list(const extract::RangeList &list) {
  VlanSet vlans{};
  for (uint32_t i = 0; i < list.count; ++i) add_range(vlans, list[i].first, list[i].last);
  return vlans;
}

}  // namespace

extern "C" uint32_t stp_mcec_extract_stp_endis_param(void *handle, uint32_t cmd_id,
                                                     uint8_t **tlv_array,
                                                     uint32_t *num_extract_info, uint32_t *is_cmd,
                                                     mcecm_app_cmd_extract_info_t **extract_info) {
  hist_log(here(), "extract enable/disable STP\n");
  const auto request = receive(rules, handle, tlv_array, num_extract_info, is_cmd, extract_info);
  if (cmd_id != STP_MCEC_CMD_STP_ENDIS) {
    return extract::reject_command(here(), request, cmd_id, "Invalid Command ID %d");
  }
  const auto list = extract::range_list(request, STP_MCEC_ATTR_VLAN_LIST, vlan_list_header_size);
  if (!list) {
    cmd_rsp_send_nok(request.handle, 0, "internal error: Failed to get vlan");
    hist_log(here(), "Invalid arg\n");
    return STP_MCEC_ERR_INVALID_ARG;
  }
  const VlanSet vlans = vlans_of_list(*list);
  const bool enable = cmd_req_action_is_set(request.handle) != 0;
  hist_log(here(), "%s STP on vlans %s\n", enable ? "Enable" : "Disable", range_text(vlans));

  const cache::Node *cached = cache::find(0, STP_MCEC_TYPE1_STP_ENDIS);
  bmp4096_t record{swap_to_network(uint32_t{sizeof record.bmp}), {}};
  const std::span block{reinterpret_cast<uint8_t *>(&record), sizeof record};
  if (cached != nullptr) fill(block, cache::value_of(*cached));
  VlanSet disabled = vlans_of(&record);
  if (cached != nullptr) hist_log(here(), "Found avl node vlans: %s\n", range_text(disabled));
  for (std::size_t i = 0; i < vlans.size(); ++i) {
    disabled[i] = enable ? disabled[i] & ~vlans[i] : disabled[i] | vlans[i];
  }
  store_vlans(&record, disabled);

  const cache::Node *node = extract::put(here(), request, 0, STP_MCEC_TYPE1_STP_ENDIS, block);
  if (node == nullptr) return STP_MCEC_ERR_NO_MEMORY;
  const Tlv entry{STP_MCEC_TYPE1_STP_ENDIS, cache::value_of(*node)};
  if (cached != nullptr) hist_log(here(), "Update vlans: %s\n", range_text(disabled));
  extract::Record *records = extract::new_records(here(), request, 1);
  if (records == nullptr) return STP_MCEC_RESULT_NO_BLOCK;
  extract::fill_records(request, records, {&entry, 1});
  const uint32_t size = extract::array_size(sizeof record);
  Block<uint8_t> array = extract::new_array(here(), request, size);
  if (array) hist_log(here(), "Adding disabled stp TLV\n");
  return extract::return_array(here(), request, std::move(array), size, {&entry, 1});
}
