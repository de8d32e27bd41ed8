// Extraction: what a command or an update message would set, how the command is answered, and what
// each failure leaves behind.
//
// Outcomes are written "result | answers | is_cmd and count | records | array", see support.h.

#include "mts.h"
#include "support.h"
#include "syserr.h"

namespace {

using namespace test;

struct Extract : LibraryTest {
  void SetUp() override {
    LibraryTest::SetUp();
    standin_add_ports(0x1000, 0x1003, 26, 2);
    standin_set_member(0x1001, 11);
    standin_set_member(0x1003, 13);
  }
};

const std::string entry_op = "stp_mcec_type1_cfg_param_extractor: ";
const std::string cli_op = "stp_mcec_param_extractor_from_cli: ";

Attribute mode(uint32_t value) {
  return {STP_MCEC_ATTR_STP_MODE, host_words({value})};
}

// Pairs of first and last VLAN.
Attribute vlan_list(std::vector<uint32_t> ranges) {
  std::vector<uint32_t> words = {0xDEAD, uint32_t(ranges.size() / 2)};
  words.insert(words.end(), ranges.begin(), ranges.end());
  return {STP_MCEC_ATTR_VLAN_LIST, host_words(words)};
}

Attribute ports(std::vector<uint32_t> ranges) {
  std::vector<uint32_t> words = {0xDEAD, uint32_t(ranges.size() / 2), 0xDEAD, 0xDEAD};
  words.insert(words.end(), ranges.begin(), ranges.end());
  return {STP_MCEC_ATTR_IFINDEX, host_words(words)};
}

Attribute cut(Attribute attribute, std::size_t length) {
  attribute.value.resize(length);
  return attribute;
}

std::string set_one(int type, int records, int tlv_array, const std::string &value) {
  const std::string number = std::to_string(type);
  return "0 | ok | cmd 1 count 1 | type " + std::to_string(records) + " " + number +
         ",1,1,0 | type " + std::to_string(tlv_array) + " " + number + ":" + value;
}

// --- entry and dispatch ---

TEST_F(Extract, UnknownMessagesAndCommandsAreNotAnswered) {
  const Message other(standin_message(5, "x", 1));
  EXPECT_EQ(extract(other.msg), "40dd0003 | | | |");
  EXPECT_EQ(log(), Lines{entry_op + "type-1 param extractor"});
  const Message no_request(standin_message(7682, "x", 1));
  EXPECT_EQ(extract(no_request.msg), "40dd0003 | | | |");
  EXPECT_EQ(log(), (Lines{entry_op + "type-1 param extractor",
                          entry_op + "Failed to get CMI (TLV) request handle"}));
  for (const uint32_t id : {0U, 3U, 14U, 44U, 51U, 63U, 0xFFFFFFFFU}) {
    EXPECT_EQ(command(id, true), "40dd0003 | | count 0 | |") << id;
    EXPECT_EQ(log(), (Lines{entry_op + "type-1 param extractor", cli_op + "CLI extractor"}));
  }
}

TEST_F(Extract, HandlesAboveTheLimitAreNotBuilt) {
  ON_STANDIN_ONLY();
  standin_handle_size(64 * 1024);
  EXPECT_EQ(command(21, true), set_one(6, 18, 11, "00000001"));
  standin_handle_size(64 * 1024 + 1);
  EXPECT_EQ(command(21, true), "40dd0003 | | | |");
  standin_handle_size(0xFFFFFFFF);
  EXPECT_EQ(command(21, true), "40dd0003 | | | |");
}

TEST_F(Extract, WithoutATrunkOnlyInterfaceCommandsAreExtracted) {
  standin_set_trunk(0);
  for (const uint32_t id : {1U, 2U, 18U, 19U, 20U, 21U, 43U, 45U, 46U, 49U, 62U}) {
    EXPECT_EQ(command(id, true), "0 | ok | count 0 | |") << id;
  }
  EXPECT_EQ(standin_live_blocks(STANDIN_ALL_TYPES), 0U);
  EXPECT_EQ(command(13, true, {ports({0x1001, 0x1001})}),
            "0 | ok | cmd 1 count 1 | type 19 10,1,0,4097 | type 12 10:00000001");
}

// --- commands of the switch ---

TEST_F(Extract, ModeIsSetUnlessTooManyVlansForbidIt) {
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
    EXPECT_EQ(command(1, row.positive, row.attributes), row.outcome);
    EXPECT_EQ(cached(0, 1),
              row.outcome == refused ? before : row.outcome.substr(row.outcome.size() - 8));
  }
}

