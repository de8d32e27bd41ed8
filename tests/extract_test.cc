// Extraction from commands of the switch. Outcomes are "result | answers | is_cmd and count |
// records | array", see support.h.

#include "extract.h"

#include "mts.h"
#include "syserr.h"

namespace {

using namespace test;

TEST_F(Extract, HandlesAboveTheLimitAreNotBuilt) {
  standin_handle_size(64 * 1024);
  EXPECT_EQ(command(STP_MCEC_CMD_GBL_LOOPGUARD, set_form), set_one(6, 18, 11, "00000001"));
  standin_handle_size(64 * 1024 + 1);
  EXPECT_EQ(command(STP_MCEC_CMD_GBL_LOOPGUARD, set_form), "40dd0003 | | | |");
  standin_handle_size(0xFFFFFFFF);
  EXPECT_EQ(command(STP_MCEC_CMD_GBL_LOOPGUARD, set_form), "40dd0003 | | | |");
}

TEST_F(Extract, WithoutATrunkOnlyInterfaceCommandsAreExtracted) {
  standin_set_trunk(0);
  const uint32_t switch_commands[] = {STP_MCEC_CMD_STP_MODE,
                                      STP_MCEC_CMD_STP_ENDIS,
                                      STP_MCEC_CMD_GBL_EDGE,
                                      STP_MCEC_CMD_GBL_EDGE_BPDUGUARD,
                                      STP_MCEC_CMD_GBL_EDGE_BPDUFILTER,
                                      STP_MCEC_CMD_GBL_LOOPGUARD,
                                      STP_MCEC_CMD_MST_REGION_RESET,
                                      STP_MCEC_CMD_GBL_NETWORK,
                                      STP_MCEC_CMD_GBL_BRIDGE_ASSURANCE,
                                      STP_MCEC_CMD_GBL_MST_SIMULATE_PVST,
                                      routed_command};
  for (const uint32_t id : switch_commands) {
    EXPECT_EQ(command(id, set_form), "0 | ok | count 0 | |") << id;
  }
  EXPECT_EQ(standin_live_blocks(STANDIN_ALL_TYPES), 0U);
  EXPECT_EQ(command(STP_MCEC_CMD_IF_PORT_MODE, set_form, {ports({0x1001, 0x1001})}),
            "0 | ok | cmd 1 count 1 | type 19 10,1,0,4097 | type 12 10:00000001");
}

// --- commands of the switch ---

TEST_F(Extract, RapidPvstIsRefusedWithTooManyUserVlans) {
  const std::string refused =
      "ffffffff | PVRST mode is not supported when there are more than 507 user VLANs configured\n"
      " | count 0 | |";
  const struct {
    bool positive;
    std::vector<Attribute> attributes;
    uint32_t user_vlans;
    std::string outcome;
  } rows[] = {
      {true, {mode(4)}, 0, set_one(1, 16, 9, "00000004")},
      {true, {mode(5)}, 507, set_one(1, 16, 9, "00000005")},
      {true, {mode(5)}, 508, refused},
      {true, {}, 508, refused},
      {false, {mode(4)}, 508, refused},
      {true, {cut(mode(4), 3)}, 508, refused},
      {true, {mode(4)}, 600, set_one(1, 16, 9, "00000004")},
      {true, {mode(0x01020304)}, 600, set_one(1, 16, 9, "01020304")},
      {false, {mode(4)}, 0, set_one(1, 16, 9, "00000005")},
      {true, {cut(mode(4), 3)}, 0, set_one(1, 16, 9, "00000005")},
      {true, {{STP_MCEC_ATTR_STP_MODE, host_words({4, 9})}}, 0, set_one(1, 16, 9, "00000004")},
  };
  for (const auto &row : rows) {
    standin_clear_user_vlans();
    if (row.user_vlans > 0) standin_add_user_vlans(1, row.user_vlans);
    cache(0, 1, word(7));
    const std::string before = cached(0, 1);
    EXPECT_EQ(command(STP_MCEC_CMD_STP_MODE, row.positive, row.attributes), row.outcome);
    EXPECT_EQ(cached(0, 1),
              row.outcome == refused ? before : row.outcome.substr(row.outcome.size() - 8));
  }
}

TEST_F(Extract, ModeLogsItsSteps) {
  const std::string op = "stp_mcec_extract_stp_mode_param: ";
  const Lines head = {entry_op + "type-1 param extractor", cli_op + "CLI extractor",
                      op + "Extract stp mode", op + "Changing to mode 4"};
  for (const char *line : {"added avl node for stp mode", "Found avl node"}) {
    command(STP_MCEC_CMD_STP_MODE, set_form, {mode(4)});
    Lines expected = head;
    expected.push_back(op + line);
    EXPECT_EQ(log(), expected);
  }
}

TEST_F(Extract, DisabledVlansAreCachedAndReturned) {
  const std::string op = "stp_mcec_extract_stp_endis_param: ";
  const struct {
    const char *cached;
    bool enable;
    std::vector<uint32_t> list;
    const char *outcome;
  } rows[] = {
      {nullptr, false, {100, 100}, "100"},
      {nullptr, true, {100, 100}, ""},
      {"10-20", false, {30, 40}, "10-20,30-40"},
      {"10-20", true, {15, 25}, "10-14"},
      {"10-20", true, {}, "10-20"},
      {"10-20", false, {25, 15}, "10-20"},
      {"5", false, {4090, 5000}, "5,4090-4095"},
      {"5", true, {4096, 0xFFFFFFFF}, "5"},
      {"", false, {0, 0xFFFFFFFF}, "0-4095"},
      {"0-4095", true, {0, 0, 64, 127, 4095, 4095}, "1-63,128-4094"},
  };
  for (const auto &row : rows) {
    stp_mcec_type1_cfg_delete_cache_node(2, 0);
    if (row.cached != nullptr) cache(0, 2, vlans(row.cached));
    EXPECT_EQ(command(STP_MCEC_CMD_STP_ENDIS, row.enable, {vlan_list(row.list)}),
              set_one(2, 14, 7, hex(vlans(row.outcome))));
    EXPECT_EQ(cached(0, 2), hex(vlans(row.outcome)));
    log();
  }
  stp_mcec_type1_cfg_delete_cache_node(2, 0);
  command(STP_MCEC_CMD_STP_ENDIS, no_form, {vlan_list({100, 101})});
  EXPECT_EQ(log(2), (Lines{op + "extract enable/disable STP", op + "Disable STP on vlans 100-101",
                           op + "added avl node for disable STP", op + "Adding disabled stp TLV"}));
  command(STP_MCEC_CMD_STP_ENDIS, set_form, {vlan_list({101, 200})});
  EXPECT_EQ(log(3), (Lines{op + "Enable STP on vlans 101-200", op + "Found avl node vlans: 100-101",
                           op + "Update vlans: 100", op + "Adding disabled stp TLV"}));
}

TEST_F(Extract, ListsLongerThanTheirAttributeAreMissing) {
  cache(0, 2, vlans("10"));
  const std::string no_vlans = "40dd0003 | internal error: Failed to get vlan | count 0 | |";
  const std::string no_ports = "40dd0003 | internal error: Failed to get IFINDEX | count 0 | |";
  const Attribute list = vlan_list({20, 30, 40, 50});
  const Attribute range_list = ports({0x1000, 0x1001, 0x1003, 0x1003});
  for (std::size_t length = 0; length < list.value.size(); ++length) {
    EXPECT_EQ(command(STP_MCEC_CMD_STP_ENDIS, no_form, {cut(list, length)}), no_vlans) << length;
  }
  for (std::size_t length = 0; length < range_list.value.size(); ++length) {
    EXPECT_EQ(command(STP_MCEC_CMD_IF_PORT_MODE, set_form, {cut(range_list, length)}), no_ports)
        << length;
  }
  const Attribute no_range = ports({});  // valid if it contains the count
  for (std::size_t length = 0; length <= no_range.value.size(); ++length) {
    EXPECT_EQ(command(STP_MCEC_CMD_IF_PORT_MODE, set_form, {cut(no_range, length)}),
              length < 8 ? no_ports : "0 | ok | count 0 | |")
        << length;
  }
  Attribute huge = list;
  huge.value[7] = 0x80;
  EXPECT_EQ(command(STP_MCEC_CMD_STP_ENDIS, no_form, {huge}), no_vlans);
  EXPECT_EQ(cached(0, 2), hex(vlans("10")));
  EXPECT_EQ(cached(0x1001, 10), "-");
}

TEST_F(Extract, RegionResetSetsCachedValuesToDefaults) {
  EXPECT_EQ(command(STP_MCEC_CMD_MST_REGION_RESET, set_form), "0 | ok | count 0 | |");
  const std::string zeros32(64, '0');
  const std::string zeros80(160, '0');
  const std::string op = "stp_mcec_extract_reset_mst_region_cfg: ";
  Bytes map(8192, 1);
  cache(0, 3, name("east"));
  cache(0, 5, map);
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(
        command(STP_MCEC_CMD_MST_REGION_RESET, no_form),
        "0 | ok | cmd 1 count 2 | type 15 3,1,1,0 5,1,1,0 | type 8 3:" + zeros32 + " 5:" + zeros80);
  }
  EXPECT_EQ(cached(0, 3), zeros32);
  EXPECT_EQ(cached(0, 5), std::string(2 * 8192, '0'));
  EXPECT_EQ(cached(0, 4), "-");
  cache(0, 4, word(9));
  log();
  EXPECT_EQ(command(STP_MCEC_CMD_MST_REGION_RESET, set_form),
            "0 | ok | cmd 1 count 3 | type 15 3,1,1,0 4,1,1,0 5,1,1,0 | type 8 3:" + zeros32 +
                " 4:00000000 5:" + zeros80);
  EXPECT_EQ(
      log(2),
      (Lines{op + "Reset MST Region Config", op + "Found avl node",
             op + "Default MST Region Config Name, deleting avl node", op + "Found avl node",
             op + "Default MST Region Config Revision, deleting avl node", op + "Found avl node",
             op + "Default MST Region Config VI Map, deleting avl node"}));
}

