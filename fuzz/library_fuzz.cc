// Bytes from a hostile peer, a broken process or a strange command line, handed to the library.
// What must hold whatever they are: nothing is read or written out of place (the sanitizers watch),
// nothing leaks, arrays that come in stay as they are, and a request is answered once at the most,
// in accordance with the result.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "avl.h"
#include "draimiofaf/cache.h"
#include "draimiofaf/check.h"
#include "draimiofaf/extract.h"
#include "draimiofaf/foundation.h"
#include "mtrack.h"
#include "mts.h"
#include "standin.h"

namespace {

using Bytes = std::vector<uint8_t>;

void must(bool holds, const char *what) {
  if (holds) return;
  std::fprintf(stderr, "%s\n", what);
  std::abort();
}

// Takes the input apart; past its end everything is 0.
struct Input {
  const uint8_t *data;
  size_t size;

  uint8_t byte() {
    if (size == 0) return 0;
    --size;
    return *data++;
  }
  uint32_t word() {
    uint32_t value = 0;
    for (int i = 0; i < 4; ++i) value = value << 8 | byte();
    return value;
  }
  Bytes bytes(size_t count) {
    count = count < size ? count : size;
    Bytes taken(data, data + count);
    data += count;
    size -= count;
    return taken;
  }
};

// An array in a block of the platform, as one from a peer would lie: it ends where the block does.
struct Array {
  Bytes before;
  void *block;

  explicit Array(const Bytes &bytes) : before(bytes) {
    standin_suspend_failures(1);
    block = mtrack_alloc(633, 3, uint32_t(bytes.size()));
    standin_suspend_failures(0);
    if (!bytes.empty()) std::memcpy(block, bytes.data(), bytes.size());
  }
  Array(const Array &) = delete;
  Array &operator=(const Array &) = delete;
  ~Array() {
    must(before.empty() || std::memcmp(block, before.data(), before.size()) == 0, "array changed");
    mtrack_free(block);
  }
};

void free_if(void *block) {
  if (block != nullptr) mtrack_free(block);
}

void extract(void *msg, bool is_command) {
  uint8_t *array = nullptr;
  uint32_t count = 0;
  uint32_t is_cmd = 0;
  mcecm_app_cmd_extract_info_t *records = nullptr;
  standin_answers_clear();
  const uint32_t result =
      stp_mcec_type1_cfg_param_extractor(msg, &array, &count, &is_cmd, &records);
  must(standin_answer_count() <= (is_command ? 1 : 0), "answered too often");
  if (standin_answer_count() == 1) {
    must((standin_answer_at(0).accepted != 0) == (result == 0),
         "the answer contradicts the result");
  } else {
    must(!is_command || result != 0, "accepted without an answer");
  }
  if (records != nullptr) {
    must(standin_block_size(records) / sizeof *records >= count, "more records than room");
  }
  free_if(records);
  free_if(array);
  standin_message_free(msg);
}

void command(Input &input) {
  const uint32_t id = input.byte() % 64;
  const uint32_t form = input.byte() & 1;
  constexpr uint32_t ids[] = {STP_MCEC_ATTR_STP_MODE,
                              STP_MCEC_ATTR_VLAN_LIST,
                              STP_MCEC_ATTR_IFINDEX,
                              STP_MCEC_ATTR_IF_PORT_MODE,
                              STP_MCEC_ATTR_IF_PORT_TYPE,
                              STP_MCEC_ATTR_IF_GUARD,
                              STP_MCEC_ATTR_IF_MST_SIMULATE_PVST};
  std::vector<Bytes> values;
  std::vector<standin_attribute_t> attributes;
  for (uint8_t left = input.byte() % 5; left > 0; --left) {
    const uint32_t attribute = ids[input.byte() % std::size(ids)];
    values.push_back(input.bytes(input.byte()));
    attributes.push_back({attribute, uint32_t(values.back().size()), values.back().data()});
  }
  extract(standin_command(id, form, attributes.data(), uint32_t(attributes.size())), true);
}

void update(Input &input, uint32_t opcode) {
  // The length in the header is at most what the payload has, as platform/mts.h promises; it may
  // say less than the array does.
  Bytes payload = input.bytes(input.byte() + 20U);
  if (payload.size() < 20) return;
  uint32_t length = 0;
  std::memcpy(&length, &payload[12], sizeof length);
  length %= uint32_t(payload.size() - 15);
  std::memcpy(&payload[12], &length, sizeof length);
  void *msg = standin_message(opcode, payload.data(), payload.size());
  if (opcode == STP_MCEC_MTS_OPC_TYPE1_UPD) return extract(msg, false);
  stp_mcec_type1_cfg_cache_update(input.byte() & 1, input.byte() & 1, input.byte(), msg);
  standin_message_free(msg);
}

void look_at(Input &input) {
  const Array local(input.bytes(input.byte() * 4U));
  const Array peer(input.bytes(input.byte() * 4U));
  const bmp4096_t twins{512, {0xFF, 0x0F}};
  bmp4096_t pass{};
  bmp4096_t fail{};
  stp_mcec_type1_cfg_compat_check_with_ifindex(0x1000, 0, local.block, peer.block, input.byte() & 1,
                                               &twins, &pass, &fail);
  stp_mcec_mst_type1_cfg_compat_check(0, 0, local.block, peer.block);
  stp_mcec_pvrst_type1_cfg_compat_check(0, 0, local.block, peer.block, 1, &twins, &pass, &fail);
  void *report = nullptr;
  stp_mcec_type1_cfg_get_param_info(local.block, &report);
  free_if(report);
  stp_mcec_type1_cfg_cache_rebuild(peer.block, 0, input.byte());
}

void export_scope(Input &input) {
  void *array = nullptr;
  stp_mcec_type1_cfg_get_params(input.byte() & 1, input.byte(), &array);
  free_if(array);
}

}  // namespace

extern "C" __attribute__((visibility("default"))) int LLVMFuzzerTestOneInput(const uint8_t *data,
                                                                             size_t size) {
  standin_reset();
  standin_set_trunk(1);
  standin_add_ports(0x1000, 0x1003, 26, 2);
  standin_set_member(0x1001, 11);
  standin_set_pod_port(0x1000, 1);
  Input input{data, size};
  standin_tlv_odd(input.byte() & 1);
  standin_fail(static_cast<standin_operation_t>(input.byte() % STANDIN_OPERATIONS), input.byte(),
               input.byte() % 3);
  while (input.size > 0) {
    switch (input.byte() % 5) {
      case 0:
        command(input);
        break;
      case 1:
        update(input, STP_MCEC_MTS_OPC_TYPE1_UPD);
        break;
      case 2:
        update(input, 0);
        break;
      case 3:
        look_at(input);
        break;
      default:
        export_scope(input);
    }
    standin_history_clear();
  }
  avl_destroy(stp_mcec_type1_cfg_avl, stp_mcec_type1_cfg_avl_free);
  must(standin_live_blocks(STANDIN_ALL_TYPES) == 0, "something leaked");
  stp_mcec_type1_cfg_avl = avl_create(stp_mcec_type1_cfg_avl_cmp_func, 0);
  return 0;
}