TEST_F(Extract, ModeLogsWhatItDoes) {
  const std::string op = "stp_mcec_extract_stp_mode_param: ";
  const Lines head = {entry_op + "type-1 param extractor", cli_op + "CLI extractor",
                      op + "Extract stp mode", op + "Changing to mode 4"};
  for (const char *line : {"added avl node for stp mode", "Found avl node"}) {
    command(1, true, {mode(4)});
    Lines expected = head;
    expected.push_back(op + line);
    EXPECT_EQ(log(), expected);
  }
}

TEST_F(Extract, DisabledVlansAreCachedAndHandedOutWhole) {
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
    EXPECT_EQ(command(2, row.enable, {vlan_list(row.list)}),
              set_one(2, 14, 7, hex(vlans(row.outcome))));
    EXPECT_EQ(cached(0, 2), hex(vlans(row.outcome)));
    log();
  }
  stp_mcec_type1_cfg_delete_cache_node(2, 0);
  command(2, false, {vlan_list({100, 101})});
  Lines lines = log();
  EXPECT_EQ(Lines(lines.begin() + 2, lines.end()),
            (Lines{op + "extract enable/disable STP", op + "Disable STP on vlans 100-101",
                   op + "added avl node for disable STP", op + "Adding disabled stp TLV"}));
  command(2, true, {vlan_list({101, 200})});
  lines = log();
  EXPECT_EQ(Lines(lines.begin() + 3, lines.end()),
            (Lines{op + "Enable STP on vlans 101-200", op + "Found avl node vlans: 100-101",
                   op + "Update vlans: 100", op + "Adding disabled stp TLV"}));
}

TEST_F(Extract, ListsThatReachPastTheirAttributeCountAsMissing) {
  cache(0, 2, vlans("10"));
  const std::string no_vlans = "40dd0003 | internal error: Failed to get vlan | count 0 | |";
  const std::string no_ports = "40dd0003 | internal error: Failed to get IFINDEX | count 0 | |";
  EXPECT_EQ(command(2, false), no_vlans);
  EXPECT_EQ(log().back(), "stp_mcec_extract_stp_endis_param: Invalid arg");
  EXPECT_EQ(command(13, true), no_ports);
  const Attribute list = vlan_list({20, 30, 40, 50});
  const Attribute range_list = ports({0x1000, 0x1001, 0x1003, 0x1003});
  for (std::size_t length = 0; length < list.value.size(); ++length) {
    EXPECT_EQ(command(2, false, {cut(list, length)}), no_vlans) << length;
  }
  for (std::size_t length = 0; length < range_list.value.size(); ++length) {
    EXPECT_EQ(command(13, true, {cut(range_list, length)}), no_ports) << length;
  }
  const Attribute no_range = ports({});  // ends behind its count at the earliest
  for (std::size_t length = 0; length <= no_range.value.size(); ++length) {
    EXPECT_EQ(command(STP_MCEC_CMD_IF_PORT_MODE, true, {cut(no_range, length)}),
              length < 8 ? no_ports : "0 | ok | count 0 | |")
        << length;
  }
  Attribute huge = list;
  huge.value[7] = 0x80;
  EXPECT_EQ(command(2, false, {huge}), no_vlans);
  EXPECT_EQ(cached(0, 2), hex(vlans("10")));
  EXPECT_EQ(cached(0x1001, 10), "-");
}

