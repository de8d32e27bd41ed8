/*
 * A platform that violates the contract named in the environment variable BREAK, and calls the
 * example platform otherwise. Link it with --wrap for every operation in this file.
 */
#include <draimiofaf/platform/avl.h>
#include <draimiofaf/platform/cmd_req.h>
#include <draimiofaf/platform/if_index.h>
#include <draimiofaf/platform/im.h>
#include <draimiofaf/platform/mcecm.h>
#include <draimiofaf/platform/mtrack.h>
#include <draimiofaf/platform/satmgr.h>
#include <draimiofaf/platform/sdwrap.h>
#include <draimiofaf/platform/syserr.h>
#include <draimiofaf/platform/sysmgr.h>
#include <draimiofaf/platform/tlv.h>
#include <stdlib.h>
#include <string.h>

#include "platform_check.h"

static int is_broken(const char *contract) {
  const char *broken = getenv("BREAK");
  return broken != NULL && strcmp(broken, contract) == 0;
}

/* Defines an operation that replaces the one of the example platform, __real_NAME. */
#define WRAP(result, name, ...)      \
  result __real_##name(__VA_ARGS__); \
  result __wrap_##name(__VA_ARGS__); \
  result __wrap_##name(__VA_ARGS__)

/* --- memory, history, error texts --- */

static void *latest_block;

WRAP(void *, mtrack_alloc, uint32_t service, uint32_t mem_type, uint32_t size) {
  static char no_block[64];
  if (is_broken("mtrack.mem-types") && mem_type == 20) return NULL;
  if (is_broken("mtrack.empty") && size == 0) return no_block + 32;
  if (is_broken("mtrack.large") && size == UINT32_MAX) return (void *)16;
  latest_block = __real_mtrack_alloc(service, mem_type, size);
  return is_broken("mtrack.blocks") ? (char *)latest_block + 4 : latest_block;
}

WRAP(void, mtrack_uninit, uint32_t service) {
  if (is_broken("mtrack.uninit")) memset(latest_block, 0, 1);
  __real_mtrack_uninit(service);
}

static int is_initialized;

WRAP(uint32_t, sdwrap_hist_init_for_uuid, uint32_t service, uint32_t size) {
  is_initialized = 1;
  return is_broken("sdwrap.init") ? 1 : __real_sdwrap_hist_init_for_uuid(service, size);
}

WRAP(uint32_t, sdwrap_his_log_event_for_uuid_inst, uint32_t service, uint32_t event, uint32_t a,
     uint32_t b, uint32_t length, const void *record) {
  if (is_broken("sdwrap.early") && !is_initialized) abort();
  if (is_broken("sdwrap.lines") && length > 256) length = 256;
  return __real_sdwrap_his_log_event_for_uuid_inst(service, event, a, b, length, record);
}

WRAP(const char *, syserr2str, uint32_t code) {
  return is_broken("syserr.text") && code == UINT32_MAX ? NULL : __real_syserr2str(code);
}

/* --- trees --- */

static void *latest_node;

WRAP(void *, avl_find, avl_tree_t *tree, const void *key) {
  void *found = __real_avl_find(tree, key);
  return is_broken("avl.find") && found == latest_node ? NULL : found;
}

WRAP(uint32_t, avl_insert, avl_tree_t *tree, void *node) {
  latest_node = node;
  return __real_avl_insert(tree, node);
}

WRAP(uint32_t, avl_delete, avl_tree_t *tree, void *node) {
  return is_broken("avl.delete") ? 0 : __real_avl_delete(tree, node);
}

WRAP(void, avl_destroy, avl_tree_t *tree, void (*release)(void *)) {
  if (is_broken("avl.destroy")) release(latest_node);
  __real_avl_destroy(tree, release);
}

/* --- arrays --- */

WRAP(uint16_t, tlv_aligned_data_size_get, uint32_t length) {
  const uint16_t size = __real_tlv_aligned_data_size_get(length);
  return is_broken("tlv.size") ? (uint16_t)(size + 4) : size;
}

WRAP(uint32_t, tlv_aligned_array_add_tlv, void *array, uint32_t size, uint16_t type,
     uint16_t length, const void *value, uint32_t flag) {
  if (is_broken("tlv.long") && length > 0x7FFF) length &= 0x7FFF;
  const uint32_t result = __real_tlv_aligned_array_add_tlv(array, size, type, length, value, flag);
  if (is_broken("tlv.no-room") && result != 0) memset(array, 0, 4);
  return is_broken("tlv.codes") && result != 0 ? STP_MCEC_ERR_FAILURE : result;
}

WRAP(uint32_t, tlv_aligned_array_get_num_tlvs, const void *array, uint32_t flag) {
  const uint32_t count = __real_tlv_aligned_array_get_num_tlvs(array, flag);
  return is_broken("tlv.empty") && count == 0 ? 1 : count;
}

WRAP(uint32_t, tlv_aligned_array_find_tlv, const void *array, uint16_t type, uint16_t *length,
     void **value, uint32_t flag) {
  if (is_broken("tlv.address") && (uintptr_t)array % 4 != 0) return 1;
  const uint32_t result = __real_tlv_aligned_array_find_tlv(array, type, length, value, flag);
  if (is_broken("tlv.values") && *length == 516) ++*length;
  const int is_forged = is_broken("tlv.forged-entries") || is_broken("tlv.forged-size");
  if (is_forged && result == 0) *length = 0xFFFF;
  return result;
}

