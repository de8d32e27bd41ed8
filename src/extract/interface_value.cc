// Finds the value that an interface command sets, from its form and its attributes.

#include "draimiofaf/extract_port.h"
#include "extract/request.h"

using namespace mcec;

namespace {

struct AttributeValue {
  uint32_t attribute;
  uint32_t parameter;
};

// Maps the word of an attribute to the value of the parameter.
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
  // The value of the positive form without an attribute; the negated form always sets 0.
  uint32_t positive;
  // Identifiers of the attributes that change the value, if any.
  uint32_t attribute_ids[2] = {};
  // The valid words of the attributes. Empty: the presence of an attribute sets `present`.
  std::span<const AttributeValue> values = {};
  const char *unknown_value = nullptr;
  uint32_t present = 0;
};

constexpr Setting settings[] = {
    {.cmd_id = STP_MCEC_CMD_IF_PORT_MODE,
     .positive = STP_MCEC_IFI_PORT_TYPE_EDGE,
     .attribute_ids = {STP_MCEC_ATTR_IF_PORT_MODE, STP_MCEC_ATTR_IF_PORT_MODE_2},
     .values = port_types,
     .unknown_value = "Portfast mode unknown!!"},
    {.cmd_id = STP_MCEC_CMD_IF_PORT_TYPE,
     .positive = STP_MCEC_IFI_PORT_TYPE_EDGE,
     .attribute_ids = {STP_MCEC_ATTR_IF_PORT_TYPE, STP_MCEC_ATTR_IF_PORT_TYPE_2},
     .values = port_types,
     .unknown_value = "Portfast mode unknown!!"},
    {.cmd_id = STP_MCEC_CMD_IF_EDGE_TRUNK, .positive = STP_MCEC_IFI_PORT_TYPE_EDGE_TRUNK},
    {.cmd_id = STP_MCEC_CMD_IF_GUARD,
     .positive = STP_MCEC_IFI_PORT_GUARD_DEFAULT,
     .attribute_ids = {STP_MCEC_ATTR_IF_GUARD, STP_MCEC_ATTR_IF_GUARD_2},
     .values = guards,
     .unknown_value = "guard type unknown!!"},
    {.cmd_id = STP_MCEC_CMD_IF_MST_SIMULATE_PVST,
     .positive = STP_MCEC_IFI_MST_SIMULATE_PVST_ENABLED,
     .attribute_ids = {STP_MCEC_ATTR_IF_MST_SIMULATE_PVST, STP_MCEC_ATTR_IF_MST_SIMULATE_PVST_2},
     .present = STP_MCEC_IFI_MST_SIMULATE_PVST_DISABLED},
};

// Applies one attribute to the value. Returns false if the command must be rejected. An attribute
// shorter than a word counts as absent.
bool apply_attribute(const Setting &setting, Bytes attribute, uint32_t &value) {
  if (setting.values.empty()) {
    value = setting.present;
    return true;
  }
  const std::optional<uint32_t> word = extract::word_of_attribute(attribute);
  if (!word) return true;
  const auto row = std::ranges::find(setting.values, *word, &AttributeValue::attribute);
  if (row == setting.values.end()) return false;
  value = row->parameter;
  return true;
}

// Returns the value of the positive form, or empty if an attribute has an unknown word. The last of
// several attributes determines the value.
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
    if (!apply_attribute(setting, bytes, value)) return std::nullopt;
  }
}

}  // namespace

extern "C" uint32_t stp_mcec_extract_if_param_val(void *handle, uint32_t cmd_id, uint32_t *value,
                                                  uint16_t *type, uint32_t *is_del) {
  hist_log(here(), "extract interface params\n");
  auto *request = static_cast<cmd_req_t *>(handle);
  const Setting *setting = extract::find_command(settings, cmd_id);
  if (setting == nullptr) return STP_MCEC_ERR_INVALID_ARG;
  uint32_t new_value = 0;
  if (cmd_req_action_is_set(request) != 0) {
    const std::optional<uint32_t> positive = positive_value(*setting, request);
    if (!positive) {
      hist_log(no_prefix, "%s(): %s\n", here().operation, setting->unknown_value);
      return STP_MCEC_ERR_INVALID_ARG;
    }
    new_value = *positive;
  }
  *value = new_value;
  *type = extract::parameter_set_by(cmd_id);
  if (cmd_req_action_is_del(request) != 0) *is_del = 1;
  return 0;
}
