// The report: texts of values, and log lines with values and cached values.

#include <cstring>

#include "support.h"

namespace {

using namespace test;

const std::string op = "stp_mcec_type1_cfg_get_param_info: ";

struct Report : LibraryTest {
  uint32_t result = 0;

  // Returns the report on an array, "type name=value; ...". The array must not change.
  std::string report(const Entries &entries) {
    Bytes made = array(entries);
    const Bytes before = made;
    void *block = nullptr;
    result = stp_mcec_type1_cfg_get_param_info(made.data(), &block);
    EXPECT_EQ(made, before);
    if (block == nullptr) return "null";
    EXPECT_EQ(standin_block_type(block), 4U);
    EXPECT_EQ(standin_block_size(block), 4 + 312 * entries.size());
    auto *records = static_cast<mcecm_app_info_report_t *>(block);
    EXPECT_EQ(records->count, entries.size());
    std::string text;
    for (uint32_t i = 0; i < records->count; ++i) {
      const mcecm_app_info_t &record = records->records[i];
      EXPECT_EQ(record.app_code, record.param_type != 0 ? 171U : 0U);
      EXPECT_EQ(record.reserved, 0U);
      EXPECT_STREQ(record.component, record.param_type != 0 ? "STP" : "");
      text += (i > 0 ? "; " : "") + std::to_string(record.param_type) + " " + record.param_name +
              "=" + record.param_value;
    }
    mtrack_free(block);
    return text;
  }
};

const struct {
  uint16_t type;
  Bytes value;
  const char *text;
} values_and_texts[] = {
    {1, word(5), "STP Mode=Rapid-PVST"},
    {1, word(4), "STP Mode=MST"},
    {1, word(0), "STP Mode=MST"},
    {1, {0, 0, 0}, "STP Mode=MST"},
    {2, vlans(""), "STP Disabled=None"},
    {2, vlans("1-10,20"), "STP Disabled=VLANs 1-10,20"},
    {2, {0, 0, 2, 0, 0x40}, "STP Disabled=VLANs 1"},
    {2, {0, 0}, "STP Disabled=None"},
    {3, name(""), "STP MST Region Name=\"\""},
    {3, {}, "STP MST Region Name=\"\""},
    {3, name("east"), "STP MST Region Name=east"},
    {3, Bytes(32, 'x'), "STP MST Region Name=xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx"},
    {4, word(0xFFFFFFFE), "STP MST Region Revision=-2"},
    {5, Bytes(8192, 1), "STP MST Region Instance to VLAN Mapping="},
    {6, word(0), "STP Loopguard=Disabled"},
    {6, word(9), "STP Loopguard=Enabled"},
    {7, word(1), "STP Bridge Assurance=Enabled"},
    {8, word(0x1), "STP Port Type, Edge BPDUFilter, Edge BPDUGuard=Edge, Disabled, Disabled"},
    {8, word(0xC), "STP Port Type, Edge BPDUFilter, Edge BPDUGuard=Network, Enabled, Disabled"},
    {8, word(0x9), "STP Port Type, Edge BPDUFilter, Edge BPDUGuard=Edge, Disabled, Disabled"},
    {8, word(0x2), "STP Port Type, Edge BPDUFilter, Edge BPDUGuard=Normal, Disabled, Enabled"},
    {9, word(0), "STP MST Simulate PVST=Disabled"},
    {9, word(2), "STP MST Simulate PVST=Enabled"},
    {10, word(0), "STP Port Type=Default"},
    {10, word(1), "STP Port Type=Edge Port"},
    {10, word(2), "STP Port Type=Normal Port"},
    {10, word(3), "STP Port Type=Edge Trunk Port"},
    {10, word(4), "STP Port Type=Network Port"},
    {10, word(5), "STP Port Type=Default"},
    {11, word(0), "STP Port Guard=None"},
    {11, word(1), "STP Port Guard=Root"},
    {11, word(2), "STP Port Guard=Loop"},
    {11, word(3), "STP Port Guard=None"},
    {12, word(0), "STP MST Simulate PVST=Default"},
    {12, word(1), "STP MST Simulate PVST=Enabled"},
    {12, word(2), "STP MST Simulate PVST=Disabled"},
    {12, word(3), "STP MST Simulate PVST=Default Enabled"},
    {12, word(4), "STP MST Simulate PVST=Default Disabled"},
    {12, word(5), "STP MST Simulate PVST=None"},
};

TEST_F(Report, EveryValueHasAText) {
  for (const auto &row : values_and_texts) {
    EXPECT_EQ(report({{row.type, row.value}}), std::to_string(row.type) + " " + row.text);
    EXPECT_EQ(result, 0U);
  }
  const std::string long_list = report({{2, Bytes(516, 0x55)}});
  EXPECT_EQ(long_list.size(), std::strlen("2 STP Disabled=") + 99);
  EXPECT_EQ(report({{3, Bytes(200, 'x')}}), "3 STP MST Region Name=" + std::string(99, 'x'));
}

TEST_F(Report, ValuesAreLoggedWithCachedValues) {
  const Entries entries = {{1, word(5)}, {2, vlans("3-4")}, {3, name("")}, {4, word(7)},
                           {5, {1}},     {8, word(0x14)},   {10, word(3)}};
  const auto lines = [](const char *mode, const char *vlan_list, const char *region,
                        const char *revision, const char *port_type) {
    return Lines{op + "Type Mode - val = 5, cval = " + mode,
                 op + "Type Enable/Disable STP - val = 3-4, \\",
                 std::string("cval = ") + vlan_list,
                 op + "Type MST Region Name - val = , \\",
                 std::string("cval = ") + region,
                 op + "Type MST Region Revision - val = 7, cval = " + revision,
                 op + "Type Gbl Port Type - val = 0x14, cval = " + port_type,
                 op + "Type Ifi Port Type - val = 3"};
  };
  const char *const none = "Not Available";
  report(entries);
  EXPECT_EQ(log(), lines(none, none, none, none, none));
  cache(0, 1, {0, 0, 0, 4, 5});
  cache(0, 2, vlans("9"));
  cache(0, 3, Bytes(33, 'n'));
  cache(0, 4, {0, 1});
  cache(0, 8, word(0xFF));
  cache(0, 10, word(1));
  report(entries);
  EXPECT_EQ(log(), lines("4", "9", "nnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn", "65536", "0xff"));
  EXPECT_EQ(cached(0, 2), hex(vlans("9")));
}

TEST_F(Report, FailuresKeepFilledRecords) {
  EXPECT_EQ(report({{6, word(1)}, {13, word(1)}, {7, word(1)}}),
            "6 STP Loopguard=Enabled; 13 =; 0 =");
  EXPECT_EQ(result, uint32_t{STP_MCEC_ERR_INVALID_ARG});
  log();
  void *block = this;
  // With most + 1 entries the size of the records exceeds 32 bits: no block is allocated.
  const uint32_t most = (UINT32_MAX - 4) / 312;
  for (const uint32_t count : {most, most + 1}) {
    Bytes many(4 + std::size_t{count} * tlv_aligned_data_size_get(0));
    const Bytes size = word(uint32_t(many.size() - 4));
    std::copy(size.begin(), size.end(), many.begin());
    const uint32_t calls = standin_calls(STANDIN_ALLOC);
    standin_fail(STANDIN_ALLOC, 1, 1);
    EXPECT_EQ(stp_mcec_type1_cfg_get_param_info(many.data(), &block), 1U);
    standin_fail(STANDIN_ALLOC, 0, 0);
    EXPECT_EQ(block, nullptr);
    EXPECT_EQ(standin_calls(STANDIN_ALLOC) - calls, count == most ? 1U : 0U);
  }
}

}  // namespace
