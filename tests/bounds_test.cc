// The VLAN sets from within: words beside a set show what is written out of place, also where no
// sanitizer watches.

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
      VlanSet *volatile set = &guarded.set;  // the compiler shall not know what it is
      mcec::add_range(*set, first, last);
      const volatile uint64_t *beside = guarded.after;
      EXPECT_EQ(guarded.before | beside[0] | beside[1], 0U) << first << ' ' << last;
      const uint32_t end = std::min(last, uint32_t{4095});
      EXPECT_EQ(mcec::count(*set), first > end ? 0 : end - first + 1) << first << ' ' << last;
    }
  }
}

}  // namespace
