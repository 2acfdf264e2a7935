// Paints and strokes.
#include <gtest/gtest.h>

#include <cmath>

#include "render_test_support.h"

TEST(Paint, IsqrtIsExactFloorTimes32) {
  for (uint64_t n = 0; n <= 0xFFFFFFFFull; n += (n < 70000 ? 1 : n / 977 + 1)) {
    uint32_t expect = uint32_t(std::floor(std::sqrt(double(n)))) * 32;
    ASSERT_EQ(ddIsqrt(uint32_t(n)), expect) << n;
  }
  EXPECT_EQ(ddIsqrt(0xFFFFFFFFu), 0x1FFFE0u);
}
