// The settings of interfaces: one value for every port of the command's ranges that is a member of
// a multi-chassis port channel.

#include "cmd_req.h"
#include "draimiofaf/extract_port.h"
#include "draimiofaf/foundation.h"
#include "extract/request.h"
#include "if_index.h"
#include "mcecm.h"
#include "satmgr.h"

using namespace mcec;

namespace {

constexpr extract::Rules rules = {
    .records = STP_MCEC_LIB_MEM_mcecm_app_cmd6_extract_info_t,
    .array = STP_MCEC_LIB_MEM_tlv_array_7_t,
    .replaced_line = "found avl node",
    .added_line = "created avl node",
    .logs_no_records = true,
};

constexpr std::size_t range_list_header_size = 16;
constexpr uint32_t no_more_attributes = 0xFFFFFFFF;

struct AttributeValue {
  uint32_t attribute;
  uint32_t parameter;
};

// From an attribute's word to the parameter's value.
constexpr AttributeValue port_types[] = {{STP_MCEC_IF_PORT_MODE_NORMAL, 2},
                                         {STP_MCEC_IF_PORT_MODE_EDGE_TRUNK, 3},
                                         {STP_MCEC_IF_PORT_MODE_NETWORK, 4},
                                         {STP_MCEC_IF_PORT_MODE_EDGE, 1}};
constexpr AttributeValue guards[] = {
    {STP_MCEC_IF_GUARD_ROOT, 1}, {STP_MCEC_IF_GUARD_LOOP, 2}, {STP_MCEC_IF_GUARD_NONE, 3}};

struct Setting {
  uint32_t cmd_id;
  uint16_t type;
  // The value of the positive form without an attribute; the negating form is always 0.
  uint32_t positive;
  // The attributes that say more, if any.
  uint32_t attribute_ids[2] = {};
  // What their word may be; without any, their presence alone gives `present`.
  std::span<const AttributeValue> values = {};
  const char *unknown_value = nullptr;
  uint32_t present = 0;
};

constexpr Setting settings[] = {
    {.cmd_id = STP_MCEC_CMD_IF_PORT_MODE,
     .type = STP_MCEC_TYPE1_IFI_PORT_TYPE,
     .positive = 1,
     .attribute_ids = {STP_MCEC_ATTR_IF_PORT_MODE, STP_MCEC_ATTR_IF_PORT_MODE_2},
     .values = port_types,
     .unknown_value = "Portfast mode unknown!!"},
    {.cmd_id = STP_MCEC_CMD_IF_PORT_TYPE,
     .type = STP_MCEC_TYPE1_IFI_PORT_TYPE,
     .positive = 1,
     .attribute_ids = {STP_MCEC_ATTR_IF_PORT_TYPE, STP_MCEC_ATTR_IF_PORT_TYPE_2},
     .values = port_types,
     .unknown_value = "Portfast mode unknown!!"},
    {.cmd_id = STP_MCEC_CMD_IF_EDGE_TRUNK, .type = STP_MCEC_TYPE1_IFI_PORT_TYPE, .positive = 3},
    {.cmd_id = STP_MCEC_CMD_IF_GUARD,
     .type = STP_MCEC_TYPE1_IFI_PORT_GUARD,
     .positive = 0,
     .attribute_ids = {STP_MCEC_ATTR_IF_GUARD, STP_MCEC_ATTR_IF_GUARD_2},
     .values = guards,
     .unknown_value = "guard type unknown!!"},
    {.cmd_id = STP_MCEC_CMD_IF_MST_SIMULATE_PVST,
     .type = STP_MCEC_TYPE1_IFI_MST_SIMULATE_PVST,
     .positive = 1,
     .attribute_ids = {STP_MCEC_ATTR_IF_MST_SIMULATE_PVST, STP_MCEC_ATTR_IF_MST_SIMULATE_PVST_2},
     .present = 2},
};

// Take one attribute into the value; false: the command must be refused. An attribute that is too
// short to hold a word counts as absent.
bool take_attribute(const Setting &setting, Bytes attribute, uint32_t &value) {
  if (setting.values.empty()) {
    value = setting.present;
    return true;
  }
  const std::optional<uint32_t> word = extract::word_of_attribute(attribute);
  if (!word) return true;
  for (const AttributeValue &known : setting.values) {
    if (known.attribute == *word) {
      value = known.parameter;
      return true;
    }
  }
  return false;
}

// The value of the positive form; nothing when an attribute says something unknown. Of several
// attributes the last decides.
std::optional<uint32_t> positive_value(const Setting &setting, void *handle) {
  uint32_t value = setting.positive;
  if (setting.attribute_ids[0] == 0) return value;
  for (;;) {
    void *attribute = nullptr;
    uint32_t length = 0;
    const uint32_t id = cmd_req_attr_getnext(handle, &attribute, &length);
    if (id == no_more_attributes) return value;
    if (id != setting.attribute_ids[0] && id != setting.attribute_ids[1]) continue;
    const Bytes bytes{static_cast<const uint8_t *>(attribute), length};
    if (!take_attribute(setting, bytes, value)) return std::nullopt;
  }
}

// The ports of the ranges, in order, asked from the platform one by one.
// each(if_index) returns false to end the walk.
template <class Each>
void for_each_port(const extract::RangeList &list, Each each) {
  for (uint32_t i = 0; i < list.count; ++i) {
    const extract::Range range = list[i];
    uint32_t ports = 0;
    if_index_get_num_ports_in_if_index_range(range.first, range.last, &ports);
    for (uint32_t position = 0; position < ports; ++position) {
      uint32_t if_index = 0;
      if_index_get_if_index_in_range(range.first, range.last, &if_index, position);
      if (!each(if_index)) return;
    }
  }
}

// The host-interface ports of a pod on an internal channel are not compared; the first port stands
// for all of the command.
bool is_internal_pod_port(uint32_t if_index) {
  uint32_t mcec_id = 0;
  return satmgr_if_is_pod_port(if_index) != 0 &&
         stp_mcec_lib_get_mcec_id(if_index, &mcec_id) == 0 &&
         mcecm_api_is_internal_mcec(mcec_id) != 0;
}

}  // namespace

