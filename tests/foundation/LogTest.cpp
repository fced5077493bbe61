// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "foundation/Log.h"

#include <gtest/gtest.h>

#include <limits>

#include "foundation/fatal.h"
#include "support/CapturedLog.h"

namespace velmora {
namespace {

TEST(Log, TextFromOutsideCannotForgeALine) {
  const tests::CapturedLog captured;
  log("Request text: ", "one\nResult code 0\x1b[2J", " ", 7);
  EXPECT_EQ(captured.lines(), std::vector<std::string>{"Request text: one\\nResult code 0\\x1b[2J 7"});
}

TEST(FatalDeathTest, NumbersOutOfRangeEndTheProgramWithOneLine) {
  EXPECT_EQ(exactly<std::int32_t>(99.9F, "volume"), 99);
  EXPECT_EQ(exactly<std::int32_t>(-2147483648.0, "volume"), std::numeric_limits<std::int32_t>::min());
  EXPECT_DEATH((void)exactly<std::int32_t>(2147483648.0, "volume out of range"), "^volume out of range\n");
  EXPECT_DEATH((void)exactly<std::int32_t>(std::numeric_limits<float>::quiet_NaN(), "nan"), "nan");
  EXPECT_DEATH((void)exactly<std::int32_t>(std::size_t{1} << 31, "size"), "size");
}

}  // namespace
}  // namespace velmora
