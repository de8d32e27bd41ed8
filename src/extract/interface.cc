// The settings of interfaces: one value for every port of the command's ranges that is a member of
// a multi-chassis port channel.

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
    .no_records = extract::Told::both,
};

constexpr std::size_t range_list_header_size = 16;

struct AttributeValue {
  uint32_t attribute;
  uint32_t parameter;
};

// From an attribute's word to the parameter's value.
constexpr AttributeValue port_types[] = {
    {STP_MCEC_IF_PORT_MODE_NORMAL, STP_MCEC_IFI_PORT_TYPE_NORMAL},
    {STP_MCEC_IF_PORT_MODE_EDGE_TRUNK, STP_MCEC_IFI_PORT_TYPE_EDGE_TRUNK},
    {STP_MCEC_IF_PORT_MODE_NETWORK, STP_MCEC_IFI_PORT_TYPE_NETWORK},
    {STP_MCEC_IF_PORT_MODE_EDGE, STP_MCEC_IFI_PORT_TYPE_EDGE}};
constexpr AttributeValue guards[] = {{STP_MCEC_IF_GUARD_ROOT, STP_MCEC_IFI_PORT_GUARD_ROOT},
                                     {STP_MCEC_IF_GUARD_LOOP, STP_MCEC_IFI_PORT_GUARD_LOOP},
                                     {STP_MCEC_IF_GUARD_NONE, STP_MCEC_IFI_PORT_GUARD_NONE}};

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
     .positive = STP_MCEC_IFI_PORT_TYPE_EDGE,
     .attribute_ids = {STP_MCEC_ATTR_IF_PORT_MODE, STP_MCEC_ATTR_IF_PORT_MODE_2},
     .values = port_types,
     .unknown_value = "Portfast mode unknown!!"},
    {.cmd_id = STP_MCEC_CMD_IF_PORT_TYPE,
     .type = STP_MCEC_TYPE1_IFI_PORT_TYPE,
     .positive = STP_MCEC_IFI_PORT_TYPE_EDGE,
     .attribute_ids = {STP_MCEC_ATTR_IF_PORT_TYPE, STP_MCEC_ATTR_IF_PORT_TYPE_2},
     .values = port_types,
     .unknown_value = "Portfast mode unknown!!"},
    {.cmd_id = STP_MCEC_CMD_IF_EDGE_TRUNK,
     .type = STP_MCEC_TYPE1_IFI_PORT_TYPE,
     .positive = STP_MCEC_IFI_PORT_TYPE_EDGE_TRUNK},
    {.cmd_id = STP_MCEC_CMD_IF_GUARD,
     .type = STP_MCEC_TYPE1_IFI_PORT_GUARD,
     .positive = STP_MCEC_IFI_PORT_GUARD_DEFAULT,
     .attribute_ids = {STP_MCEC_ATTR_IF_GUARD, STP_MCEC_ATTR_IF_GUARD_2},
     .values = guards,
     .unknown_value = "guard type unknown!!"},
    {.cmd_id = STP_MCEC_CMD_IF_MST_SIMULATE_PVST,
     .type = STP_MCEC_TYPE1_IFI_MST_SIMULATE_PVST,
     .positive = STP_MCEC_IFI_MST_SIMULATE_PVST_ENABLED,
     .attribute_ids = {STP_MCEC_ATTR_IF_MST_SIMULATE_PVST, STP_MCEC_ATTR_IF_MST_SIMULATE_PVST_2},
     .present = STP_MCEC_IFI_MST_SIMULATE_PVST_DISABLED},
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
std::optional<uint32_t> positive_value(const Setting &setting, cmd_req_t *handle) {
  uint32_t value = setting.positive;
  if (setting.attribute_ids[0] == 0) return value;
  for (;;) {
    void *attribute = nullptr;
    uint32_t length = 0;
    const uint32_t id = cmd_req_attr_getnext(handle, &attribute, &length);
    if (id == CMD_REQ_NO_MORE_ATTRIBUTES) return value;
    if (id != setting.attribute_ids[0] && id != setting.attribute_ids[1]) continue;
    const Bytes bytes{static_cast<const uint8_t *>(attribute), length};
    if (!take_attribute(setting, bytes, value)) return std::nullopt;
  }
}

