// The catalogue, VLAN bitmaps and runtime services.

#include <dlfcn.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <sstream>

#include "files.h"
#include "mcecm.h"
#include "support.h"

namespace {

using namespace test;

std::string debug_folder;

}  // namespace

// Redirects the debug file, because only root can write to its folder.
extern "C" __attribute__((visibility("default"))) FILE *fopen(const char *path, const char *mode) {
  static const auto next =
      reinterpret_cast<FILE *(*)(const char *, const char *)>(dlsym(RTLD_NEXT, "fopen"));
  constexpr char folder[] = "/zarn/tmp/";
  if (std::strncmp(path, folder, std::strlen(folder)) != 0) return next(path, mode);
  return debug_folder.empty() ? nullptr
                              : next((debug_folder + (path + std::strlen(folder))).c_str(), mode);
}

namespace {

struct Foundation : LibraryTest {};

TEST_F(Foundation, CatalogueHasTwelveParameters) {
  const struct {
    uint16_t type;
    const char *name;
    uint32_t code;
  } rows[] = {
      {0, "Unknown", 0x40DD0001},
      {1, "Mode", 0x40DD003B},
      {2, "Enable/Disable STP", 0x40DD003C},
      {3, "MST Region Name", 0x40DD003D},
      {4, "MST Region Revision", 0x40DD003E},
      {5, "MST Region VI Map", 0x40DD003F},
      {6, "Loop Guard", 0x40DD0040},
      {7, "Bridge Assurance", 0x40DD0041},
      {8, "Gbl Port Type", 0x40DD0042},
      {9, "Gbl MST Simulate PVST", 0x40DD0045},
      {10, "Ifi Port Type", 0x40DD0043},
      {11, "Ifi Port Gaurd", 0x40DD0044},
      {12, "Ifi MST Simulate PVST", 0x40DD0046},
      {13, "Unknown", 0x40DD0001},
      {0xFFFF, "Unknown", 0x40DD0001},
  };
  for (const auto &row : rows) {
    EXPECT_STREQ(stp_mcec_type1_cfg_type_to_str(row.type), row.name);
    EXPECT_EQ(stp_mcec_get_type1_cfg_compat_chk_errcode(row.type), row.code) << row.type;
  }
}

TEST_F(Foundation, DefaultsAreTestedByType) {
  Bytes odd_count = vlans("");
  odd_count[0] = 0xAB;
  Bytes name_after_nul = name("");
  name_after_nul[5] = 'x';
  Bytes map(8192);
  Bytes map_set = map;
  map_set[8191] = 1;
  const struct {
    uint32_t type;
    Bytes value;
    uint32_t is_default;
  } rows[] = {
      {1, word(5), 1},        {1, word(4), 0},       {1, word(0x05000000), 0},
      {2, odd_count, 1},      {2, vlans("0"), 0},    {2, vlans("4095"), 0},
      {3, name_after_nul, 1}, {3, name("a"), 0},     {4, word(0), 1},
      {4, word(1), 0},        {5, map, 1},           {5, map_set, 0},
      {5, Bytes(8192, 1), 0}, {5, Bytes(8191), 0},   {5, Bytes(80), 0},
      {6, word(0), 1},        {6, word(1), 0},       {7, word(0), 0},
      {7, word(0x100), 1},    {8, word(0), 1},       {8, word(0x10), 0},
      {9, word(0), 0},        {9, word(2), 1},       {10, word(0), 1},
      {10, word(1), 0},       {11, word(0), 1},      {11, word(3), 0},
      {12, word(0), 1},       {12, word(4), 0},      {0, word(0), 0},
      {13, word(0), 0},       {0x10006, word(0), 0},
  };
  for (const auto &row : rows) {
    Bytes value = row.value;
    EXPECT_EQ(stp_mcec_type1_cfg_param_is_default(row.type, uint32_t(value.size()), value.data()),
              row.is_default)
        << row.type << ' ' << hex(row.value).substr(0, 16);
    EXPECT_EQ(value, row.value);
  }
}

TEST_F(Foundation, VlansAreWrittenAsRanges) {
  for (const char *text : {"", "0", "4095", "0-4095", "1-3,5,7-8", "31-32", "63-64", "9-10,99-100",
                           "999-1000", "0,4095", "64,128,192-255", "63,71", "63,127"}) {
    Bytes record = vlans(text);
    EXPECT_STREQ(stp_mcec_lib_bmp4096_to_str(record.data()), text);
    stp_mcec_lib_bmp4096_ntoh(record.data(), record.data());
    EXPECT_STREQ(stp_mcec_lib_bmp4096_to_str(record.data()), text);
  }
  Bytes every_second(sizeof(bmp4096_t), 0x55);
  EXPECT_EQ(std::strlen(stp_mcec_lib_bmp4096_to_str(every_second.data())), 9684U);
  EXPECT_EQ(stp_mcec_lib_bmp4096_to_str(every_second.data()), stp_vlan_bmp_str_buf);
  for (unsigned phase = 0; phase < 3; ++phase) {
    Bytes two_in_three(sizeof(bmp4096_t));
    for (unsigned vlan = 0; vlan < 4096; ++vlan) {
      uint8_t &byte = two_in_three[4 + vlan / 8];
      if ((vlan + phase) % 3 != 2) byte = uint8_t(byte | 0x80U >> vlan % 8);
    }
    const std::size_t length = std::strlen(stp_mcec_lib_bmp4096_to_str(two_in_three.data()));
    EXPECT_GT(length, 12900U);
    EXPECT_LT(length, 13000U);
  }
}

TEST_F(Foundation, RandomVlansAtAnyAddressMatchAReference) {
  std::mt19937 random(1);
  for (int round = 0; round < 300; ++round) {
    std::ostringstream expected;
    Bytes buffer(sizeof(bmp4096_t) + 8);
    uint8_t *record = buffer.data() + round % 8;
    const auto density = 1 + random() % 100;
    bool set[4097] = {};
    for (int vlan = 0; vlan < 4096; ++vlan) {
      set[vlan] = random() % 100 < density;
      if (set[vlan]) record[4 + vlan / 8] = uint8_t(record[4 + vlan / 8] | 0x80 >> vlan % 8);
    }
    for (int first = 0; first < 4096; ++first) {
      if (!set[first]) continue;
      int last = first;
      while (set[last + 1]) ++last;
      expected << (expected.tellp() > 0 ? "," : "") << first;
      if (last > first) expected << '-' << last;
      first = last;
    }
    ASSERT_EQ(stp_mcec_lib_bmp4096_to_str(record), expected.str());
    std::memcpy(&mcec_stp_vlan_count, record, sizeof mcec_stp_vlan_count);
    ASSERT_EQ(stp_mcecm_get_vlan_count(), uint32_t(std::count(set, set + 4096, true)));
  }
  standin_clear_user_vlans();
}

TEST_F(Foundation, BitmapSizeIsConverted) {
  bmp4096_t record{512, {1, 2, 3}};
  bmp4096_t other{7, {9, 9}};
  stp_mcec_lib_bmp4096_hton(&record, &other);
  EXPECT_EQ(hex({reinterpret_cast<uint8_t *>(&other), reinterpret_cast<uint8_t *>(&other) + 7}),
            "00000200090900");
  stp_mcec_lib_bmp4096_ntoh(&other, &other);
  EXPECT_EQ(other.size, 512U);
}

TEST_F(Foundation, UserVlansAreCounted) {
  EXPECT_EQ(stp_mcecm_get_vlan_count(), 0U);
  standin_add_user_vlans(1, 507);
  EXPECT_EQ(stp_mcecm_get_vlan_count(), 507U);
  standin_add_user_vlans(0, 4095);
  EXPECT_EQ(stp_mcecm_get_vlan_count(), 4096U);
}

TEST_F(Foundation, MemoryTypesHaveNames) {
  EXPECT_STREQ(__stp_mcec_lib_mem_type_t_find(0), "STP_MCEC_LIB_MEM_NONE");
  EXPECT_STREQ(__stp_mcec_lib_mem_type_t_find(20),
               "STP_MCEC_LIB_MEM_mcecm_app_cmd7_extract_info_t");
  EXPECT_STREQ(__stp_mcec_lib_mem_type_t_find(21), "STP_MCEC_LIB_MEM_MAX");
  EXPECT_EQ(__stp_mcec_lib_mem_type_t_find(22), nullptr);
  EXPECT_EQ(__stp_mcec_lib_mem_type_t_str2enum("stp_mcec_lib_mem_tlv_array_1_t"), 6U);
  EXPECT_EQ(__stp_mcec_lib_mem_type_t_str2enum(""), 0U);
  EXPECT_EQ(__stp_mcec_lib_mem_type_t_str2enum("tlv_array_1_t"), 0U);
  for (uint32_t type = 0; type < 21; ++type) {
    EXPECT_STREQ(standin_mem_type_name(633, type), __stp_mcec_lib_mem_type_t_find(type));
  }
  EXPECT_STREQ(standin_service_name(633), "STP MCEC Type-1 CFG LIB");
}

TEST_F(Foundation, LongLinesAreTruncated) {
  const auto expect_truncated = [](const std::string &line, const std::string &text) {
    EXPECT_EQ(line, (line.substr(0, line.find("): ") + 3) + text).substr(0, 511));
  };
  // Names that are shorter and longer than the limit, in two kinds of lines.
  for (std::size_t length = 150; length < 500; ++length) {
    const std::string text(length, 'x');
    const std::string peer_text(length, 'y');
    Bytes local = array({{3, Bytes(length, 'x')}});
    Bytes peer = array({{3, Bytes(length, 'y')}});
    standin_history_clear();
    stp_mcec_mst_type1_cfg_compat_check(0, 0, local.data(), peer.data());
    ASSERT_GT(standin_history_count(), 1U);
    expect_truncated(standin_history_line(1),
                     "type-1 compat check failed type=3, len=" + std::to_string(length) +
                         ", lcl_value=" + text + ", rmt_value=" + peer_text + "\n");
    standin_history_clear();
    void *report = nullptr;
    stp_mcec_type1_cfg_get_param_info(local.data(), &report);
    mtrack_free(report);
    ASSERT_GT(standin_history_count(), 0U);
    expect_truncated(standin_history_line(0), "Type MST Region Name - val = " + text + ", ");
  }
}

TEST_F(Foundation, DebugFileIsOpenedWhenPossible) {
  standin_set_partition(0xABC0003);
  debug_folder.clear();
  stp_mcec_lib_debug_print(1, "lost %d\n", 1);
  EXPECT_EQ(stp_mcec_lib_debug_file, nullptr);

  const TempFolder folder;
  debug_folder = folder.path.string() + "/";
  stp_mcec_lib_debug_print(1, "first %d\n", 2);
  stp_mcec_lib_debug_print(0, "second\n");
  EXPECT_EQ(read_file(folder.path / "stp_mcec_lib_dbg.log.3"),
            "STP MCEC Type-1 cfg debug file \n--------------------------------\nfirst 2\nsecond\n");
  ASSERT_NE(stp_mcec_lib_debug_file, nullptr);
  std::fclose(stp_mcec_lib_debug_file);
  stp_mcec_lib_debug_file = nullptr;
}

TEST_F(Foundation, ChannelsComeFromTheDatabase) {
  uint32_t id = 99;
  EXPECT_EQ(stp_mcec_lib_get_mcec_id(0x1000, &id), uint32_t{STP_MCEC_ERR_NO_MCEC_INFO});
  standin_set_void_member(0x1000, 5);
  EXPECT_EQ(stp_mcec_lib_get_mcec_id(0x1000, &id), uint32_t{STP_MCEC_ERR_NO_MCEC_INFO});
  EXPECT_EQ(id, 99U);
  standin_set_member(0x1000, 5);
  EXPECT_EQ(stp_mcec_lib_get_mcec_id(0x1000, &id), 0U);
  EXPECT_EQ(id, 5U);
  EXPECT_EQ(stp_mcec_lib_mct_exists(), 1U);
  standin_set_trunk(0);
  EXPECT_EQ(stp_mcec_lib_mct_exists(), 0U);
}

}  // namespace
