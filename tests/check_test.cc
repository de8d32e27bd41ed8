// Checks: the first difference, the parameters of each mode, twin VLANs.

#include <set>

#include "support.h"

namespace {

using namespace test;

const std::string common = "stp_mcec_type1_cfg_compat_check_common: ";
const std::string mst = "stp_mcec_mst_type1_cfg_compat_check: ";
const std::string pvrst = "stp_mcec_pvrst_type1_cfg_compat_check: ";
const std::string twin = "stp_mcec_pvrst_endis_check_for_twin_vlans: ";

constexpr uint32_t check_failed = STP_MCEC_ERR_FAILURE;

struct Vlans {
  bmp4096_t pass{77, {0xAA}};
  bmp4096_t fail{78, {0xBB}};

  bool is_unchanged() const {
    return pass.size == 77 && fail.size == 78 && pass.bmp[0] == 0xAA && fail.bmp[0] == 0xBB;
  }
  std::string text() const {
    EXPECT_EQ(pass.size, 512U);
    EXPECT_EQ(fail.size, 512U);
    const std::string passed = vlans_of(pass);
    return passed + " / " + vlans_of(fail);
  }
};

struct Check : LibraryTest {
  Vlans result;

  // Checks the switch. Without twin VLANs, disabled VLANs are not compared.
  uint32_t check(const Entries &local, const Entries &remote, const char *twins = nullptr) {
    return run(local, remote, twins,
               [](auto... arguments) { return stp_mcec_type1_cfg_compat_check(arguments...); });
  }

  uint32_t check_port(uint32_t if_index, const Entries &local, const Entries &remote) {
    return run(local, remote, nullptr, [if_index](auto... arguments) {
      return stp_mcec_type1_cfg_compat_check_with_ifindex(if_index, arguments...);
    });
  }