/* --- messages and requests --- */

WRAP(uint32_t, mts_opc_get, const mts_msg_t *msg) {
  return __real_mts_opc_get(msg) & (is_broken("mts.opcode") ? 0xFFFF : UINT32_MAX);
}

WRAP(const char *, mts_opc_name_get, uint32_t opcode) {
  return is_broken("mts.opcode-name") && opcode == 0 ? NULL : __real_mts_opc_name_get(opcode);
}

WRAP(void *, mts_payload_get, mts_msg_t *msg) {
  void *payload = __real_mts_payload_get(msg);
  return is_broken("mts.payload") && payload == NULL ? msg : payload;
}

WRAP(uint32_t, cmd_req_handle_get_1, mts_msg_t *msg) {
  return __real_cmd_req_handle_get_1(msg) - (is_broken("cmd_req.handle") ? 8 : 0);
}

WRAP(cmd_req_t *, cmd_req_handle_get_2, mts_msg_t *msg, void *buffer) {
  cmd_req_t *handle = __real_cmd_req_handle_get_2(msg, buffer);
  return is_broken("cmd_req.no-request") ? buffer : handle;
}

WRAP(uint32_t, cmd_req_action_is_del, cmd_req_t *handle) {
  return is_broken("cmd_req.command") ? 1 : __real_cmd_req_action_is_del(handle);
}

WRAP(uint32_t, cmd_req_attr_get, cmd_req_t *handle, uint32_t id, void **value, uint32_t *length) {
  const uint32_t result = __real_cmd_req_attr_get(handle, id, value, length);
  return is_broken("cmd_req.search") ? 0 : result;
}

WRAP(uint32_t, cmd_req_attr_getnext, cmd_req_t *handle, void **value, uint32_t *length) {
  static cmd_req_t *only_handle;
  if (only_handle == NULL || !is_broken("cmd_req.walk")) only_handle = handle;
  return __real_cmd_req_attr_getnext(only_handle, value, length);
}

void __real_cmd_rsp_send_nok(cmd_req_t *handle, uint32_t zero, const char *format, ...);
void __wrap_cmd_rsp_send_nok(cmd_req_t *handle, uint32_t zero, const char *format, ...);
void __wrap_cmd_rsp_send_nok(cmd_req_t *handle, uint32_t zero, const char *format, ...) {
  if (is_broken("cmd_req.answer")) {
    __real_cmd_rsp_send_nok(handle, zero, "%s", format);
  } else {
    __real_cmd_rsp_send_nok(handle, zero, "refused 507, -1%%");
  }
}

/* --- the switch --- */

WRAP(void, mcecm_sdb_generate_if_key, uint32_t if_index, void *key) {
  __real_mcecm_sdb_generate_if_key(if_index, key);
  if (is_broken("mcecm.key")) memset((char *)key + 8, 0, 4);
}

WRAP(void *, mcecm_sdb_info_get, const void *key) {
  static uint32_t record[2];
  void *found = __real_mcecm_sdb_info_get(key);
  uint64_t trunk_key = 0;
  mcecm_sdb_generate_mct_key(1, &trunk_key);
  const int is_trunk = memcmp(key, &trunk_key, sizeof trunk_key) == 0;
  if (is_broken("mcecm.record") && !is_trunk) return record;
  if (is_broken("mcecm.trunk") && is_trunk) return NULL;
  return is_broken("mcecm.no-trunk") && is_trunk ? record : found;
}

WRAP(uint32_t, mcecm_api_is_internal_mcec, uint32_t mcec_id) {
  return is_broken("mcecm.internal") ? 1 : __real_mcecm_api_is_internal_mcec(mcec_id);
}

WRAP(const platform_check_switch_t *, platform_check_set_up,
     const platform_check_switch_t *wanted) {
  const platform_check_switch_t *set_up = __real_platform_check_set_up(wanted);
  if (is_broken("mcecm.user-vlans")) mcec_stp_vlan_count.bmp[0] = 0x40;
  return set_up;
}

WRAP(uint32_t, if_index_get_type, uint32_t if_index, uint8_t *type) {
  return is_broken("if_index.type") ? 0 : __real_if_index_get_type(if_index, type);
}

WRAP(uint32_t, if_index_get_num_ports_in_if_index_range, uint32_t first, uint32_t last,
     uint32_t *count) {
  if (is_broken("if_index.count")) --last;
  return __real_if_index_get_num_ports_in_if_index_range(first, last, count);
}

WRAP(uint32_t, if_index_get_if_index_in_range, uint32_t first, uint32_t last, uint32_t *if_index,
     uint32_t position) {
  if (is_broken("if_index.position")) ++position;
  return __real_if_index_get_if_index_in_range(first, last, if_index, position);
}

WRAP(uint32_t, im_get_ifindex_layermode_list, void *entries, uint32_t count) {
  return __real_im_get_ifindex_layermode_list(entries, is_broken("im.layer-mode") ? 1 : count);
}

WRAP(uint32_t, satmgr_if_is_pod_port, uint32_t if_index) {
  return is_broken("satmgr.pod") ? 0 : __real_satmgr_if_is_pod_port(if_index);
}

WRAP(uint32_t, sysmgr_slc_get, void) {
  return __real_sysmgr_slc_get() + (is_broken("sysmgr.partition") ? 1 : 0);
}
