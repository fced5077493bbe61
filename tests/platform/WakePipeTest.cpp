// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/process/WakePipe.h"

#include <gtest/gtest.h>
#include <poll.h>

#include <atomic>
#include <thread>

namespace velmora {
namespace {

TEST(WakePipe, NoWakingIsLostHoweverManyComeAtOnce) {
  const WakePipe pipe;
  std::atomic<int> told = 0;
  constexpr int kTimes = 100'000;  // more than a pipe holds bytes
  std::thread teller([&] {
    for (int i = 0; i < kTimes; ++i) {
      ++told;
      pipe.wake();
    }
  });
  while (told < kTimes) pipe.waitUntil(std::nullopt);
  teller.join();
  pipe.waitUntil(WakePipe::Clock::now());  // forgets what came last
  pollfd watched{.fd = pipe.descriptor(), .events = POLLIN, .revents = 0};
  EXPECT_EQ(::poll(&watched, 1, 0), 0);
}

}  // namespace
}  // namespace velmora
