// Extraction from interface commands and update messages.

#include "extract.h"

#include "mts.h"
#include "syserr.h"

namespace {

using namespace test;

Attribute attribute(uint32_t id, uint32_t value) {
  return {id, host_words({value})};
}

const struct {
  uint32_t id;
  bool positive;
  std::vector<Attribute> attributes;
  int type;
  int value;  // -1: refused
  const char *line = "";
} interface_values[] = {
    {13, true, {}, 10, 1},
    {13, false, {attribute(0x2020036, 9)}, 10, 0},
    {13, true, {attribute(0x2020036, 2)}, 10, 2},
    {13, true, {attribute(0x202003C, 5)}, 10, 1},
    {13, true, {attribute(0x202003F, 4)}, 10, 1},
    {13, true, {attribute(0x2020036, 3), attribute(0x202003C, 4)}, 10, 4},
    {13,
     true,
     {attribute(0x2020036, 3), attribute(0x2020036, 1)},
     10,
     -1,
     "Portfast mode unknown!!"},
    {13, true, {cut(attribute(0x2020036, 1), 3)}, 10, 1},
    {47, true, {attribute(0x2020048, 3)}, 10, 3},
    {47, true, {attribute(0x202003F, 6)}, 10, -1, "Portfast mode unknown!!"},
    {47, true, {}, 10, 1},
    {48, true, {attribute(0x2020036, 9)}, 10, 3},
    {48, true, {attribute(0, 9)}, 10, 3},
    {48, false, {}, 10, 0},
    {17, true, {}, 11, 0},
    {17, true, {attribute(0x2020065, 1)}, 11, 1},
    {17, true, {attribute(0x2020068, 3)}, 11, 3},
    {17, true, {attribute(0x2020068, 4)}, 11, -1, "guard type unknown!!"},
    {17, true, {attribute(0x2020065, 0)}, 11, -1, "guard type unknown!!"},
    {50, true, {}, 12, 1},
    {50, true, {{0x202008B, {}}}, 12, 2},
    {50, true, {attribute(0x2020091, 77)}, 12, 2},
    {50, false, {attribute(0x202008B, 0)}, 12, 0},
};

TEST_F(Extract, InterfaceValuesDependOnFormAndAttributes) {
  for (const auto &row : interface_values) {
    std::vector<Attribute> attributes = row.attributes;
    attributes.insert(attributes.begin(), ports({0x1000, 0x1001}));
    stp_mcec_type1_cfg_delete_cache_node(uint16_t(row.type), 0x1001);
    const std::string outcome = command(row.id, row.positive, attributes);
    const std::string type = std::to_string(row.type);
    const std::string value = "0000000" + std::to_string(row.value);
    EXPECT_EQ(outcome, row.value < 0
                           ? "40dd0003 | internal error: Failed to get param val\n | count 0 | |"
                           : "0 | ok | cmd 1 count 1 | type 19 " + type + ",1,0,4097 | type 12 " +
                                 type + ":" + value)
        << row.id;
    EXPECT_EQ(cached(0x1001, uint16_t(row.type)), row.value < 0 ? "-" : value);
    const Lines lines = log();
    if (row.value < 0) {
      EXPECT_EQ(lines.back(), std::string("stp_mcec_extract_if_param_val(): ") + row.line);
    }
  }
}

TEST_F(Extract, MemberPortsHaveRecords) {
  const std::string op = "stp_mcec_extract_if_params: ";
  standin_set_void_member(0x1002, 12);
  cache(0x1001, 11, {9});
  EXPECT_EQ(command(STP_MCEC_CMD_IF_GUARD, set_form,
                    {ports({0x1003, 0x1003, 0x1002, 0x1000, 0x1000, 0x1002}),
                     {STP_MCEC_ATTR_IF_GUARD, host_words({2})}}),
            "0 | ok | cmd 1 count 2 | type 19 11,1,0,4099 11,1,0,4097 | type 12 11:00000002");
  EXPECT_EQ(cached(0x1003, 11), "00000002");
  EXPECT_EQ(cached(0x1001, 11), "00");
  EXPECT_EQ(cached(0x1002, 11), "-");
  EXPECT_EQ(log(2), (Lines{op + "extract interface params",
                           "stp_mcec_extract_if_param_val: extract interface params",
                           op + "param_val=2, param_type=11", op + "total_if_count=2",
                           op + "port 0x1003 is MCEC (ID 13)", op + "created avl node",
                           op + "port 0x1001 is MCEC (ID 11)", op + "found avl node"}));
  for (const auto &none : {ports({}), ports({0x1000, 0x1000}), ports({0x1003, 0x1001})}) {
    EXPECT_EQ(command(STP_MCEC_CMD_IF_GUARD, set_form, {none}), "0 | ok | count 0 | |");
    EXPECT_EQ(log().back(), op + "total_if_count=0");
  }
}

TEST_F(Extract, PodPortsOnInternalChannelsAreNotChecked) {
  standin_set_pod_port(0x1001, 1);
  const auto both = ports({0x1001, 0x1001, 0x1003, 0x1003});
  EXPECT_EQ(command(STP_MCEC_CMD_IF_EDGE_TRUNK, set_form, {both}).substr(0, 23),
            "0 | ok | cmd 1 count 2 ");
  empty_cache();
  log();
  standin_set_internal(11, 1);
  EXPECT_EQ(command(STP_MCEC_CMD_IF_EDGE_TRUNK, set_form, {both}), "0 | ok | count 0 | |");
  EXPECT_EQ(log().back(), "No Type-1 checks for HIF ports\\");
  EXPECT_EQ(cached(0x1003, 10), "-");
  // Only the first port is queried. A port that is not a member has no channel.
  standin_set_pod_port(0x1000, 1);
  EXPECT_EQ(command(STP_MCEC_CMD_IF_EDGE_TRUNK, set_form, {ports({0x1000, 0x1001})}).substr(0, 23),
            "0 | ok | cmd 1 count 1 ");
  EXPECT_EQ(command(STP_MCEC_CMD_IF_EDGE_TRUNK, set_form, {ports({0x1003, 0x1003, 0x1001, 0x1001})})
                .substr(0, 23),
            "0 | ok | cmd 1 count 2 ");
}

TEST_F(Extract, MembershipCanChangeBetweenPasses) {
  const auto all = ports({0x1000, 0x1003});
  // Four queries count the ports, four fill the records. Queries that fail find no member.
  const struct {
    uint32_t first, times;
    const char *outcome;
  } rows[] = {
      {6, 1, "0 | ok | cmd 1 count 2 | type 19 10,1,0,4099 0,0,0,0 | type 12 10:00000003"},
      {5, 4, "41b70016 | | cmd 1 count 2 | type 19 0,0,0,0 0,0,0,0 | null"},
      {2, 1, "0 | ok | cmd 1 count 1 | type 19 10,1,0,4097 | type 12 10:00000003"},
  };
  for (const auto &row : rows) {
    empty_cache();
    standin_fail(STANDIN_MEMBERSHIP, row.first, row.times);
    EXPECT_EQ(command(STP_MCEC_CMD_IF_EDGE_TRUNK, set_form, {all}), row.outcome);
    log();
  }
  // A member beyond the counted number ends the pass: it is not cached, later ports are not
  // queried.
  EXPECT_EQ(cached(0x1001, 10), "00000003");
  EXPECT_EQ(cached(0x1003, 10), "-");
  const uint32_t before = standin_calls(STANDIN_MEMBERSHIP);
  standin_fail(STANDIN_MEMBERSHIP, 2, 1);
  command(STP_MCEC_CMD_IF_EDGE_TRUNK, set_form, {ports({0x1000, 0x1003, 0x1000, 0x1000})});
  EXPECT_EQ(standin_calls(STANDIN_MEMBERSHIP) - before, 5U + 4U);
}

TEST_F(Extract, FiveThousandPortsHaveOneEntry) {
  standin_add_ports(0x10000, 0x10000 + 4999, 26, 2);
  for (uint32_t port = 0x10000; port < 0x10000 + 5000; ++port) standin_set_member(port, 9);
  const std::string outcome =
      command(STP_MCEC_CMD_IF_EDGE_TRUNK, set_form, {ports({0x10000, 0x10000 + 4999})});
  EXPECT_TRUE(
      outcome.starts_with("0 | ok | cmd 1 count 5000 | type 19 10,1,0,65536 10,1,0,65537 "));
  EXPECT_TRUE(outcome.ends_with(" 10,1,0,70535 | type 12 10:00000003"));
  for (uint32_t port = 0x10000; port < 0x10000 + 5000; ++port) {
    stp_mcec_type1_cfg_delete_cache_node(10, port);
  }
}

// --- update messages ---

const std::string upd_op = "stp_mcec_param_extractor_from_stp_type1_upd: ";

TEST_F(Extract, UpdateCachesAndReturnsItsEntries) {
  cache(7, 11, {9, 9, 9, 9, 9, 9});
  EXPECT_EQ(update(3, 7, {{10, word(0)}, {11, word(2)}, {13, {}}}),
            "0 | | cmd 0 count 3 | type 20 10,1,3,7 11,1,3,7 13,1,3,7 | "
            "type 13 10:00000000 11:00000002 13:");
  EXPECT_EQ(cached(7, 10), "00000000");
  EXPECT_EQ(cached(7, 11), "000000020000");
  EXPECT_EQ(log(), (Lines{entry_op + "type-1 param extractor",
                          entry_op + "type-1 (" + mts_opc_name_get(STP_MCEC_MTS_OPC_TYPE1_UPD) +
                              ") param extractor",
                          upd_op + "updating type=10, len=4 (is_default=1)",
                          upd_op + "updating type=11, len=4 (is_default=0)",
                          upd_op + "updating type=13, len=0 (is_default=0)"}));
  // A value shorter than its default test reads is not the default.
  EXPECT_EQ(
      update(1, 0,
             {{6, {0}}, {4, {0, 0, 0}}, {3, {}}, {3, Bytes(1)}, {2, Bytes(515)}, {5, Bytes(8192)}})
          .substr(0, 26),
      "0 | | cmd 0 count 6 | type");
  EXPECT_EQ(log(2), (Lines{upd_op + "updating type=6, len=1 (is_default=0)",
                           upd_op + "updating type=4, len=3 (is_default=0)",
                           upd_op + "updating type=3, len=0 (is_default=0)",
                           upd_op + "updating type=3, len=1 (is_default=1)",
                           upd_op + "updating type=2, len=515 (is_default=0)",
                           upd_op + "updating type=5, len=8192 (is_default=1)"}));
}

TEST_F(Extract, UpdateEndsAtTheLengthInItsHeader) {
  const uint32_t one = 4 + tlv_aligned_data_size_get(4);
  for (uint32_t length = 2 * one - 5; length >= 4; --length) {
    const bool is_first_within = length >= one;
    EXPECT_EQ(update(1, 0, {{6, word(1)}, {7, word(2)}}, length),
              is_first_within ? "40dd0003 | | cmd 0 count 2 | type 20 6,1,1,0 0,0,0,0 |"
                              : "40dd0003 | | cmd 0 count 2 | type 20 0,0,0,0 0,0,0,0 |")
        << length;
    EXPECT_EQ(log().back(), upd_op + "Failed (rc=0x40dd0003, " +
                                syserr2str(STP_MCEC_ERR_INVALID_ARG) + ") to retrieve tlv");
    EXPECT_EQ(cached(0, 6), is_first_within ? "00000001" : "-");
    EXPECT_EQ(cached(0, 7), "-");
    empty_cache();
  }
}

}  // namespace
