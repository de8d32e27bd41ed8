// Sets a parameter on every port of the command's ranges that is a member of a multi-chassis port
// channel.

#include "draimiofaf/extract_port.h"
#include "extract/ports.h"
#include "extract/request.h"
#include "mcecm.h"
#include "satmgr.h"

using namespace mcec;

namespace {

constexpr extract::Rules rules = {
    .records = STP_MCEC_LIB_MEM_mcecm_app_cmd6_extract_info_t,
    .array = STP_MCEC_LIB_MEM_tlv_array_7_t,
    .replaced_line = "found avl node",
    .added_line = "created avl node",
    .logs_records_failure = true,
};

constexpr std::size_t range_list_header_size = 16;

// True for the host-interface ports of a pod on an internal channel, which are not compared. Only
// the first port of the command is tested.
bool is_for_internal_pod(const extract::RangeList &list) {
  if (list.count == 0) return false;
  const uint32_t if_index = list[0].first;
  uint32_t channel = 0;
  return satmgr_if_is_pod_port(if_index) != 0 && find_channel(if_index, channel) == 0 &&
         mcecm_api_is_internal_mcec(channel) != 0;
}

// Caches the value of each member and fills its record. Membership may have changed since the
// members were counted: fills no more records than there are. Returns the number of filled records,
// or empty if the command is rejected.
std::optional<std::size_t> set_members(Step step, const extract::Request &request,
                                       extract::Members &members, const Tlv &entry,
                                       std::span<extract::Record> records) {
  std::size_t filled = 0;
  while (next(members) && filled < records.size()) {
    hist_log(step, "port 0x%x is MCEC (ID %d)\n", members.if_index, members.channel);
    if (extract::put(step, request, members.if_index, entry.type, entry.value) == nullptr) {
      return std::nullopt;
    }
    records[filled++] = {
        .type = entry.type, .valid = 1, .is_global = 0, .if_index = members.if_index};
  }
  return filled;
}

}  // namespace

extern "C" uint32_t stp_mcec_extract_if_params(void *handle, uint32_t cmd_id, uint8_t **tlv_array,
                                               uint32_t *num_extract_info, uint32_t *is_cmd,
                                               mcecm_app_cmd_extract_info_t **extract_info) {
  hist_log(here(), "extract interface params\n");
  const auto request = receive(rules, handle, tlv_array, num_extract_info, is_cmd, extract_info);
  uint32_t value = 0;
  uint16_t type = 0;
  uint32_t is_del = 0;
  if (const uint32_t result = stp_mcec_extract_if_param_val(handle, cmd_id, &value, &type, &is_del);
      result != 0) {
    cmd_rsp_send_nok(request.handle, 0, "internal error: Failed to get param val\n");
    return result;
  }
  hist_log(here(), "param_val=%d, param_type=%d\n", value, type);

  const auto list = extract::range_list(request, STP_MCEC_ATTR_IFINDEX, range_list_header_size);
  if (!list) {
    cmd_rsp_send_nok(request.handle, 0, "internal error: Failed to get IFINDEX");
    return STP_MCEC_ERR_INVALID_ARG;
  }
  if (is_for_internal_pod(*list)) {
    hist_log(no_prefix, "No Type-1 checks for HIF ports");
    return 0;
  }

  extract::Members counted{.list = *list};
  uint32_t count = 0;
  while (next(counted)) ++count;
  hist_log(here(), "total_if_count=%d\n", count);
  if (count == 0) return 0;
  extract::Record *records = extract::new_records(here(), request, count);
  if (records == nullptr) return STP_MCEC_RESULT_NO_BLOCK;
  extract::set_record_count(request, count);

  const Word word = to_network(value);
  const Tlv entry{type, word};
  extract::Members members{.list = *list, .membership = counted.membership};
  const auto filled = set_members(here(), request, members, entry, {records, count});
  if (!filled) return STP_MCEC_ERR_NO_MEMORY;
  if (*filled == 0) {
    // Returns no array. The last membership query determines the result: an error if the ports have
    // left their channels. If no port was left to query, the result of the last query of the count
    // is used.
    *tlv_array = nullptr;
    return members.membership;
  }
  const uint32_t size = extract::array_size(word.size());
  return return_array(here(), request, extract::new_array(here(), request, size), size,
                      {&entry, 1});
}
