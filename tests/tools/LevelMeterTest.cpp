// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "tools/LevelMeter.h"

#include <gtest/gtest.h>
#include <pty.h>
#include <unistd.h>

#include <string>
#include <vector>

namespace velmora {
namespace {

TEST(LevelMeter, DrawsOneLineOfATerminalAndLeavesNone) {
  int master = -1;
  int terminal = -1;
  ASSERT_EQ(::openpty(&master, &terminal, nullptr, nullptr, nullptr), 0);
  {
    LevelMeter meter(terminal);
    meter.show(std::vector<std::int16_t>(1600, 0));
    meter.show(std::vector<std::int16_t>(1600, 32767));
  }
  ::close(terminal);
  std::string drawn;
  for (char byte = 0; ::read(master, &byte, 1) == 1;) drawn += byte;
  const std::string quiet = "\rListening [" + std::string(24, '.') + ']';
  const std::string loud = "\rListening [" + std::string(24, '#') + ']';
  EXPECT_EQ(drawn, quiet + loud + '\r' + std::string(loud.size() - 1, ' ') + '\r');
  ::close(master);
}

}  // namespace
}  // namespace velmora