extern "C" uint32_t stp_mcec_extract_if_param_val(void *handle, uint32_t cmd_id, uint32_t *value,
                                                  uint16_t *type, uint32_t *is_del) {
  MCEC_LOG(__func__, "extract interface params\n");
  const Setting *setting = extract::find_command(settings, cmd_id);
  if (setting == nullptr) return STP_MCEC_ERR_INVALID_ARG;
  uint32_t set = 0;
  if (cmd_req_action_is_set(handle) != 0) {
    const std::optional<uint32_t> positive = positive_value(*setting, handle);
    if (!positive) {
      hist_log("%s(): %s\n", __func__, setting->unknown_value);
      return STP_MCEC_ERR_INVALID_ARG;
    }
    set = *positive;
  }
  *value = set;
  *type = setting->type;
  if (cmd_req_action_is_del(handle) != 0) *is_del = 1;
  return 0;
}

extern "C" uint32_t stp_mcec_extract_if_params(void *handle, uint32_t cmd_id, uint8_t **tlv_array,
                                               uint32_t *num_extract_info, uint32_t *is_cmd,
                                               mcecm_app_cmd_extract_info_t **extract_info) {
  MCEC_LOG(__func__, "extract interface params\n");
  uint32_t value = 0;
  uint16_t type = 0;
  uint32_t is_del = 0;
  if (const uint32_t result = stp_mcec_extract_if_param_val(handle, cmd_id, &value, &type, &is_del);
      result != 0) {
    cmd_rsp_send_nok(handle, 0, "internal error: Failed to get param val\n");
    return result;
  }
  MCEC_LOG(__func__, "param_val=%d, param_type=%d\n", value, type);
  const Word word = to_network(value);

  const auto list = extract::range_list(handle, STP_MCEC_ATTR_IFINDEX, range_list_header_size);
  if (!list) {
    cmd_rsp_send_nok(handle, 0, "internal error: Failed to get IFINDEX");
    return STP_MCEC_ERR_INVALID_ARG;
  }
  if (list->count > 0 && is_internal_pod_port((*list)[0].first)) {
    hist_log("No Type-1 checks for HIF ports");
    return 0;
  }

  // Membership is the multi-chassis manager's and may change between counting the members and
  // filling their records: no more records are written than were counted.
  uint32_t mcec_id = 0;
  uint32_t membership = 0;
  uint32_t count = 0;
  for_each_port(*list, [&](uint32_t if_index) {
    membership = stp_mcec_lib_get_mcec_id(if_index, &mcec_id);
    if (membership == 0) ++count;
    return true;
  });
  MCEC_LOG(__func__, "total_if_count=%d\n", count);
  if (count == 0) return 0;

  const extract::Request request{__func__,    extract::Source::command, handle,
                                 tlv_array,   num_extract_info,         is_cmd,
                                 extract_info};
  extract::Record *records = extract::new_records(request, rules, count);
  if (records == nullptr) return STP_MCEC_RESULT_NO_BLOCK;
  extract::announce(request, count);

  const char *const operation = __func__;
  uint32_t filled = 0;
  bool refused = false;
  for_each_port(*list, [&](uint32_t if_index) {
    membership = stp_mcec_lib_get_mcec_id(if_index, &mcec_id);
    if (membership != 0) return true;
    if (filled == count) return false;
    MCEC_LOG(operation, "port 0x%x is MCEC (ID %d)\n", if_index, mcec_id);
    refused = extract::put(request, rules, if_index, type, word) == nullptr;
    if (refused) return false;
    records[filled++] = {type, 1, 0, if_index};
    return true;
  });
  if (refused) return STP_MCEC_ERR_NO_MEMORY;
  if (filled == 0) {
    *tlv_array = nullptr;
    return membership;
  }
  const Tlv entry{type, word};
  return extract::hand_out_array(request, rules, extract::array_size(word.size()), {&entry, 1});
}
