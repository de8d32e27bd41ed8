#include "floors.h"

#include <benchmark/benchmark.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "avl.h"
#include "cmd_req.h"
#include "draimiofaf/cache.h"
#include "draimiofaf/foundation.h"
#include "mtrack.h"
#include "sdwrap.h"
#include "tlv.h"

namespace bench {
namespace {

Bytes word(uint32_t value) {
  return {uint8_t(value >> 24), uint8_t(value >> 16), uint8_t(value >> 8), uint8_t(value)};
}

Bytes region_name() {
  Bytes name(32);
  std::memcpy(name.data(), "campus-east", 11);
  return name;
}

const Bytes values[] = {word(STP_MCEC_STP_MODE_MST),
                        vlans({10, 20}),
                        region_name(),
                        word(3),
                        Bytes(8192, 1),
                        word(1),
                        word(1),
                        word(STP_MCEC_GBL_PORT_TYPE_NORMAL),
                        word(1)};

static_assert(std::size(values) == parameter_count);

__attribute__((format(printf, 1, 2))) void line(const char *format, ...) {
  sdwrap_hist_line_t record;
  record.flag = 1;
  va_list arguments;
  va_start(arguments, format);
  const int length = std::vsnprintf(record.text, sizeof record.text, format, arguments);
  va_end(arguments);
  sdwrap_his_log_event_for_uuid_inst(STP_MCEC_LIB_SERVICE_ID, SDWRAP_HIST_LINE_EVENT, 0, 0,
                                     uint32_t(length) + 5, &record);
}

type1_cfg_avl_node_t *find_node(uint32_t if_index, uint16_t type) {
  const type1_cfg_avl_node_t key{if_index, type, 0, nullptr};
  return static_cast<type1_cfg_avl_node_t *>(avl_find(stp_mcec_type1_cfg_avl, &key));
}

void *zeroed(uint32_t mem_type, uint32_t size) {
  return std::memset(mtrack_alloc(STP_MCEC_LIB_SERVICE_ID, mem_type, size), 0, size);
}

struct Entry {
  uint16_t type = 0;
  uint16_t length = 0;
  void *value = nullptr;
};

uint32_t first_word(const void *value) {
  uint32_t network;
  std::memcpy(&network, value, sizeof network);
  return __builtin_bswap32(network);
}

// Compares the parameters whose types are in a bit set.
bool compare(const void *local, const void *remote, uint32_t types) {
  uint32_t cursor = 0;
  for (uint32_t left = tlv_aligned_array_get_num_tlvs(local, 1); left > 0; --left) {
    Entry entry;
    Entry peer;
    tlv_aligned_array_get_next_tlv(local, &entry.type, &entry.length, &entry.value, 1, &cursor);
    if ((types >> entry.type & 1) == 0) continue;
    if (tlv_aligned_array_find_tlv(remote, entry.type, &peer.length, &peer.value, 1) != 0 ||
        std::memcmp(entry.value, peer.value, entry.length) != 0) {
      return false;
    }
  }
  return true;
}

}  // namespace

Bytes vlans(std::initializer_list<unsigned> set) {
  Bytes record(sizeof(bmp4096_t));
  record[2] = 2;
  for (const unsigned vlan : set) {
    uint8_t &byte = record[4 + vlan / 8];
    byte = uint8_t(byte | 0x80U >> vlan % 8);
  }
  return record;
}

Bytes make_array() {
  uint32_t size = STP_MCEC_TLV_ARRAY_HDR_SIZE;
  for (const Bytes &value : values) size += tlv_aligned_data_size_get(uint32_t(value.size()));
  Bytes array(size);
  uint16_t type = 0;
  for (const Bytes &value : values) {
    tlv_aligned_array_add_tlv(array.data(), size, ++type, uint16_t(value.size()), value.data(),
                              TLV_ALIGNED_FLAG);
  }
  return array;
}

void cache_parameters(uint32_t mode) {
  avl_destroy(stp_mcec_type1_cfg_avl, stp_mcec_type1_cfg_avl_free);
  stp_mcec_type1_cfg_avl = avl_create(stp_mcec_type1_cfg_avl_cmp_func, 0);
  Bytes array = make_array();
  stp_mcec_type1_cfg_cache_rebuild(array.data(), 0, 0);
  find_node(0, STP_MCEC_TYPE1_STP_MODE)->val[3] = uint8_t(mode);
}

uint32_t check_floor(const void *local, const void *remote, uint32_t mode) {
  constexpr uint32_t in_every_mode = 1U << 1 | 7U << 6 | 3U << 10;
  constexpr uint32_t in_mst = 7U << 3 | 1U << 9 | 1U << 12;
  constexpr uint32_t in_rapid_pvst = 1U << 2;
  const bool is_mst = mode == STP_MCEC_STP_MODE_MST;
  const char *const function =
      is_mst ? "stp_mcec_mst_type1_cfg_compat_check" : "stp_mcec_pvrst_type1_cfg_compat_check";
  constexpr const char *common = "stp_mcec_type1_cfg_compat_check_common";
  line("%s(%d): Regular Interface type-1 compat check\n", "stp_mcec_type1_cfg_compat_check", 14);
  line("%s(%d): type-1 compat check\n", common, 33);
  benchmark::DoNotOptimize(first_word(find_node(0, STP_MCEC_TYPE1_STP_MODE)->val));
  line("%s(%d): current STP mode %s\n", common, 42, is_mst ? "MST" : "Rapid-PVST");
  if (!compare(local, remote, in_every_mode)) return 1;
  line(is_mst ? "%s(%d): MST type-1 compat check\n" : "%s(%d): PVRST type-1 compat check\n",
       function, 10);
  if (!compare(local, remote, is_mst ? in_mst : in_rapid_pvst)) return 1;
  line(is_mst ? "%s(%d): MST type-1 compat check passed\n"
              : "%s(%d): PVRST type-1 compat check passed\n",
       function, 22);
  line("%s(%d): type-1 compat check passed\n", common, 63);
  return 0;
}

uint32_t export_floor(int32_t gbl, uint32_t if_index, void **out) {
  line("%s(%d): type-1 cfg param get gbl=%d, ifi=0x%x\n", "stp_mcec_type1_cfg_get_params", 12, gbl,
       if_index);
  uint32_t size = STP_MCEC_TLV_ARRAY_HDR_SIZE;
  for (uint16_t type = 1; type <= parameter_count; ++type) {
    line("%s(%d): finding type %d", "stp_mcec_params_tlv_size_add", 40, type);
    const type1_cfg_avl_node_t *node = find_node(if_index, type);
    if (node == nullptr) continue;
    line(" found len=%d", node->len);
    size += tlv_aligned_data_size_get(node->len);
  }
  line("%s(%d): TLV array size %d\n", "stp_mcec_type1_cfg_get_params", 15, size);
  void *array = zeroed(STP_MCEC_LIB_MEM_tlv_array_1_t, size);
  for (uint16_t type = 1; type <= parameter_count; ++type) {
    const type1_cfg_avl_node_t *node = find_node(if_index, type);
    if (node == nullptr) continue;
    line("%s(%d): adding TLV type %d len %d\n", "stp_mcec_params_tlv_add", 50, type, node->len);
    tlv_aligned_array_add_tlv(array, size, type, node->len, node->val, TLV_ALIGNED_FLAG);
  }
  line("%s(%d): num_tlvs = %d\n", "stp_mcec_type1_cfg_get_params", 24,
       tlv_aligned_array_get_num_tlvs(array, TLV_ALIGNED_FLAG));
  *out = array;
  return 0;
}

uint32_t report_floor(const void *array, const mcecm_app_info_report_t *texts, void **out) {
  constexpr const char *vlan_text = "10,20";
  constexpr const char *op = "stp_mcec_type1_cfg_get_param_info";
  const uint32_t count = tlv_aligned_array_get_num_tlvs(array, TLV_ALIGNED_FLAG);
  auto *report = static_cast<mcecm_app_info_report_t *>(
      zeroed(STP_MCEC_LIB_MEM_mcecm_app_info_t, 4 + count * uint32_t(sizeof(mcecm_app_info_t))));
  report->count = count;
  uint32_t cursor = 0;
  for (uint32_t i = 0; i < count; ++i) {
    Entry entry;
    tlv_aligned_array_get_next_tlv(array, &entry.type, &entry.length, &entry.value, 1, &cursor);
    mcecm_app_info_t &record = report->records[i];
    const mcecm_app_info_t &from = texts->records[i];
    record.app_code = STP_MCEC_APP_CODE;
    record.param_type = entry.type;
    std::memcpy(record.component, from.component, std::strlen(from.component) + 1);
    std::memcpy(record.param_name, from.param_name, std::strlen(from.param_name) + 1);
    std::memcpy(record.param_value, from.param_value, std::strlen(from.param_value) + 1);
    if (entry.type == STP_MCEC_TYPE1_MST_REGION_VI_MAP) continue;
    const char *const name = stp_mcec_type1_cfg_type_to_str(entry.type);
    const void *cached = find_node(0, entry.type)->val;
    if (entry.type == STP_MCEC_TYPE1_STP_ENDIS) {
      line("%s(%d): Type %s - val = %s, ", op, 140, name, vlan_text);
      line("cval = %s\n", vlan_text);
    } else if (entry.type == STP_MCEC_TYPE1_MST_REGION_NAME) {
      line("%s(%d): Type %s - val = %.*s, ", op, 140, name, 11, static_cast<char *>(entry.value));
      line("cval = %.*s\n", 11, static_cast<const char *>(cached));
    } else {
      const bool flags = entry.type == STP_MCEC_TYPE1_GBL_PORT_TYPE;
      line(flags ? "%s(%d): Type %s - val = 0x%x, cval = 0x%x\n"
                 : "%s(%d): Type %s - val = %d, cval = %d\n",
           op, 140, name, first_word(entry.value), first_word(cached));
    }
  }
  *out = report;
  return 0;
}

// Enables loop guard.
uint32_t command_floor(mts_msg_t *msg, uint8_t **array, uint32_t *count, uint32_t *is_cmd,
                       mcecm_app_cmd_extract_info_t **records) {
  line("%s(%d): type-1 param extractor\n", "stp_mcec_type1_cfg_param_extractor", 46);
  benchmark::DoNotOptimize(mts_opc_get(msg));
  alignas(16) uint8_t buffer[64];
  benchmark::DoNotOptimize(cmd_req_handle_get_1(msg));
  cmd_req_t *handle = cmd_req_handle_get_2(msg, buffer);
  line("%s(%d): CLI extractor\n", "stp_mcec_param_extractor_from_cli", 80);
  benchmark::DoNotOptimize(cmd_req_cmdId_getnext(handle));
  uint64_t key = 0;
  mcecm_sdb_generate_mct_key(1, &key);
  benchmark::DoNotOptimize(mcecm_sdb_info_get(&key));
  constexpr const char *op = "stp_mcec_extract_gbl_params";
  line("%s(%d): extract gbl params\n", op, 34);
  const uint32_t value = __builtin_bswap32(cmd_req_action_is_set(handle));
  line("%s(%d): Global %s changed to %s\n", op, 39, "Loopguard", value != 0 ? "True" : "False");
  std::memcpy(find_node(0, STP_MCEC_TYPE1_LOOP_GUARD)->val, &value, sizeof value);
  *records = static_cast<mcecm_app_cmd_extract_info_t *>(
      zeroed(STP_MCEC_LIB_MEM_mcecm_app_cmd5_extract_info_t, sizeof **records));
  **records = {STP_MCEC_TYPE1_LOOP_GUARD, 1, 1, 0};
  *count = *is_cmd = 1;
  const uint32_t size = STP_MCEC_TLV_ARRAY_HDR_SIZE + tlv_aligned_data_size_get(sizeof value);
  *array = static_cast<uint8_t *>(zeroed(STP_MCEC_LIB_MEM_tlv_array_6_t, size));
  tlv_aligned_array_add_tlv(*array, size, STP_MCEC_TYPE1_LOOP_GUARD, sizeof value, &value,
                            TLV_ALIGNED_FLAG);
  cmd_rsp_send_ok(handle);
  return 0;
}

uint32_t twins_floor(uint16_t, const uint8_t *local, const uint8_t *remote, const uint8_t *twins,
                     bmp4096_t *pass, bmp4096_t *fail) {
  constexpr const char *op = "stp_mcec_pvrst_endis_check_for_twin_vlans";
  line("%s(%d): local stp disabled vlans: %s\n", op, 60, "10,20");
  line("%s(%d): remote stp disabled vlans: %s\n", op, 61, "10");
  line("%s(%d): compatcheck vlans: %s\n", op, 64, "0-4095");
  pass->size = fail->size = sizeof pass->bmp;
  uint64_t any = 0;
  for (std::size_t i = 0; i < sizeof pass->bmp; i += sizeof any) {
    uint64_t local_word, remote_word, twin_word;
    std::memcpy(&local_word, local + 4 + i, sizeof local_word);
    std::memcpy(&remote_word, remote + 4 + i, sizeof remote_word);
    std::memcpy(&twin_word, twins + 4 + i, sizeof twin_word);
    const uint64_t different = twin_word & (local_word ^ remote_word);
    const uint64_t equal = twin_word & ~different;
    std::memcpy(pass->bmp + i, &equal, sizeof equal);
    std::memcpy(fail->bmp + i, &different, sizeof different);
    any |= different;
  }
  line("%s(%d): compatcheck pass vlans: %s\n", op, 74, "0-19,21-4095");
  line("%s(%d): compatcheck fail vlans: %s\n", op, 75, "20");
  return any == 0 ? 0 : uint32_t{STP_MCEC_ERR_TYPE1_STP_ENDIS};
}

}  // namespace bench