TEST_F(Extract, RegionResetReturnsWhatIsCachedToItsDefault) {
  EXPECT_EQ(command(43, true), "0 | ok | count 0 | |");
  const std::string zeros32(64, '0');
  const std::string zeros80(160, '0');
  const std::string op = "stp_mcec_extract_reset_mst_region_cfg: ";
  Bytes map(8192, 1);
  cache(0, 3, name("east"));
  cache(0, 5, map);
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(command(43, false), "0 | ok | cmd 1 count 2 | type 15 3,1,1,0 5,1,1,0 | type 8 3:" +
                                      zeros32 + " 5:" + zeros80);
  }
  EXPECT_EQ(cached(0, 3), zeros32);
  EXPECT_EQ(cached(0, 5), std::string(2 * 8192, '0'));
  EXPECT_EQ(cached(0, 4), "-");
  cache(0, 4, word(9));
  log();
  EXPECT_EQ(command(43, true),
            "0 | ok | cmd 1 count 3 | type 15 3,1,1,0 4,1,1,0 5,1,1,0 | type 8 3:" + zeros32 +
                " 4:00000000 5:" + zeros80);
  const Lines lines = log();
  EXPECT_EQ(
      Lines(lines.begin() + 2, lines.end()),
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
  } rows[] = {{21, 6, "Loopguard"}, {46, 7, "BA"}, {49, 9, "BA"}};
  for (const auto &row : rows) {
    for (const bool positive : {true, false}) {
      const std::string value = positive ? "00000001" : "00000000";
      EXPECT_EQ(command(row.id, positive), set_one(row.type, 18, 11, value));
      EXPECT_EQ(cached(0, uint16_t(row.type)), value);
      const Lines lines = log();
      EXPECT_EQ(Lines(lines.begin() + 2, lines.end()),
                (Lines{op + "extract gbl params", op + "Global " + row.word + " changed to " +
                                                      (positive ? "True" : "False")}));
    }
  }
  EXPECT_EQ(command(62, true), "40dd0003 | Invalid command ID 62 | count 0 | |");
  EXPECT_EQ(log().back(), op + "Invalid cmd id 62");
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
      // The array carries the whole word also where the cached block holds only a part of it.
      if (value.size() == 2) tlv = "00000010";
      if (value.size() == 1) tlv = "08000010";
    }
    EXPECT_EQ(command(row.id, row.positive), set_one(8, 17, 10, tlv));
    EXPECT_EQ(cached(0, 8), tlv.substr(0, std::string(row.outcome).size()));
    log();
  }
  command(18, true);
  const Lines lines = log();
  EXPECT_EQ(Lines(lines.begin() + 2, lines.end()),
            (Lines{op + "extract gbl port type", op + "Global port type before change to 0x8000000",
                   op + "Global port type changed to 0x8000001"}));
}

// --- interface commands ---

