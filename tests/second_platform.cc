// The controls of standin.h, as far as the platform in examples/ has them: tests that ask for no
// others run on it too.

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "cmd_req.h"
#include "mcecm.h"
#include "platform.h"
#include "sdwrap.h"
#include "support.h"

namespace {

std::vector<platform_port_t> ports;
std::vector<uint32_t> internal;
uint32_t has_trunk = 0;
uint32_t partition = 0;

std::vector<void *> messages;
std::vector<std::string> lines;
void (*listener)(const char *line);

void hand_over() {
  const platform_switch_t tables = {ports.data(),    ports.size(), internal.data(),
                                    internal.size(), has_trunk,    partition};
  platform_set_switch(&tables);
}

platform_port_t &port_at(uint32_t if_index) {
  auto at = std::lower_bound(
      ports.begin(), ports.end(), if_index,
      [](const platform_port_t &port, uint32_t index) { return port.if_index < index; });
  if (at == ports.end() || at->if_index != if_index) {
    at = ports.insert(at, platform_port_t{});
    at->if_index = if_index;
    hand_over();
  }
  return *at;
}

void set_record(uint32_t if_index, bool has_record, uint32_t counts, uint32_t mcec_id) {
  platform_port_t &port = port_at(if_index);
  port.has_record = has_record;
  port.record[0] = counts;
  port.record[1] = mcec_id;
}

// A history file of this process, which needs its name no longer once it is mapped.
void new_history() {
  char path[] = "/tmp/draimiofaf-test-XXXXXX";
  close(mkstemp(path));
  platform_history_path(path);
  stp_mcec_lib_sdwrap_init();
  unlink(path);
}

void read_history() {
  static std::string text(0x40000, '\0');
  lines.clear();
  const std::size_t size = platform_history_read(text.data(), text.size());
  for (std::size_t at = 0; at < size; at += lines.back().size() + 1) {
    lines.push_back(&text[at]);
    if (listener != nullptr) listener(&text[at]);
  }
}

mts_msg_t *message_of(void *msg) {
  return static_cast<mts_msg_t *>(msg);
}

platform_usage_t usage_of(uint32_t mem_type) {
  if (mem_type != STANDIN_ALL_TYPES) return platform_memory(STP_MCEC_LIB_SERVICE_ID, mem_type);
  platform_usage_t all{};
  for (uint32_t type = 0; type < STP_MCEC_LIB_MEM_MAX; ++type) {
    const platform_usage_t usage = usage_of(type);
    all.blocks += usage.blocks;
    all.bytes += usage.bytes;
  }
  return all;
}

}  // namespace

void standin_reset() {
  static const bool has_history = (new_history(), true);
  ports.clear();
  internal.clear();
  has_trunk = partition = 0;
  hand_over();
  standin_clear_user_vlans();
  if (has_history) platform_history_clear();
}

void standin_add_ports(uint32_t first, uint32_t last, uint8_t type, uint32_t layer_mode) {
  for (uint32_t if_index = first; if_index <= last; ++if_index) {
    port_at(if_index).type = type;
    port_at(if_index).layer_mode = layer_mode;
  }
}

void standin_set_member(uint32_t if_index, uint32_t mcec_id) {
  set_record(if_index, mcec_id != 0, 1, mcec_id);
}

void standin_set_void_member(uint32_t if_index, uint32_t mcec_id) {
  set_record(if_index, true, 0, mcec_id);
}

void standin_set_pod_port(uint32_t if_index, uint32_t is_pod) {
  port_at(if_index).is_pod = is_pod != 0;
}

void standin_set_internal(uint32_t mcec_id, uint32_t is_internal) {
  std::erase(internal, mcec_id);
  if (is_internal != 0) internal.push_back(mcec_id);
  hand_over();
}

void standin_set_trunk(uint32_t exists) {
  has_trunk = exists;
  hand_over();
}

void standin_set_partition(uint32_t slc) {
  partition = slc;
  hand_over();
}

void standin_add_user_vlans(uint32_t first, uint32_t last) {
  for (uint32_t vlan = first; vlan <= last; ++vlan) {
    uint8_t &byte = mcec_stp_vlan_count.bmp[vlan / 8];
    byte = uint8_t(byte | 0x80U >> vlan % 8);
  }
}

void standin_clear_user_vlans() {
  mcec_stp_vlan_count = {512, {}};
}

