// Runs the library on a switch that the input sets up. The sanitizers and the stand-in find invalid
// accesses. The properties: nothing leaks, and a request has at most one answer, which matches the
// result.
#pragma once

#include <cstring>

#include "avl.h"
#include "draimiofaf/cache.h"
#include "draimiofaf/extract.h"
#include "fuzz.h"
#include "mtrack.h"
#include "mts.h"
#include "standin.h"
#include "tlv.h"

constexpr uint32_t first_port = 0x1000;
constexpr uint32_t port_count = 6;

// Suspends injected failures: they are for calls of the platform by the library.
struct WithoutFailures {
  WithoutFailures() { standin_suspend_failures(1); }
  ~WithoutFailures() { standin_suspend_failures(0); }
};

// A block that the library returns.
template <class Record>
struct OwnedBlock {
  Record *block = nullptr;
  OwnedBlock() = default;
  OwnedBlock(const OwnedBlock &) = delete;
  OwnedBlock &operator=(const OwnedBlock &) = delete;
  ~OwnedBlock() {
    if (block != nullptr) mtrack_free(block);
  }
};

inline const type1_cfg_avl_node_t *cached(uint32_t if_index, uint16_t type) {
  const type1_cfg_avl_node_t key{if_index, type, 0, nullptr};
  return static_cast<const type1_cfg_avl_node_t *>(avl_find(stp_mcec_type1_cfg_avl, &key));
}

inline void check_record(const mcecm_app_cmd_extract_info_t &record, const uint8_t *array) {
  const auto type = uint16_t(record.type);
  must(type >= 1 && type <= 12 && (record.is_global != 0) == (type <= 9),
       "a record has a known type and its scope");
  must(record.is_global == 0 || record.if_index == 0, "a record of the switch has index 0");
  uint16_t length = 0;
  void *value = nullptr;
  must(tlv_aligned_array_find_tlv(array, type, &length, &value, TLV_ALIGNED_FLAG) == 0,
       "the array contains the parameter of a record");
  const type1_cfg_avl_node_t *node = cached(record.if_index, type);
  must(node != nullptr &&
           std::memcmp(node->val, value, length < node->len ? length : node->len) == 0,
       "the cache and the array have the same value");
}

inline void extract(void *msg, bool is_command) {
  OwnedBlock<uint8_t> array;
  OwnedBlock<mcecm_app_cmd_extract_info_t> records;
  uint32_t count = 0;
  uint32_t is_cmd = 0;
  standin_answers_clear();
  const uint32_t result =
      stp_mcec_type1_cfg_param_extractor(msg, &array.block, &count, &is_cmd, &records.block);
  const WithoutFailures without_failures;
  must(standin_answer_count() <= (is_command ? 1U : 0U), "a request has at most one answer");
  if (standin_answer_count() == 1) {
    must((standin_answer_at(0).accepted != 0) == (result == 0), "the answer matches the result");
  } else {
    must(!is_command || result != 0, "an accepted command is answered");
  }
  if (records.block != nullptr) {
    must(standin_block_size(records.block) / sizeof *records.block >= count,
         "the block has room for the records");
    for (uint32_t i = 0; is_command && result == 0 && i < count; ++i) {
      if (records.block[i].valid != 0) check_record(records.block[i], array.block);
    }
  }
  must(is_cmd == 0 || is_command, "an update message is not reported as a command");
  standin_message_free(msg);
}

// Consumes a part of the input. Defined by each target.
void run_step(Input &input);

// Resets the platform, runs steps until the input ends, and checks for leaks.
int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
  Input input{data, size};
  standin_reset();
  standin_set_trunk(1);
  standin_add_ports(first_port, first_port + port_count - 1, 26, 2);
  standin_set_member(first_port + 1, 11);
  standin_set_member(first_port + 2, 12);
  standin_set_pod_port(first_port, 1);
  standin_tlv_odd(input.byte() & 1);
  const uint8_t failing = input.byte();
  const uint8_t nth = input.byte();
  standin_fail(static_cast<standin_operation_t>(failing % STANDIN_OPERATIONS), nth,
               failing / STANDIN_OPERATIONS % 3);
  while (input.size > 0) {
    run_step(input);
    standin_history_clear();
  }
  avl_destroy(stp_mcec_type1_cfg_avl, stp_mcec_type1_cfg_avl_free);
  must(standin_live_blocks(STANDIN_ALL_TYPES) == 0, "nothing leaks");
  stp_mcec_type1_cfg_avl = avl_create(stp_mcec_type1_cfg_avl_cmp_func, 0);
  return 0;
}
