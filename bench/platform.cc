#include "platform.h"

#include <bit>
#include <cstdlib>
#include <cstring>

#include "avl.h"
#include "if_index.h"
#include "im.h"
#include "mcecm.h"
#include "mtrack.h"
#include "satmgr.h"
#include "sdwrap.h"
#include "syserr.h"
#include "sysmgr.h"
#include "tlv.h"

namespace {

// --- memory: blocks in sizes of powers of two, used again as they are ---

struct alignas(16) BlockHead {
  BlockHead *next;
  uint32_t order;
};

BlockHead *free_blocks[33];

// --- the cache: a place for every key ---

constexpr uint32_t types = 16;
constexpr uint32_t interface_types = 3;
constexpr uint32_t first_interface_type = 10;

struct Tree {
  void *of_switch[types];
  void *of_ports[interface_types][bench::port_count];
};

Tree tree_of_process;

void *&place_of(const void *key) {
  const auto &node = *static_cast<const type1_cfg_avl_node_t *>(key);
  return node.if_index == 0
             ? tree_of_process.of_switch[node.type]
             : tree_of_process
                   .of_ports[node.type - first_interface_type][node.if_index - bench::first_port];
}

// --- TLV arrays: a head with their entries and 32-bit words, then entries in words ---

struct ArrayHead {
  uint16_t count;
  uint16_t words;
};

struct EntryHead {
  uint16_t type;
  uint16_t length;
};

uint32_t words_of(uint32_t length) {
  return 1 + (length + 3) / 4;
}

uint8_t *entry_at(const void *array, uint32_t words) {
  return const_cast<uint8_t *>(static_cast<const uint8_t *>(array)) + sizeof(ArrayHead) +
         std::size_t{4} * words;
}

const uint32_t membership[] = {1, 7};

uint64_t bytes_logged = 0;

}  // namespace

std::vector<std::string> *bench::kept = nullptr;

bmp4096_t mcec_stp_vlan_count = {512, {}};

void mtrack_init(const char *, uint32_t, const char *const *, uint32_t) {}

void mtrack_uninit(uint32_t) {}

void *mtrack_alloc(uint32_t, uint32_t, uint32_t size) {
  const auto order = static_cast<uint32_t>(std::bit_width(size));
  BlockHead *block = free_blocks[order];
  if (block != nullptr) {
    free_blocks[order] = block->next;
  } else {
    block = static_cast<BlockHead *>(std::malloc(sizeof(BlockHead) + (std::size_t{1} << order)));
    block->order = order;
  }
  return block + 1;
}

void mtrack_free(void *block) {
  BlockHead *head = static_cast<BlockHead *>(block) - 1;
  head->next = free_blocks[head->order];
  free_blocks[head->order] = head;
}

uint32_t sdwrap_hist_init_for_uuid(uint32_t, uint32_t) {
  return 0;
}

uint32_t sdwrap_his_log_event_for_uuid_inst(uint32_t, uint32_t, uint32_t, uint32_t, uint32_t length,
                                            const void *record) {
  bytes_logged += length;
  if (bench::kept != nullptr) {
    bench::kept->emplace_back(static_cast<const sdwrap_hist_line_t *>(record)->text);
  }
  return 0;
}

const char *syserr2str(uint32_t) {
  return "";
}

avl_tree_t *avl_create(int (*)(const void *, const void *), uint32_t) {
  return reinterpret_cast<avl_tree_t *>(&tree_of_process);
}

void avl_destroy(avl_tree_t *, void (*)(void *)) {}

void *avl_find(avl_tree_t *, const void *key) {
  return place_of(key);
}

uint32_t avl_insert(avl_tree_t *, void *node) {
  place_of(node) = node;
  return 0;
}

uint32_t avl_delete(avl_tree_t *, void *node) {
  place_of(node) = nullptr;
  return 0;
}

uint16_t tlv_aligned_data_size_get(uint32_t length) {
  return static_cast<uint16_t>(4 * words_of(length));
}