void *standin_message(uint32_t opcode, const void *payload, size_t size) {
  return messages.emplace_back(platform_message(opcode, payload, uint32_t(size)));
}

void *standin_command(uint32_t cmd_id, uint32_t form, const standin_attribute_t *attributes,
                      uint32_t count) {
  std::vector<platform_attribute_t> given;
  for (uint32_t i = 0; i < count; ++i) {
    given.push_back({attributes[i].id, attributes[i].length, attributes[i].value});
  }
  return messages.emplace_back(platform_command(cmd_id, form, given.data(), count));
}

void standin_message_free(void *msg) {
  std::erase(messages, msg);
  platform_message_free(message_of(msg));
}

void *standin_handle(void *msg) {
  return cmd_req_handle_get_2(message_of(msg), std::malloc(cmd_req_handle_get_1(message_of(msg))));
}

void standin_handle_free(void *handle) {
  std::free(handle);
}

// Each message keeps its answer; a test has one command at a time.
void standin_answers_clear() {}

uint32_t standin_answer_count() {
  return uint32_t(std::ranges::count_if(
      messages, [](void *msg) { return platform_answer(message_of(msg)) != nullptr; }));
}

standin_answer_t standin_answer_at(uint32_t) {
  for (void *msg : messages) {
    const char *text = platform_answer(message_of(msg));
    if (text != nullptr) return {*text == '\0', text};
  }
  return {};
}

uint32_t standin_history_count() {
  read_history();
  return uint32_t(lines.size());
}

const char *standin_history_line(uint32_t position) {
  if (position == 0) read_history();
  return position < lines.size() ? lines[position].c_str() : nullptr;
}

void standin_on_history(void (*new_listener)(const char *line)) {
  listener = new_listener;
}

void standin_history_clear() {
  platform_history_clear();
}

uint32_t standin_live_blocks(uint32_t mem_type) {
  return usage_of(mem_type).blocks;
}

uint64_t standin_live_bytes(uint32_t mem_type) {
  return usage_of(mem_type).bytes;
}

uint32_t standin_block_type(const void *block) {
  uint32_t type, size;
  platform_block(block, &type, &size);
  return type;
}

uint32_t standin_block_size(const void *block) {
  uint32_t type, size;
  platform_block(block, &type, &size);
  return size;
}

const char *standin_mem_type_name(uint32_t service_id, uint32_t mem_type) {
  return platform_mem_type_name(service_id, mem_type);
}

size_t standin_tlv_array_bytes(const void *array) {
  return platform_array_bytes(array, SIZE_MAX);
}

// What this platform does not have: a test that needs it begins with ON_STANDIN_ONLY.
void standin_fail(standin_operation_t, uint32_t, uint32_t) {
  ADD_FAILURE() << "no injected failures";
}

uint32_t standin_calls(standin_operation_t) {
  ADD_FAILURE() << "no counted calls";
  return 0;
}

void standin_suspend_failures(uint32_t) {}  // none are on order

void standin_on_misuse(void (*)(const char *)) {
  ADD_FAILURE() << "no misuse handler";
}

void standin_handle_size(uint32_t) {
  ADD_FAILURE() << "no handles of other sizes";
}

const char *standin_service_name(uint32_t) {
  return "STP MCEC Type-1 CFG LIB";
}

namespace {

struct SecondPlatform : test::LibraryTest {};

TEST_F(SecondPlatform, HistoryKeepsTheLastLines) {
  const auto number = [](uint32_t position) {
    return std::strtoul(standin_history_line(position), nullptr, 10);
  };
  for (uint32_t i = 1; i <= 20000; ++i) {
    const std::string line = std::string(4, '\1') + std::to_string(i) + std::string(i % 40, '.');
    EXPECT_EQ(sdwrap_his_log_event_for_uuid_inst(633, 0x730000, 0, 0, uint32_t(line.size() + 1),
                                                 line.c_str()),
              0U);
  }
  const uint32_t count = standin_history_count();
  EXPECT_GT(count, 9000U);
  for (uint32_t i = 0; i < count; ++i) ASSERT_EQ(number(i), 20000 - count + 1 + i);
  char two[100];
  const std::size_t size = platform_history_read(two, sizeof two);
  EXPECT_TRUE(size > 50 && two[size - 1] == '\0');
}

}  // namespace