TEST_F(Extract, InterfaceValuesComeFromFormAndAttributes) {
  const auto attribute = [](uint32_t id, uint32_t value) {
    return Attribute{id, host_words({value})};
  };
  const struct {
    uint32_t id;
    bool positive;
    std::vector<Attribute> attributes;
    int type;
    int value;  // -1: refused
    const char *line = "";
  } rows[] = {
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
  for (const auto &row : rows) {
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

TEST_F(Extract, EveryMemberPortIsARecord) {
  const std::string op = "stp_mcec_extract_if_params: ";
  standin_set_void_member(0x1002, 12);
  cache(0x1001, 11, {9});
  EXPECT_EQ(command(17, true,
                    {ports({0x1003, 0x1003, 0x1002, 0x1000, 0x1000, 0x1002}),
                     {STP_MCEC_ATTR_IF_GUARD, host_words({2})}}),
            "0 | ok | cmd 1 count 2 | type 19 11,1,0,4099 11,1,0,4097 | type 12 11:00000002");
  EXPECT_EQ(cached(0x1003, 11), "00000002");
  EXPECT_EQ(cached(0x1001, 11), "00");
  EXPECT_EQ(cached(0x1002, 11), "-");
  const Lines lines = log();
  EXPECT_EQ(Lines(lines.begin() + 2, lines.end()),
            (Lines{op + "extract interface params",
                   "stp_mcec_extract_if_param_val: extract interface params",
                   op + "param_val=2, param_type=11", op + "total_if_count=2",
                   op + "port 0x1003 is MCEC (ID 13)", op + "created avl node",
                   op + "port 0x1001 is MCEC (ID 11)", op + "found avl node"}));
  for (const auto &none : {ports({}), ports({0x1000, 0x1000}), ports({0x1003, 0x1001})}) {
    EXPECT_EQ(command(17, true, {none}), "0 | ok | count 0 | |");
    EXPECT_EQ(log().back(), op + "total_if_count=0");
  }
}

TEST_F(Extract, PodPortsOnInternalChannelsAreNotChecked) {
  standin_set_pod_port(0x1001, 1);
  const auto both = ports({0x1001, 0x1001, 0x1003, 0x1003});
  EXPECT_EQ(command(48, true, {both}).substr(0, 23), "0 | ok | cmd 1 count 2 ");
  empty_cache();
  log();
  standin_set_internal(11, 1);
  EXPECT_EQ(command(48, true, {both}), "0 | ok | count 0 | |");
  EXPECT_EQ(log().back(), "No Type-1 checks for HIF ports\\");
  EXPECT_EQ(cached(0x1003, 10), "-");
  // Only the first port is asked about; one that is no member is on no channel.
  standin_set_pod_port(0x1000, 1);
  EXPECT_EQ(command(48, true, {ports({0x1000, 0x1001})}).substr(0, 23), "0 | ok | cmd 1 count 1 ");
  EXPECT_EQ(command(48, true, {ports({0x1003, 0x1003, 0x1001, 0x1001})}).substr(0, 23),
            "0 | ok | cmd 1 count 2 ");
}

TEST_F(Extract, MembershipMayChangeBetweenThePasses) {
  ON_STANDIN_ONLY();
  const auto all = ports({0x1000, 0x1003});
  // Four questions to count, four to fill: which of them find no member?
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
    EXPECT_EQ(command(48, true, {all}), row.outcome);
    log();
  }
  // A member beyond the counted ones ends the pass: it is not cached, and no port behind it asked.
  EXPECT_EQ(cached(0x1001, 10), "00000003");
  EXPECT_EQ(cached(0x1003, 10), "-");
  const uint32_t before = standin_calls(STANDIN_MEMBERSHIP);
  standin_fail(STANDIN_MEMBERSHIP, 2, 1);
  command(48, true, {ports({0x1000, 0x1003, 0x1000, 0x1000})});
  EXPECT_EQ(standin_calls(STANDIN_MEMBERSHIP) - before, 5U + 4U);
}

TEST_F(Extract, FiveThousandPortsAreOneEntry) {
  standin_add_ports(0x10000, 0x10000 + 4999, 26, 2);
  for (uint32_t port = 0x10000; port < 0x10000 + 5000; ++port) standin_set_member(port, 9);
  const std::string outcome = command(48, true, {ports({0x10000, 0x10000 + 4999})});
  EXPECT_TRUE(
      outcome.starts_with("0 | ok | cmd 1 count 5000 | type 19 10,1,0,65536 10,1,0,65537 "));
  EXPECT_TRUE(outcome.ends_with(" 10,1,0,70535 | type 12 10:00000003"));
  for (uint32_t port = 0x10000; port < 0x10000 + 5000; ++port) {
    stp_mcec_type1_cfg_delete_cache_node(10, port);
  }
}

// --- update messages ---

const std::string update_op = "stp_mcec_param_extractor_from_stp_type1_upd: ";

TEST_F(Extract, UpdateStoresAndHandsOutWhatItCarries) {
  cache(7, 11, {9, 9, 9, 9, 9, 9});
  EXPECT_EQ(update(3, 7, {{10, word(0)}, {11, word(2)}, {13, {}}}),
            "0 | | cmd 0 count 3 | type 20 10,1,3,7 11,1,3,7 13,1,3,7 | "
            "type 13 10:00000000 11:00000002 13:");
  EXPECT_EQ(cached(7, 10), "00000000");
  EXPECT_EQ(cached(7, 11), "000000020000");
  EXPECT_EQ(log(), (Lines{entry_op + "type-1 param extractor",
                          entry_op + "type-1 (" + mts_opc_name_get(STP_MCEC_MTS_OPC_TYPE1_UPD) +
                              ") param extractor",
                          update_op + "updating type=10, len=4 (is_default=1)",
                          update_op + "updating type=11, len=4 (is_default=0)",
                          update_op + "updating type=13, len=0 (is_default=0)"}));
  // A value that is shorter than what its default test reads is not the default.
  EXPECT_EQ(
      update(1, 0,
             {{6, {0}}, {4, {0, 0, 0}}, {3, {}}, {3, Bytes(1)}, {2, Bytes(515)}, {5, Bytes(8192)}})
          .substr(0, 26),
      "0 | | cmd 0 count 6 | type");
  const Lines lines = log();
  EXPECT_EQ(Lines(lines.begin() + 2, lines.end()),
            (Lines{update_op + "updating type=6, len=1 (is_default=0)",
                   update_op + "updating type=4, len=3 (is_default=0)",
                   update_op + "updating type=3, len=0 (is_default=0)",
                   update_op + "updating type=3, len=1 (is_default=1)",
                   update_op + "updating type=2, len=515 (is_default=0)",
                   update_op + "updating type=5, len=8192 (is_default=1)"}));
}

TEST_F(Extract, UpdatesWithoutParametersAreRefused) {
  const struct {
    Bytes payload;
    Lines lines;
  } rows[] = {
      {update_payload(1, 0, 0, array({{1, word(5)}})), {update_op + "Invalid param len=0"}},
      {update_payload(1, 0, 4, array({})), {}},
  };
  for (const auto &row : rows) {
    const Message message(
        standin_message(STP_MCEC_MTS_OPC_TYPE1_UPD, row.payload.data(), row.payload.size()));
    EXPECT_EQ(extract(message.msg), "40dd0003 | | | |");
    const Lines lines = log();
    EXPECT_EQ(Lines(lines.begin() + 2, lines.end()), row.lines);
  }
  const Message bare(standin_message(STP_MCEC_MTS_OPC_TYPE1_UPD, nullptr, 0));
  EXPECT_EQ(extract(bare.msg), "40dd0003 | | | |");
  EXPECT_EQ(log().back(), update_op + "null payload");
}

TEST_F(Extract, UpdateEndsWhereItsHeaderSays) {
  const Bytes made = array({{6, word(1)}, {7, word(2)}});
  const uint32_t one = 4 + tlv_aligned_data_size_get(4);
  for (auto length = uint32_t(made.size() - 1); length >= 4; --length) {
    const Bytes payload = update_payload(1, 0, length, made);
    const Message message(
        standin_message(STP_MCEC_MTS_OPC_TYPE1_UPD, payload.data(), payload.size()));
    const bool first_lies_within = length >= one;
    EXPECT_EQ(extract(message.msg), first_lies_within
                                        ? "40dd0003 | | cmd 0 count 2 | type 20 6,1,1,0 0,0,0,0 |"
                                        : "40dd0003 | | cmd 0 count 2 | type 20 0,0,0,0 0,0,0,0 |")
        << length;
    EXPECT_EQ(log().back(), update_op + "Failed (rc=0x40dd0003, " +
                                syserr2str(STP_MCEC_ERR_INVALID_ARG) + ") to retrieve tlv");
    EXPECT_EQ(cached(0, 6), first_lies_within ? "00000001" : "-");
    EXPECT_EQ(cached(0, 7), "-");
    empty_cache();
  }
}

// --- sub-extractors called directly ---

TEST_F(Extract, SubExtractorsRefuseCommandsOfOthers) {
  using Extractor = uint32_t (*)(void *, uint32_t, uint8_t **, uint32_t *, uint32_t *,
                                 mcecm_app_cmd_extract_info_t **);
  const struct {
    Extractor extractor;
    const char *answer;  // nullptr: none
    const char *line;
  } rows[] = {
      {stp_mcec_extract_stp_mode_param, "Invalid cmd id 9\n", "Invalid cmd id 9"},
      {stp_mcec_extract_stp_endis_param, "Invalid Command ID 9", "Invalid cmd id 9"},
      {stp_mcec_extract_reset_mst_region_cfg, nullptr, "Invalid cmd id 9"},
      {stp_mcec_extract_gbl_params, "Invalid command ID 9", "Invalid cmd id 9"},
      {stp_mcec_extract_gbl_port_type_param, "Invalid command ID 9", "Invalid cmd id 9"},
      {stp_mcec_extract_if_params, "internal error: Failed to get param val\n",
       "extract interface params"},
  };
  for (const auto &row : rows) {
    const Message message(standin_command(9, 1, nullptr, 0));
    void *handle = standin_handle(message.msg);
    standin_answers_clear();
    uint32_t count = 3;
    EXPECT_EQ(row.extractor(handle, 9, nullptr, &count, nullptr, nullptr),
              uint32_t{STP_MCEC_ERR_INVALID_ARG});
    EXPECT_EQ(count, 3U);
    EXPECT_EQ(standin_answer_count(), row.answer != nullptr ? 1U : 0U);
    if (row.answer != nullptr) {
      EXPECT_STREQ(standin_answer_at(0).text, row.answer);
    }
    EXPECT_TRUE(log().back().ends_with(std::string(": ") + row.line));
    standin_handle_free(handle);
  }
}

TEST_F(Extract, InterfaceValueTellsTheNegatingForm) {
  for (const bool positive : {true, false}) {
    const Message message(standin_command(48, positive ? 1 : 0, nullptr, 0));
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