uint32_t tlv_aligned_array_add_tlv(void *array, uint32_t, uint16_t type, uint16_t length,
                                   const void *value, uint32_t) {
  auto &head = *static_cast<ArrayHead *>(array);
  uint8_t *entry = entry_at(array, head.words);
  const EntryHead entry_head{type, length};
  std::memcpy(entry, &entry_head, sizeof entry_head);
  std::memcpy(entry + sizeof entry_head, value, length);
  head.count = static_cast<uint16_t>(head.count + 1);
  head.words = static_cast<uint16_t>(head.words + words_of(length));
  return 0;
}

uint32_t tlv_aligned_array_get_num_tlvs(const void *array, uint32_t) {
  return static_cast<const ArrayHead *>(array)->count;
}

uint32_t tlv_aligned_array_get_next_tlv(const void *array, uint16_t *type, uint16_t *length,
                                        void **value, uint32_t, uint32_t *cursor) {
  uint8_t *entry = entry_at(array, *cursor);
  EntryHead head;
  std::memcpy(&head, entry, sizeof head);
  *type = head.type;
  *length = head.length;
  *value = entry + sizeof head;
  *cursor += words_of(head.length);
  return 0;
}

uint32_t tlv_aligned_array_find_tlv(const void *array, uint16_t type, uint16_t *length,
                                    void **value, uint32_t flag) {
  uint32_t cursor = 0;
  for (uint32_t left = static_cast<const ArrayHead *>(array)->count; left > 0; --left) {
    uint16_t found = 0;
    tlv_aligned_array_get_next_tlv(array, &found, length, value, flag, &cursor);
    if (found == type) return 0;
  }
  return 1;
}

uint32_t mts_opc_get(const mts_msg_t *msg) {
  return msg->opcode;
}

const char *mts_opc_name_get(uint32_t) {
  return "";
}

void *mts_payload_get(mts_msg_t *) {
  return nullptr;
}

uint32_t cmd_req_handle_get_1(mts_msg_t *) {
  return sizeof(cmd_req_t);
}

cmd_req_t *cmd_req_handle_get_2(mts_msg_t *msg, void *buffer) {
  auto *handle = static_cast<cmd_req_t *>(buffer);
  handle->msg = msg;
  return handle;
}

uint32_t cmd_req_cmdId_getnext(cmd_req_t *handle) {
  return handle->msg->cmd_id;
}

uint32_t cmd_req_attr_get(cmd_req_t *handle, uint32_t, void **value, uint32_t *length) {
  *value = handle->msg->ranges;
  *length = sizeof handle->msg->ranges;
  return 0;
}

uint32_t cmd_req_attr_getnext(cmd_req_t *, void **, uint32_t *) {
  return CMD_REQ_NO_MORE_ATTRIBUTES;
}

uint32_t cmd_req_action_is_set(cmd_req_t *) {
  return 1;
}

uint32_t cmd_req_action_is_del(cmd_req_t *) {
  return 0;
}

void cmd_rsp_send_ok(cmd_req_t *) {}

void cmd_rsp_send_nok(cmd_req_t *, uint32_t, const char *, ...) {}

void mcecm_sdb_generate_if_key(uint32_t if_index, void *key) {
  std::memcpy(key, &if_index, sizeof if_index);
}

void mcecm_sdb_generate_mct_key(uint32_t number, void *key) {
  std::memcpy(key, &number, sizeof number);
}

void *mcecm_sdb_info_get(const void *) {
  return const_cast<uint32_t *>(membership);
}

uint32_t mcecm_api_is_internal_mcec(uint32_t) {
  return 0;
}

uint32_t if_index_get_type(uint32_t, uint8_t *) {
  return 0;
}

uint32_t if_index_get_num_ports_in_if_index_range(uint32_t first, uint32_t last,
                                                  uint32_t *num_ports) {
  *num_ports = last - first + 1;
  return 0;
}

uint32_t if_index_get_if_index_in_range(uint32_t first, uint32_t, uint32_t *if_index,
                                        uint32_t position) {
  *if_index = first + position;
  return 0;
}

uint32_t im_get_ifindex_layermode_list(void *, uint32_t) {
  return 1;
}

uint32_t sysmgr_slc_get() {
  return 0;
}

uint32_t satmgr_if_is_pod_port(uint32_t) {
  return 0;
}