// A walk over the ports of a command, range by range, asked from the platform one by one:
//
//   Ports ports{list};
//   for (uint32_t if_index; next(ports, if_index);) ...
struct Ports {
  extract::RangeList list;
  uint32_t next_range = 0;
  extract::Range range = {};
  uint32_t count = 0;  // in the range
  uint32_t position = 0;
};

bool next(Ports &ports, uint32_t &if_index) {
  while (ports.position == ports.count) {
    if (ports.next_range == ports.list.count) return false;
    ports.range = ports.list[ports.next_range++];
    ports.count = ports.position = 0;
    if_index_get_num_ports_in_if_index_range(ports.range.first, ports.range.last, &ports.count);
  }
  if_index = 0;
  if_index_get_if_index_in_range(ports.range.first, ports.range.last, &if_index, ports.position++);
  return true;
}

// The host-interface ports of a pod on an internal channel are not compared. The first port stands
// for all of the command.
bool is_for_internal_pod(const extract::RangeList &list) {
  if (list.count == 0) return false;
  const uint32_t if_index = list[0].first;
  uint32_t mcec_id = 0;
  return satmgr_if_is_pod_port(if_index) != 0 &&
         stp_mcec_lib_get_mcec_id(if_index, &mcec_id) == 0 &&
         mcecm_api_is_internal_mcec(mcec_id) != 0;
}

}  // namespace

extern "C" uint32_t stp_mcec_extract_if_param_val(void *handle, uint32_t cmd_id, uint32_t *value,
                                                  uint16_t *type, uint32_t *is_del) {
  hist_log(here(), "extract interface params\n");
  auto *request = static_cast<cmd_req_t *>(handle);
  const Setting *setting = extract::find_command(settings, cmd_id);
  if (setting == nullptr) return STP_MCEC_ERR_INVALID_ARG;
  uint32_t set = 0;
  if (cmd_req_action_is_set(request) != 0) {
    const std::optional<uint32_t> positive = positive_value(*setting, request);
    if (!positive) {
      hist_log("%s(): %s\n", here().operation, setting->unknown_value);
      return STP_MCEC_ERR_INVALID_ARG;
    }
    set = *positive;
  }
  *value = set;
  *type = setting->type;
  if (cmd_req_action_is_del(request) != 0) *is_del = 1;
  return 0;
}

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
  const Word word = to_network(value);

  const auto list = extract::range_list(request, STP_MCEC_ATTR_IFINDEX, range_list_header_size);
  if (!list) {
    cmd_rsp_send_nok(request.handle, 0, "internal error: Failed to get IFINDEX");
    return STP_MCEC_ERR_INVALID_ARG;
  }
  if (is_for_internal_pod(*list)) {
    hist_log("No Type-1 checks for HIF ports");
    return 0;
  }

  // Membership is the multi-chassis manager's and may change between counting the members and
  // filling their records: no more records are written than were counted.
  uint32_t mcec_id = 0;
  uint32_t membership = 0;
  uint32_t count = 0;
  Ports counted{*list};
  for (uint32_t if_index; next(counted, if_index);) {
    membership = stp_mcec_lib_get_mcec_id(if_index, &mcec_id);
    if (membership == 0) ++count;
  }
  hist_log(here(), "total_if_count=%d\n", count);
  if (count == 0) return 0;

  extract::Record *records = extract::new_records(here(), request, count);
  if (records == nullptr) return STP_MCEC_RESULT_NO_BLOCK;
  extract::announce(request, count);

  uint32_t filled = 0;
  Ports ports{*list};
  for (uint32_t if_index; next(ports, if_index);) {
    membership = stp_mcec_lib_get_mcec_id(if_index, &mcec_id);
    if (membership != 0) continue;
    if (filled == count) break;
    hist_log(here(), "port 0x%x is MCEC (ID %d)\n", if_index, mcec_id);
    if (extract::put(here(), request, if_index, type, word) == nullptr) {
      return STP_MCEC_ERR_NO_MEMORY;
    }
    records[filled++] = {type, 1, 0, if_index};
  }
  if (filled == 0) {
    *tlv_array = nullptr;
    return membership;
  }
  const Tlv entry{type, word};
  return extract::hand_out_array(here(), request, extract::array_size(word.size()), {&entry, 1});
}