TEST_F(Extract, GlobalSettingsAreOnOrOff) {
  const std::string op = "stp_mcec_extract_gbl_params: ";
  const struct {
    uint32_t id;
    int type;
    const char *word;
  } rows[] = {{STP_MCEC_CMD_GBL_LOOPGUARD, 6, "Loopguard"},
              {STP_MCEC_CMD_GBL_BRIDGE_ASSURANCE, 7, "BA"},
              {STP_MCEC_CMD_GBL_MST_SIMULATE_PVST, 9, "BA"}};
  for (const auto &row : rows) {
    for (const bool positive : {true, false}) {
      const std::string value = positive ? "00000001" : "00000000";
      EXPECT_EQ(command(row.id, positive), set_one(row.type, 18, 11, value));
      EXPECT_EQ(cached(0, uint16_t(row.type)), value);
      EXPECT_EQ(log(2),
                (Lines{op + "extract gbl params", op + "Global " + row.word + " changed to " +
                                                      (positive ? "True" : "False")}));
    }
  }
}

TEST_F(Extract, GlobalPortTypeChangesOneFlag) {
  const std::string op = "stp_mcec_extract_gbl_port_type_param: ";
  const struct {
    const char *cached;
    uint32_t id;
    bool positive;
    const char *outcome;
  } rows[] = {
      {nullptr, 18, true, "00000001"},     {nullptr, 18, false, "00000010"},
      {"00000001", 45, true, "00000008"},  {"00000008", 45, false, "00000010"},
      {nullptr, 20, true, "00000014"},     {"00000001", 19, true, "00000003"},
      {"00000003", 19, false, "00000001"}, {"0000000c", 18, true, "00000005"},
      {"ffffffff", 18, false, "ffffffee"}, {"80000011", 45, true, "80000008"},
      {"0000", 20, false, "0000"},         {"08", 45, false, "00"},
  };
  for (const auto &row : rows) {
    stp_mcec_type1_cfg_delete_cache_node(8, 0);
    std::string tlv = row.outcome;
    if (row.cached != nullptr) {
      Bytes value;
      for (std::size_t i = 0; row.cached[i] != 0; i += 2) {
        value.push_back(uint8_t(std::stoul(std::string(row.cached + i, 2), nullptr, 16)));
      }
      cache(0, 8, value);
      // The array has the whole word even if the cached block is shorter.
      if (value.size() == 2) tlv = "00000010";
      if (value.size() == 1) tlv = "08000010";
    }
    EXPECT_EQ(command(row.id, row.positive), set_one(8, 17, 10, tlv));
    EXPECT_EQ(cached(0, 8), tlv.substr(0, std::string(row.outcome).size()));
    log();
  }
  command(STP_MCEC_CMD_GBL_EDGE, set_form);
  EXPECT_EQ(log(2),
            (Lines{op + "extract gbl port type", op + "Global port type before change to 0x8000000",
                   op + "Global port type changed to 0x8000001"}));
}

TEST_F(Extract, InterfaceValueReportsTheNegativeForm) {
  for (const bool positive : {true, false}) {
    const Message message(
        standin_command(STP_MCEC_CMD_IF_EDGE_TRUNK, positive ? 1 : 0, nullptr, 0));
    void *handle = standin_handle(message.msg);
    uint32_t value = 77;
    uint16_t type = 77;
    uint32_t is_del = 77;
    EXPECT_EQ(stp_mcec_extract_if_param_val(handle, 1, &value, &type, &is_del),
              uint32_t{STP_MCEC_ERR_INVALID_ARG});
    EXPECT_EQ(value + type + is_del, 3 * 77U);
    EXPECT_EQ(stp_mcec_extract_if_param_val(handle, 48, &value, &type, &is_del), 0U);
    EXPECT_EQ(value, positive ? 3U : 0U);
    EXPECT_EQ(type, 10U);
    EXPECT_EQ(is_del, positive ? 77U : 1U);
    standin_handle_free(handle);
  }
}

}  // namespace
