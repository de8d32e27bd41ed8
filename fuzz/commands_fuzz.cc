// Configuration commands with valid, invalid and missing attributes, malformed requests, and
// messages of the spanning-tree process.

#include <iterator>

#include "draimiofaf/extract_port.h"
#include "draimiofaf/stp.h"
#include "library.h"

namespace {

#define IDENTIFIER(name, id, ...) STP_MCEC_CMD_##name,
constexpr uint32_t commands[] = {STP_MCEC_COMMANDS(IDENTIFIER) 62};

constexpr uint32_t attributes[] = {STP_MCEC_ATTR_STP_MODE,
                                   STP_MCEC_ATTR_VLAN_LIST,
                                   STP_MCEC_ATTR_IFINDEX,
                                   STP_MCEC_ATTR_IF_PORT_MODE,
                                   STP_MCEC_ATTR_IF_PORT_MODE_2,
                                   STP_MCEC_ATTR_IF_PORT_TYPE,
                                   STP_MCEC_ATTR_IF_PORT_TYPE_2,
                                   STP_MCEC_ATTR_IF_GUARD,
                                   STP_MCEC_ATTR_IF_GUARD_2,
                                   STP_MCEC_ATTR_IF_MST_SIMULATE_PVST,
                                   STP_MCEC_ATTR_IF_MST_SIMULATE_PVST_2};

// Picks a word of a table, or any word.
template <std::size_t count>
uint32_t pick(const uint32_t (&table)[count], Input &input) {
  const uint8_t choice = input.byte();
  return choice < 0xF0 ? table[choice % count] : input.word();
}

void put_word(Bytes &bytes, uint32_t word) {
  const auto *at = reinterpret_cast<const uint8_t *>(&word);
  bytes.insert(bytes.end(), at, at + sizeof word);
}

// Builds a list of ranges of VLANs or ports, whose count may be wrong.
Bytes make_list(Input &input, uint32_t header_words) {
  const uint8_t kind = input.byte();
  const uint32_t ranges = kind % 8;
  const uint32_t base = header_words == 4 ? first_port : 0;
  Bytes bytes;
  put_word(bytes, 0);
  put_word(bytes, kind < 0xC0 ? ranges : input.word());
  for (uint32_t i = 2; i < header_words; ++i) put_word(bytes, 0);
  for (uint32_t i = 0; i < ranges; ++i) {
    const uint32_t first = base + (input.byte() < 0xF0 ? input.byte() : input.word());
    put_word(bytes, first);
    put_word(bytes, first + (input.byte() < 0xF0 ? input.byte() % 8 : input.word()));
  }
  if (kind % 16 == 15) bytes.resize(bytes.size() - bytes.size() * input.byte() / 256);
  return bytes;
}

Bytes value_of(uint32_t attribute, Input &input) {
  const uint8_t kind = input.byte();
  if (kind >= 0xE0) return input.bytes(input.byte());
  if (attribute == STP_MCEC_ATTR_VLAN_LIST) return make_list(input, 2);
  if (attribute == STP_MCEC_ATTR_IFINDEX) return make_list(input, 4);
  Bytes word;
  put_word(word, kind < 0xC0 ? kind % 8 : input.word());
  return word;
}

void send_command(Input &input) {
  const uint32_t id = pick(commands, input);
  const uint32_t form = input.byte() % 2;
  std::vector<Bytes> values;
  std::vector<standin_attribute_t> sent;
  for (uint8_t left = input.byte() % 5; left > 0; --left) {
    const uint32_t attribute = pick(attributes, input);
    values.push_back(value_of(attribute, input));
    sent.push_back({attribute, uint32_t(values.back().size()), values.back().data()});
  }
  extract(standin_command(id, form, sent.data(), uint32_t(sent.size())), true);
}

// Sends a message without a request handle, with the opcode of a request or another one.
void send_malformed_request(Input &input) {
  const uint32_t opcode = input.byte() % 4 > 0 ? uint32_t(STP_MCEC_MTS_OPC_CMD_REQ) : input.word();
  if (opcode == STP_MCEC_MTS_OPC_TYPE1_UPD) return;
  const Bytes payload = input.bytes(input.byte());
  void *const msg =
      standin_message(opcode, input.byte() % 8 == 0 ? nullptr : payload.data(), payload.size());
  OwnedBlock<uint8_t> array;
  OwnedBlock<mcecm_app_cmd_extract_info_t> records;
  uint32_t count = 0;
  uint32_t is_cmd = 0;
  const uint32_t result =
      stp_mcec_type1_cfg_param_extractor(msg, &array.block, &count, &is_cmd, &records.block);
  must(result != 0, "a malformed request is refused");
  standin_message_free(msg);
}

// Changes the state of the platform.
void change_platform(Input &input) {
  const uint32_t port = first_port + input.byte() % port_count;
  const uint8_t what = input.byte();
  const uint32_t value = what / 8;
  switch (what % 8) {
    case 0:
      return standin_set_member(port, value % 4);
    case 1:
      return standin_set_void_member(port, value % 4);
    case 2:
      return standin_set_pod_port(port, value % 2);
    case 3:
      return standin_set_internal(10 + value % 4, value % 2);
    case 4:
      return standin_set_trunk(value % 2);
    case 5:
      return standin_add_user_vlans(1, value * 32);
    case 6:
      return standin_clear_user_vlans();
    default:
      standin_handle_size(value == 0 ? 0 : value * 0x1000);
  }
}

void convert_message(Input &input) {
  constexpr std::size_t entry_count_at = 8;
  constexpr std::size_t flag_at = 12;
  const uint32_t entries = input.byte();
  const uint8_t is_list = input.byte() % 2;
  Bytes message = input.bytes(is_list != 0 ? 17 : 13 + 2 * entries);
  std::memcpy(&message[entry_count_at], &entries, sizeof entries);
  message[flag_at] = is_list;
  Bytes sent(message.size());
  sent[flag_at] = is_list;
  stp_hton_vlan_range_state_change_mts_msg(sent.data(), message.data());
  stp_ntoh_vlan_range_state_change_mts_msg(sent.data(), sent.data());
  must(sent == message, "conversion to network byte order and back changes nothing");

  const uint32_t port = input.byte() < 0xF0 ? first_port + input.byte() % 8 : input.word();
  must(stp_valid_if_index(port) <= stp_valid_if_index_offline(port),
       "an interface that is valid is valid offline, too");
}

}  // namespace

void run_step(Input &input) {
  const uint8_t what = input.byte() % 8;
  if (what == 0) return change_platform(input);
  if (what == 1) return send_malformed_request(input);
  if (what == 2) return convert_message(input);
  send_command(input);
}
