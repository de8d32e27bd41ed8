// The stand-in enforces the contract of the platform.

#include "avl.h"
#include "cmd_req.h"
#include "if_index.h"
#include "im.h"
#include "mcecm.h"
#include "sdwrap.h"
#include "support.h"

namespace {

using namespace test;

// Arguments of the calls below.
alignas(16) uint8_t aligned[1024] = {};
uint32_t number = 0;
void *value = nullptr;
uint16_t length = 0;
mts_msg_t *msg = nullptr;
cmd_req_t *handle = nullptr;

avl_tree_t *make_tree() {
  return avl_create(stp_mcec_type1_cfg_avl_cmp_func, 0);
}

// Calls that violate the contract of the platform, and parts of the diagnostics.
const struct {
  void (*act)();
  const char *diagnostic;
} misuses[] = {
    {[] {
       void *block = mtrack_alloc(633, 6, 8);
       mtrack_free(block);
       mtrack_free(block);
     },
     "not a live block"},
    {[] { EXPECT_EQ(mtrack_alloc(633, 21, 8), nullptr); }, "service 633 has no memory type 21"},
    {[] {
       const uint32_t record[] = {1, 0x41414141};
       sdwrap_his_log_event_for_uuid_inst(633, 0x730000, 0, 0, 8, record);
     },
     "does not end"},
    {[] {
       const uint32_t record[] = {2, 0};
       sdwrap_his_log_event_for_uuid_inst(633, 0x730000, 0, 0, 5, record);
     },
     "record is 2; expected 1"},
    {[] { sdwrap_hist_init_for_uuid(633, 0x1000); }, "a history of 4096 bytes"},
    {[] { sdwrap_his_log_event_for_uuid_inst(633, 0x730000, 0, 7, 5, aligned); }, "0x730000, 0, 7"},
    {[] { mtrack_init("", 633, nullptr, 0); }, "already registered"},
    {[] { mtrack_uninit(634); }, "634 is not registered"},
    {[] { avl_destroy(avl_create(stp_mcec_type1_cfg_avl_cmp_func, 1), nullptr); },
     "0x1; expected 0"},
    {[] {
       static type1_cfg_avl_node_t node{};
       avl_tree_t *tree = make_tree();
       avl_delete(tree, &node);
       avl_destroy(tree, nullptr);
     },
     "not in the tree"},
    {[] {
       static type1_cfg_avl_node_t nodes[2] = {};
       avl_tree_t *tree = make_tree();
       avl_insert(tree, nodes);
       avl_insert(tree, nodes + 1);
       avl_destroy(tree, [](void *) {});
     },
     "already in the tree"},
    {[] { tlv_aligned_array_add_tlv(aligned, 16, 1, 0, nullptr, 0); }, "operation is 0"},
    {[] { tlv_aligned_array_get_num_tlvs(aligned, 2); }, "operation is 2"},
    {[] { tlv_aligned_array_get_next_tlv(aligned, &length, &length, &value, 3, &number); },
     "operation is 3"},
    {[] { tlv_aligned_array_find_tlv(aligned, 1, &length, &value, 4); }, "operation is 4"},
    {[] {
       void *block = mtrack_alloc(633, 6, 8);
       tlv_aligned_array_add_tlv(block, 9, 1, 0, nullptr, 1);
       mtrack_free(block);
     },
     "a block of 8 bytes is passed as 9"},
    {[] { cmd_req_handle_get_2(msg, aligned + 8); }, "not aligned to 16"},
    {[] { cmd_req_handle_get_1(nullptr); }, "a null message"},
    {[] {
       cmd_req_cmdId_getnext(handle);
       cmd_req_cmdId_getnext(handle);
     },
     "read twice"},
    {[] { cmd_rsp_send_nok(handle, 7, "no"); }, "a refusal is 7"},
    {[] { cmd_rsp_send_ok(handle); }, "already answered"},
    {[] { mcecm_sdb_generate_if_key(1, aligned + 4); }, "not aligned to 8"},
    {[] {
       number = 5;
       if_index_get_num_ports_in_if_index_range(1, 2, &number);
     },
     "an output argument is 5"},
    {[] {
       number = 0;
       if_index_get_if_index_in_range(1, 2, &number, 3);
     },
     "no port at position 3"},
    {[] {
       aligned[4] = 1;
       im_get_ifindex_layermode_list(aligned, 1);
     },
     "is not empty"},
};

struct Standin : LibraryTest {};

std::string misuse;

// Therefore every test checks the arguments that the library passes to the platform.
TEST_F(Standin, RefusesMisuse) {
  standin_on_misuse([](const char *what) { misuse = what; });
  const Message request(standin_command(STP_MCEC_CMD_STP_MODE, 1, nullptr, 0));
  msg = static_cast<mts_msg_t *>(request.msg);
  handle = static_cast<cmd_req_t *>(standin_handle(request.msg));
  for (const auto &row : misuses) {
    misuse.clear();
    row.act();
    EXPECT_NE(misuse.find(row.diagnostic), std::string::npos)
        << misuse << "; expected " << row.diagnostic;
  }
  standin_on_misuse(nullptr);
  standin_handle_free(handle);
  Bytes full = array({{1, word(5)}});
  EXPECT_NE(tlv_aligned_array_add_tlv(full.data(), uint32_t(full.size()), 2, 0, nullptr, 1), 0U);
}

}  // namespace
