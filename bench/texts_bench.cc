// What the library does with VLAN sets and maps by itself.

#include <hwloc.h>

#include <bitset>
#include <cstring>
#include <random>

#include "draimiofaf/check.h"
#include "draimiofaf/foundation.h"
#include "mcecm.h"
#include "rows.h"
#include "sdwrap.h"

namespace {

using Vlans = std::bitset<4096>;

bmp4096_t record_of(const Vlans &vlans) {
  bmp4096_t record{512, {}};
  for (unsigned vlan = 0; vlan < vlans.size(); ++vlan) {
    if (vlans[vlan]) record.bmp[vlan / 8] = uint8_t(record.bmp[vlan / 8] | 0x80U >> vlan % 8);
  }
  return record;
}

template <class Chosen>
Vlans vlans_where(Chosen chosen) {
  Vlans vlans;
  for (unsigned vlan = 0; vlan < vlans.size(); ++vlan) vlans[vlan] = chosen(vlan);
  return vlans;
}

Vlans random_half() {
  std::mt19937 random(7);
  return vlans_where([&random](unsigned) { return (random() & 1) != 0; });
}

// The peer's list of a set has the same form.
void range_text(const char *name, const Vlans &vlans) {
  static char peer_text[sizeof stp_vlan_bmp_str_buf];
  const bmp4096_t record = record_of(vlans);
  hwloc_bitmap_t bitmap = hwloc_bitmap_alloc();
  for (unsigned vlan = 0; vlan < vlans.size(); ++vlan) {
    if (vlans[vlan]) hwloc_bitmap_set(bitmap, vlan);
  }
  const auto ours = [record] { return stp_mcec_lib_bmp4096_to_str(&record); };
  const auto peer = [bitmap] {
    return hwloc_bitmap_list_snprintf(peer_text, sizeof peer_text, bitmap);
  };
  const auto agree = [=] { return peer() > 0 && std::strcmp(ours(), peer_text) == 0; };
  bench::row(
      name, [] {}, agree, ours, peer);
}

void user_vlan_count() {
  static const Vlans vlans = random_half();
  const auto prepare = [] { mcec_stp_vlan_count = record_of(vlans); };
  const auto ours = [] { return stp_mcecm_get_vlan_count(); };
  const auto peer = [] {
    benchmark::ClobberMemory();
    return vlans.count();
  };
  bench::row(
      "count of user VLANs", prepare, [=] { return ours() == peer(); }, ours, peer);
}

void default_test() {
  static uint8_t map[8192];
  static uint8_t zeros[8192];
  const auto ours = [] {
    return stp_mcec_type1_cfg_param_is_default(STP_MCEC_TYPE1_MST_REGION_VI_MAP, sizeof map, map);
  };
  const auto floor = [] {
    benchmark::DoNotOptimize(&map);
    benchmark::ClobberMemory();
    return std::memcmp(map, zeros, sizeof map) == 0 ? 1U : 0U;
  };
  const auto agree = [=] {
    const bool default_agrees = ours() == 1 && floor() == 1;
    map[8191] = 1;
    const bool other_agrees = ours() == 0 && floor() == 0;
    map[8191] = 0;
    return default_agrees && other_agrees;
  };
  bench::row(
      "default test of a VLAN map", [] {}, agree, ours, floor);
}

}  // namespace

namespace bench {

void texts() {
  range_text("range text, every second VLAN",
             vlans_where([](unsigned vlan) { return vlan % 2 == 1; }));
  range_text("range text, random half", random_half());
  range_text("range text, two VLANs in three",
             vlans_where([](unsigned vlan) { return vlan % 3 != 2; }));
  range_text("range text, twenty runs",
             vlans_where([](unsigned vlan) { return vlan % 200 >= 100 && vlan % 200 < 150; }));
  user_vlan_count();
  default_test();
}

}  // namespace bench
