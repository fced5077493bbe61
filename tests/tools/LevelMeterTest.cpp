// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "tools/LevelMeter.h"

#include <gtest/gtest.h>
#include <pty.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

namespace velmora {
namespace {

TEST(LevelMeter, DrawsOneLineOfATerminalAndLeavesNone) {
  int master = -1;
  int terminal = -1;
  ASSERT_EQ(::openpty(&master, &terminal, nullptr, nullptr, nullptr), 0);
  const auto drawn = [master] {
    std::string text(1000, '\0');
    text.resize(static_cast<std::size_t>(std::max<ssize_t>(0, ::read(master, text.data(), text.size()))));
    return text;
  };
  std::ptrdiff_t before = -1;
  std::size_t width = 0;
  {
    LevelMeter meter(terminal);
    for (const int loudness : {0, 300, 3000, 32767}) {
      meter.show(std::vector(1600, static_cast<std::int16_t>(loudness)));
      const std::string line = drawn();
      EXPECT_EQ(line.front(), '\r');
      EXPECT_EQ(line.find('\n'), std::string::npos);
      EXPECT_GT(std::count(line.begin(), line.end(), '#'), before);
      before = std::count(line.begin(), line.end(), '#');
      width = line.size();
    }
    EXPECT_EQ(before, 24);
  }
  EXPECT_EQ(drawn(), '\r' + std::string(width - 1, ' ') + '\r');
  ::close(terminal);
  ::close(master);

  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  LevelMeter(ends[1]).show(std::vector<std::int16_t>(1600, 1000));
  ::close(ends[1]);
  char byte = 0;
  EXPECT_EQ(::read(ends[0], &byte, 1), 0) << "a pipe is no terminal";
  ::close(ends[0]);
}

}  // namespace
}  // namespace velmora
