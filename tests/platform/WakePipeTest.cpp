// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/process/WakePipe.h"

#include <gtest/gtest.h>
#include <poll.h>

#include <atomic>
#include <csignal>
#include <thread>

namespace velmora {
namespace {

using Clock = WakePipe::Clock;

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
  pipe.waitUntil(Clock::now());  // forgets what came last
  pollfd watched{.fd = pipe.descriptor(), .events = POLLIN, .revents = 0};
  EXPECT_EQ(::poll(&watched, 1, 0), 0);
}

TEST(WakePipe, ADeadlineEndsTheWaitAndNotEarlier) {
  const WakePipe pipe;
  const auto deadline = Clock::now() + std::chrono::milliseconds(20);
  pipe.waitUntil(deadline);
  EXPECT_GE(Clock::now(), deadline);
  pipe.waitUntil(deadline - std::chrono::hours(1));
}

TEST(WakePipe, ASignalHandlerWakes) {
  static const WakePipe *wakened = nullptr;
  static volatile std::sig_atomic_t arrived = 0;
  const WakePipe pipe;
  wakened = &pipe;
  const auto before = std::signal(SIGUSR1, [](int) {
    arrived = 1;
    wakened->wake();
  });
  std::raise(SIGUSR1);
  while (arrived == 0) pipe.waitUntil(std::nullopt);
  EXPECT_EQ(arrived, 1);
  std::signal(SIGUSR1, before);
}

}  // namespace
}  // namespace velmora