  template <class Entry>
  uint32_t run(const Entries &local, const Entries &remote, const char *twins, Entry entry) {
    ConstantArray local_array(local);
    ConstantArray remote_array(remote);
    const Bytes compat = vlans(twins != nullptr ? twins : "");
    result = {};
    return entry(0xCA11U, local_array.bytes.data(), remote_array.bytes.data(),
                 twins != nullptr ? 1U : 0U, compat.data(), &result.pass, &result.fail);
  }
};

TEST_F(Check, ModeComesFromTheCache) {
  const struct {
    uint32_t mode;
    std::string name, of_mode, title;
  } rows[] = {{4, "MST", mst, "MST"}, {5, "Rapid-PVST", pvrst, "PVRST"}};
  for (const auto &row : rows) {
    stp_mcec_type1_cfg_delete_cache_node(1, 0);
    cache(0, 1, word(row.mode));
    EXPECT_EQ(check({{1, word(5)}}, {{1, word(5)}}), 0U);
    EXPECT_EQ(log(),
              (Lines{"stp_mcec_type1_cfg_compat_check: Regular Interface type-1 compat check",
                     common + "type-1 compat check", common + "current STP mode " + row.name,
                     row.of_mode + row.title + " type-1 compat check",
                     row.of_mode + row.title + " type-1 compat check passed",
                     common + "type-1 compat check passed"}));
  }
}

TEST_F(Check, ParametersCountInTheirModesOnly) {
  const std::set<uint16_t> in_every_mode = {1, 6, 7, 8, 10, 11};
  const std::set<uint16_t> in_mst = {3, 4, 5, 9, 12};
  for (const uint32_t mode : {4U, 5U}) {
    stp_mcec_type1_cfg_delete_cache_node(1, 0);
    cache(0, 1, word(mode));
    for (uint16_t type = 0; type <= 13; ++type) {
      const bool counts = in_every_mode.contains(type) || (mode == 4 && in_mst.contains(type));
      const uint32_t differs = counts ? stp_mcec_get_type1_cfg_compat_chk_errcode(type) : 0;
      const Entries local = {{type, word(1)}};
      EXPECT_EQ(check(local, {{type, word(2)}}), differs) << mode << ' ' << type;
      EXPECT_EQ(check(local, {}), counts ? check_failed : 0) << mode << ' ' << type;
      EXPECT_EQ(check(local, {{0, word(9)}, {type, word(1)}}), 0U) << mode << ' ' << type;
      EXPECT_EQ(check({}, local), 0U);
    }
    log();
  }
}

TEST_F(Check, FirstDifferenceIsReturned) {
  cache(0, 1, word(4));
  const Entries remote = {{3, name("b")}, {6, word(1)}, {7, word(1)}, {9, word(1)}};
  EXPECT_EQ(check({{7, word(0)}, {6, word(0)}}, remote), 0x40DD0041U);
  EXPECT_EQ(check({{9, word(0)}, {3, name("a")}}, remote), 0x40DD0045U);
  // The parameters of every mode precede those of the mode.
  EXPECT_EQ(check({{9, word(0)}, {3, name("a")}, {6, word(0)}}, remote), 0x40DD0040U);
}

TEST_F(Check, ValuesAreComparedOverTheLocalLength) {
  cache(0, 1, word(4));
  const struct {
    Bytes local, remote;
    bool agree;
  } rows[] = {
      {{}, {}, true},
      {{}, {1}, true},
      {{1}, {1, 2}, true},
      {{1, 2}, {1}, false},
      {word(1), word(1), true},
      {word(1), {0, 0, 0, 2}, false},
      {Bytes(40), Bytes(39), false},
  };
  for (const auto &row : rows) {
    EXPECT_EQ(check({{4, row.local}}, {{4, row.remote}}), row.agree ? 0 : 0x40DD003EU);
  }
}

TEST_F(Check, DifferencesAreLoggedByKindOfValue) {
  cache(0, 1, word(4));
  const struct {
    uint16_t type;
    Bytes local, remote;
    std::string op;
    Lines lines;
  } rows[] = {
      {6,
       word(1),
       word(0xFFFFFFFF),
       common,
       {"type-1 compat check failed type=6, len=4, lcl_value=1, rmt_value=-1"}},
      {4,
       {1, 2},
       {3},
       mst,
       {"type-1 compat check failed type=4, len=2, lcl_value=16908288, rmt_value=50331648"}},
      {3,
       name("east"),
       name("west"),
       mst,
       {"type-1 compat check failed type=3, len=32, lcl_value=east, rmt_value=west"}},
      {3,
       Bytes(32, 'x'),
       Bytes(3, 'y'),
       mst,
       {"type-1 compat check failed type=3, len=32, lcl_value=" + std::string(32, 'x') +
        ", rmt_value=yyy"}},
      {5, Bytes(8192), Bytes(80), mst, {}},
  };
  for (const auto &row : rows) {
    standin_history_clear();
    EXPECT_NE(check({{row.type, row.local}}, {{row.type, row.remote}}), 0U);
    Lines expected;
    for (const std::string &line : row.lines) expected.push_back(row.op + line);
    expected.push_back(row.op + std::to_string(row.type) + " type-1 compat check failed");
    const Lines lines = log();
    EXPECT_EQ(Lines(lines.end() - std::ptrdiff_t(expected.size()), lines.end()), expected);
  }
}

TEST_F(Check, PortTypeMayDifferOnPodPorts) {
  cache(0, 1, word(5));
  standin_add_ports(0x1000, 0x1001, 26, 2);
  standin_set_pod_port(0x1000, 2);
  const Entries local = {{10, word(1)}, {11, word(1)}};
  EXPECT_EQ(check_port(0x1000, local, {{10, word(2)}, {11, word(1)}}), 0U);
  const Lines lines = log();
  EXPECT_EQ(Lines(lines.begin(), lines.begin() + 5),
            (Lines{"stp_mcec_type1_cfg_compat_check_with_ifindex: Pod HIF type-1 compat check",
                   common + "type-1 compat check", common + "current STP mode Rapid-PVST",
                   common + "type-1 compat check failed type=10, len=4, lcl_value=1, rmt_value=2",
                   common + "local port type 1 remote port type 2 type-1 compat check ignored"}));
  EXPECT_EQ(check_port(0x1000, local, {{10, word(2)}, {11, word(2)}}), 0x40DD0044U);
  EXPECT_EQ(check_port(0x1000, local, {{11, word(1)}}), check_failed);
  log();
  EXPECT_EQ(check_port(0x1001, local, {{10, word(2)}, {11, word(1)}}), 0x40DD0043U);
  EXPECT_EQ(log().front(),
            "stp_mcec_type1_cfg_compat_check_with_ifindex: Regular Interface type-1 compat check");
  EXPECT_EQ(check(local, {{10, word(2)}, {11, word(1)}}), 0x40DD0043U);
}

TEST_F(Check, CheckOfTheModeFollowsAnUnreadableEntry) {
  cache(0, 1, word(4));
  standin_fail(STANDIN_TLV_NEXT, 1, 1);
  EXPECT_EQ(check({{6, word(1)}}, {{6, word(2)}}), 0U);
  EXPECT_EQ(log().at(3), common + "failed (rc=0x40aa00ff, system error 0x40AA00FF) get_next_tlv");
}

TEST_F(Check, DisabledVlansAreComparedOverTwins) {
  cache(0, 1, word(5));
  const struct {
    const char *local, *remote, *twins;
    uint32_t code;
    const char *outcome;
  } rows[] = {
      {"10,20", "10", "10,20,30", 0x40DD003C, "10,30 / 20"},
      {"10,20", "10", "10,30", 0, "10,30 / "},
      {"10,20", "10", "", 0, " / "},
      {"0,4095", "5", "0,4095", 0x40DD003C, " / 0,4095"},
      {"0-4095", "64-127", "0-4095", 0x40DD003C, "64-127 / 0-63,128-4095"},
  };
  for (const auto &row : rows) {
    EXPECT_EQ(check({{2, vlans(row.local)}}, {{2, vlans(row.remote)}}, row.twins), row.code);
    EXPECT_EQ(result.text(), row.outcome);
  }
}

TEST_F(Check, ResultBitmapsChangeOnlyIfVlansAreCompared) {
  cache(0, 1, word(5));
  const Entries local = {{2, vlans("10")}};
  log();
  EXPECT_EQ(check(local, {}), 0U);
  EXPECT_EQ(log().back(), common + "type-1 compat check passed");
  EXPECT_TRUE(result.is_unchanged());
  EXPECT_EQ(check(local, local, "10"), 0U);
  EXPECT_TRUE(result.is_unchanged());
  const Lines lines = log();
  EXPECT_EQ(lines.at(lines.size() - 2), pvrst + "PVRST type-1 compat check passed");
  EXPECT_EQ(check(local, {}, "10"), check_failed);
  EXPECT_TRUE(result.is_unchanged());
  // Values shorter than a bitmap record differ; their VLANs are not compared.
  for (const std::size_t size : {515U, 4U, 1U}) {
    Bytes cut = vlans("10");
    cut.resize(size);
    log();
    EXPECT_EQ(check(local, {{2, cut}}, "20"), 0x40DD003CU);
    EXPECT_TRUE(result.is_unchanged());
    EXPECT_EQ(log().back(), pvrst + "2 type-1 compat check failed");
  }
  EXPECT_EQ(check({{2, Bytes(3, 9)}}, local, "20"), 0x40DD003CU);
  EXPECT_TRUE(result.is_unchanged());
}

TEST_F(Check, TwinComparisonLogsVlans) {
  Bytes local = vlans("10,20");
  Bytes remote = vlans("10");
  const Bytes twins = vlans("10,20,30");
  EXPECT_EQ(stp_mcec_pvrst_endis_check_for_twin_vlans(9, local.data(), remote.data(), twins.data(),
                                                      &result.pass, &result.fail),
            0x40DD0045U);
  EXPECT_EQ(log(),
            (Lines{twin + "local stp disabled vlans: 10,20", twin + "remote stp disabled vlans: 10",
                   twin + "compatcheck vlans: 10,20,30", twin + "compatcheck pass vlans: 10,30",
                   twin + "compatcheck fail vlans: 20"}));
  EXPECT_EQ(local, vlans("10,20"));
  EXPECT_EQ(remote, vlans("10"));
}

}  // namespace
