// The cache: update, delete, rebuild, export.

#include "avl.h"
#include "support.h"

namespace {

using namespace test;

struct Cache : LibraryTest {};

const std::string update_op = "stp_mcec_type1_cfg_cache_update: ";
const std::string rebuild_op = "stp_mcec_type1_cfg_cache_rebuild: ";

std::string exported(int32_t gbl, uint32_t if_index) {
  void *out = nullptr;
  EXPECT_EQ(stp_mcec_type1_cfg_get_params(gbl, if_index, &out), 0U);
  EXPECT_EQ(standin_block_type(out), 6U);
  EXPECT_EQ(standin_block_size(out), stp_mcec_get_mcec_params_tlv_size(gbl, if_index));
  EXPECT_EQ(standin_tlv_array_bytes(out), standin_block_size(out));
  const std::string text = entries_of(out);
  mtrack_free(out);
  standin_history_clear();
  return text;
}

TEST_F(Cache, NodesAreOrderedByIndexThenType) {
  using Node = type1_cfg_avl_node_t;
  uint8_t value = 0;
  const Node nodes[] = {{0, 1, 0, nullptr},
                        {0, 9, 0, nullptr},
                        {1, 1, 0, nullptr},
                        {0x7FFFFFFF, 2, 0, nullptr},
                        {0x80000000, 1, 0, nullptr}};
  for (std::size_t a = 0; a < std::size(nodes); ++a) {
    for (std::size_t b = 0; b < std::size(nodes); ++b) {
      Node other = nodes[b];
      other.len = 9;
      other.val = &value;
      EXPECT_EQ(stp_mcec_type1_cfg_avl_cmp_func(&nodes[a], &other), a < b ? -1 : a > b);
    }
  }
}

TEST_F(Cache, UpdateAddsMissingEntriesOnly) {
  EXPECT_EQ(cache_update(1, 0x1000, {{1, word(5)}, {13, {1, 2, 3}}}), 0U);
  EXPECT_EQ(log(), (Lines{update_op + "update cache (delete=False, gbl=1, if_index=0x1000)",
                          update_op + "Num TLVs 2", update_op + "Add type 1 to cache",
                          update_op + "success add type 1 len 4 to cache",
                          update_op + "Add type 13 to cache",
                          update_op + "success add type 13 len 3 to cache"}));
  EXPECT_EQ(cache_update(1, 0, {{1, word(4)}, {6, {}}}), 0U);
  EXPECT_EQ(log(), (Lines{update_op + "update cache (delete=False, gbl=1, if_index=0x0)",
                          update_op + "Num TLVs 2", update_op + "Found avl node for type 1",
                          update_op + "Add type 6 to cache",
                          update_op + "success add type 6 len 0 to cache"}));
  EXPECT_EQ(cached(0, 1), "00000005");
  EXPECT_EQ(cached(0, 13), "010203");
  EXPECT_EQ(cached(0, 6), "");
  EXPECT_EQ(cache_update(0, 0x1000, {{6, word(1)}}), 0U);
  EXPECT_EQ(cached(0x1000, 6), "00000001");
  EXPECT_EQ(cached(0x1000, 1), "-");
  EXPECT_EQ(standin_live_blocks(1), 4U);
  EXPECT_EQ(standin_live_blocks(2), 4U);
  EXPECT_EQ(standin_live_bytes(2), 4U + 3U + 0U + 4U);
}

TEST_F(Cache, UpdateWithoutPayloadOrEntriesSucceeds) {
  const Message bare(standin_message(0, nullptr, 0));
  EXPECT_EQ(stp_mcec_type1_cfg_cache_update(0, 0, 5, bare.msg), 0U);
  EXPECT_EQ(log(), (Lines{update_op + "update cache (delete=False, gbl=0, if_index=0x5)",
                          update_op + "No Resp"}));
  EXPECT_EQ(cache_update(1, 0, {}), 0U);
  EXPECT_EQ(log().back(), update_op + "Num TLVs 0");
}

TEST_F(Cache, DeleteRemovesOneScope) {
  for (const uint32_t if_index : {0U, 0x1000U, 0x1001U}) {
    for (uint16_t type = 1; type <= 13; ++type) cache(if_index, type, word(type));
  }
  EXPECT_EQ(stp_mcec_type1_cfg_cache_update(-1, 1, 0x1000, nullptr), 0U);
  EXPECT_EQ(log(), (Lines{update_op + "update cache (delete=True, gbl=1, if_index=0x1000)"}));
  EXPECT_EQ(stp_mcec_type1_cfg_cache_update(1, 0, 0x1000, nullptr), 0U);
  EXPECT_EQ(stp_mcec_type1_cfg_cache_update(1, 0, 0x2000, nullptr), 0U);
  for (uint16_t type = 1; type <= 13; ++type) {
    EXPECT_EQ(cached(0, type) == "-", type <= 9) << type;
    EXPECT_EQ(cached(0x1000, type) == "-", type >= 10 && type <= 12) << type;
    EXPECT_NE(cached(0x1001, type), "-") << type;
  }
}

TEST_F(Cache, RebuildKeepsCachedValuesAndTheFirstDuplicate) {
  EXPECT_EQ(rebuild(0, {{1, word(4)}, {1, word(5)}, {6, word(0)}}), 0U);
  EXPECT_EQ(log(), (Lines{rebuild_op + "rebuilding type-1 cache", rebuild_op + "num_tlvs = 3",
                          rebuild_op + "type = 1, tlen=4", rebuild_op + "type = 1, tlen=4",
                          rebuild_op + "type = 6, tlen=4"}));
  EXPECT_EQ(cached(0, 1), "00000004");
  EXPECT_EQ(rebuild(0, {}), 0U);
  EXPECT_EQ(log(), (Lines{rebuild_op + "rebuilding type-1 cache", rebuild_op + "num_tlvs = 0"}));
}

TEST_F(Cache, ExportContainsTheScope) {
  EXPECT_EQ(exported(1, 0), "");
  EXPECT_EQ(stp_mcec_get_mcec_params_tlv_size(1, 0), 4U);
  cache(0, 7, word(1));
  cache(0, 1, word(5));
  cache(0, 2, vlans("10"));
  cache(0, 13, word(1));
  cache(0, 10, word(1));
  cache(0x1000, 12, word(2));
  cache(0x1000, 10, {1, 2, 3});
  cache(0x1001, 11, word(1));
  cache(0x1000, 1, word(1));
  const std::string global = "1:00000005 2:" + hex(vlans("10")) + " 7:00000001";
  EXPECT_EQ(exported(1, 0), global);
  EXPECT_EQ(exported(7, 0x1000), global);
  EXPECT_EQ(exported(0, 0x1000), "10:010203 12:00000002");
  EXPECT_EQ(exported(0, 0x1002), "");
  EXPECT_EQ(stp_mcec_get_mst_region_cfg_tlv_payld_size(), 4U + tlv_aligned_data_size_get(32) +
                                                              tlv_aligned_data_size_get(4) +
                                                              tlv_aligned_data_size_get(80));
}

// A process can insert such an entry, because the tree is exported.
TEST_F(Cache, EntryWithoutAValueStaysEmpty) {
  auto *node =
      static_cast<type1_cfg_avl_node_t *>(mtrack_alloc(633, 1, sizeof(type1_cfg_avl_node_t)));
  *node = {0, 1, 0, nullptr};
  avl_insert(stp_mcec_type1_cfg_avl, node);
  EXPECT_EQ(update(1, 0, {{1, word(4)}}),
            "0 | | cmd 0 count 1 | type 20 1,1,1,0 | type 13 1:00000004");
  EXPECT_EQ(node->val, nullptr);
  EXPECT_EQ(exported(1, 0), "1:");
}

TEST_F(Cache, ExportSkipsAnEntryThatCannotBeAdded) {
  cache(0x1000, 10, word(1));
  cache(0x1000, 12, word(2));
  const std::string get = "stp_mcec_type1_cfg_get_params: ";
  const std::string size = "stp_mcec_params_tlv_size_add: finding type ";
  const std::string add = "stp_mcec_params_tlv_add: ";
  void *out = nullptr;
  standin_fail(STANDIN_TLV_ADD, 1, 1);
  EXPECT_EQ(stp_mcec_type1_cfg_get_params(0, 0x1000, &out), 0U);
  EXPECT_EQ(entries_of(out), "12:00000002");
  EXPECT_EQ(log(), (Lines{get + "type-1 cfg param get gbl=0, ifi=0x1000", size + "10\\",
                          " found len=4\\", size + "11\\", size + "12\\", " found len=4\\",
                          get + "TLV array size " + std::to_string(standin_block_size(out)),
                          add + "adding TLV type 10 len 4",
                          add + "Failed (rc=0x40aa00ff, system error 0x40AA00FF) to add tlv",
                          add + "adding TLV type 12 len 4", get + "num_tlvs = 1"}));
  mtrack_free(out);
}

}  // namespace
