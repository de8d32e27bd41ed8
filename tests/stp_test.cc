// The helpers of the spanning-tree process.

#include <cstring>

#include "support.h"

namespace {

using namespace test;

struct Stp : LibraryTest {};

Bytes host_halves(const std::vector<uint16_t> &halves) {
  Bytes bytes(halves.size() * 2);
  std::memcpy(bytes.data(), halves.data(), bytes.size());
  return bytes;
}

Bytes message(uint8_t list_flag, uint32_t count, const Bytes &rest) {
  Bytes made = host_words({258, 7, count});
  made.push_back(list_flag);
  made.insert(made.end(), rest.begin(), rest.end());
  return made;
}

TEST_F(Stp, VlanRangeMessagesAreConverted) {
  const struct {
    Bytes host;
    const char *wire;
  } rows[] = {
      {message(0, 2, host_halves({10, 4094})), "00000102000000070000000200000a0ffe"},
      {message(0, 0, {10, 0}),
       "00000102000000070000000000"
       "0a00"},
      {message(1, 900, host_words({0x44332211})),
       "00000102000000070000038401"
       "44332211"},
  };
  for (const auto &row : rows) {
    // At every alignment, in place and into another buffer, whose flag byte does not change.
    for (std::size_t shift = 0; shift < 4; ++shift) {
      Bytes buffer(shift + row.host.size());
      std::copy(row.host.begin(), row.host.end(), buffer.begin() + std::ptrdiff_t(shift));
      uint8_t *at = buffer.data() + shift;
      stp_hton_vlan_range_state_change_mts_msg(at, at);
      EXPECT_EQ(hex({at, at + row.host.size()}), row.wire);
      Bytes other(row.host.size(), 0xEE);
      stp_ntoh_vlan_range_state_change_mts_msg(other.data(), at);
      EXPECT_EQ(other[12], 0xEE);
      other[12] = row.host[12];
      if (row.host[12] == 0 && row.host[8] == 0) other[13] = row.host[13], other[14] = row.host[14];
      EXPECT_EQ(other, row.host);
    }
  }
  Bytes unchanged = message(0, 1, host_halves({5}));
  const Bytes before = unchanged;
  stp_hton_vlan_range_state_change_mts_msg(unchanged.data(), nullptr);
  stp_ntoh_vlan_range_state_change_mts_msg(nullptr, unchanged.data());
  EXPECT_EQ(unchanged, before);
}

TEST_F(Stp, InterfacesAreValidByTypeAndLayerMode) {
  for (uint32_t type = 0; type < 256; ++type) {
    standin_add_ports(5, 5, uint8_t(type), 2);
    const bool accepted =
        type == 22 || type == 26 || type == 28 || type == 29 || type == 31 || type == 37;
    EXPECT_EQ(stp_valid_if_index_offline(5), accepted ? 1U : 0U) << type;
    EXPECT_EQ(stp_valid_if_index(5), accepted ? 1U : 0U) << type;
  }
  standin_add_ports(5, 5, 26, 2);
  standin_fail(STANDIN_LAYER_MODE, 1, 1);
  EXPECT_EQ(stp_valid_if_index(5), 0U);
  standin_add_ports(5, 5, 26, 3);
  EXPECT_EQ(stp_valid_if_index(5), 0U);
  EXPECT_EQ(stp_valid_if_index(6), 0U);
  EXPECT_EQ(stp_valid_if_index_offline(6), 0U);
}

}  // namespace
