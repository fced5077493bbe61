// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/hearing/RecogniserPool.h"

#include <gmock/gmock.h>

#include <atomic>
#include <thread>

#include "support/Speech.h"

namespace velmora {
namespace {

TEST(RecogniserPool, ServesMoreStreamsThanItHasRecognisers) {
  std::atomic<int> made = 0;
  RecogniserPool pool(2, [&] {
    ++made;
    return std::make_unique<Recogniser>();
  });
  const tests::Samples question = tests::spoken("what time is it", tests::Speaker::awb);
  std::atomic<int> understood = 0;
  {
    std::vector<std::jthread> streams;
    streams.reserve(6);
    for (int i = 0; i < 6; ++i)
      streams.emplace_back([&] { understood += pool.recognise(question).text == "what time is it" ? 1 : 0; });
  }
  EXPECT_EQ(understood, 6);
  pool.prepare();
  EXPECT_LE(made, 2);
}

TEST(RecogniserPool, AFailureToMakeOneLosesNoPlace) {
  int attempts = 0;
  RecogniserPool pool(1, [&]() -> std::unique_ptr<Recogniser> {
    if (++attempts < 3) throw std::runtime_error("no model");
    return std::make_unique<Recogniser>();
  });
  EXPECT_THROW(pool.prepare(), std::runtime_error);
  EXPECT_THROW((void)pool.recognise({}), std::runtime_error);
  EXPECT_FALSE(pool.recognise({}).confident);
  EXPECT_EQ(attempts, 3);
}

}  // namespace
}  // namespace velmora
