// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/hearing/Listener.h"

#include <gtest/gtest.h>

#include "support/Speech.h"
#include "support/Waiting.h"

namespace velmora {
namespace {

using tests::Samples;

Samples words(const char *text) { return tests::trimmed(tests::spoken(text, tests::Speaker::slt)); }

Samples inARoom(std::initializer_list<Samples> parts) {
  const Samples stream = tests::joined(parts);
  return tests::mixed(stream, tests::pinkNoise(stream.size(), -65.0));
}

struct ListenerTest : testing::Test {
  RecogniserPool pool{1};

  /// How much of `stream` the listener takes, in seconds; a recognition that it has begun is always ready
  /// when it looks for it.
  static double listen(Listener &listener, const Samples &stream) {
    constexpr std::size_t kPiece = 1600;
    std::size_t fed = 0;
    while (!listener.hasEnded() && fed < stream.size()) {
      listener.feed(std::span(stream).subspan(fed, std::min(kPiece, stream.size() - fed)));
      fed += kPiece;
      listener.wait(tests::kPatience);
    }
    return static_cast<double>(fed) / 16000;
  }
};

TEST_F(ListenerTest, ACompleteRequestEndsSoonerThanOneThatBreaksOff) {
  const struct {
    const char *said;
    const char *heard;
    double longest;  ///< seconds from the last word to the end
    double shortest;
  } cases[] = {{"what is on my shopping list", "what is on my shopping list", 0.62, 0.3},
               {"add milk and", "", 0.95, 0.7}};
  for (const auto &c : cases) {
    const Samples speech = words(c.said);
    const Samples stream = inARoom({tests::silence(500), speech, tests::silence(2000)});
    Listener listener(pool, Language::instance(), "");
    const double after = listen(listener, stream) - 0.5 - static_cast<double>(speech.size()) / 16000;
    EXPECT_LE(after, c.longest) << c.said;
    EXPECT_GE(after, c.shortest) << c.said;
    const auto heard = listener.result();
    ASSERT_TRUE(heard);
    EXPECT_TRUE(heard->text.starts_with(c.heard)) << heard->text;
  }
}

TEST_F(ListenerTest, APauseInARequestIsNotItsEnd) {
  const Samples stream = inARoom({tests::silence(500), words("what is on"), tests::silence(600),
                                  words("my shopping list"), tests::silence(1500)});
  Listener listener(pool, Language::instance(), "");
  listen(listener, stream);
  const auto heard = listener.result();
  ASSERT_TRUE(heard);
  EXPECT_EQ(heard->text, "what is on my shopping list");
}

}  // namespace
}  // namespace velmora
