// VLAN sets do not write out of bounds. Words next to a set detect this without sanitizers.

#include <gtest/gtest.h>

#include "foundation/bitmap.h"

namespace {

using mcec::VlanSet;

TEST(Bounds, RangesStayWithinTheSet) {
  const uint32_t ends[] = {0,    1,    63,   64,   4031, 4032,      4094,
                           4095, 4096, 4097, 4159, 4160, UINT32_MAX};
  for (const uint32_t first : ends) {
    for (const uint32_t last : ends) {
      struct {
        uint64_t before = 0;
        VlanSet set{};
        uint64_t after[2] = {};
      } guarded;
      VlanSet *volatile set = &guarded.set;  // prevents optimizations
      mcec::add_range(*set, first, last);
      const volatile uint64_t *after = guarded.after;
      EXPECT_EQ(guarded.before | after[0] | after[1], 0U) << first << ' ' << last;
      const uint32_t end = std::min(last, uint32_t{4095});
      EXPECT_EQ(mcec::count(*set), first > end ? 0 : end - first + 1) << first << ' ' << last;
    }
  }
}

}  // namespace
