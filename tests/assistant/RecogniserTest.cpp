// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/hearing/Recogniser.h"

#include <gmock/gmock.h>

#include <atomic>
#include <thread>

#include "assistant/dialogue/Dialogue.h"
#include "assistant/hearing/EndOfUtterance.h"
#include "assistant/hearing/RecogniserPool.h"
#include "assistant/skills/ShoppingList.h"
#include "support/AudioFiles.h"
#include "support/Speech.h"
#include "support/TemporaryFolder.h"

namespace velmora {
namespace {

using ::testing::StartsWith;
using tests::Samples;
using tests::Speaker;

/// What the assistant makes of a stream, from its first sample to the answer.
struct RecogniserTest : testing::Test {
  ShoppingList list;
  const Dialogue dialogue{{.clock = [] { return QDateTime(QDate(2026, 1, 1), QTime(0, 0)); },
                           .random = [](int low, int high) { return std::min(high, std::max(low, 75)); },
                           .shoppingList = list},
                          StateSeal(StateSeal::Key{})};
  Recogniser recogniser;

  Reply converse(const Samples &stream, const std::string &state) {
    EndOfUtterance detector;
    detector.feed(stream);
    const Dialogue::Context context{.state = state};
    if (detector.finish() != EndOfUtterance::State::ended) return dialogue.answerToSilence(context);
    const auto [begin, end] = detector.utterance();
    const Recognition heard =
        recogniser.recognise(std::span(stream).subspan(begin, end - begin), dialogue.pendingQuestion(state));
    return heard.confident ? dialogue.answer(heard.text, context) : dialogue.answerToUnclearSpeech(context);
  }
};

Samples inNoise(const std::string &words, Speaker speaker) {
  const Samples speech = tests::spoken(words, speaker);
  const Samples stream = tests::joined({tests::silence(300), speech, tests::silence(1000)});
  return tests::mixed(stream, tests::pinkNoise(stream.size(), tests::levelOf(speech) - 20.0));
}

TEST_F(RecogniserTest, MostlyRefusesWhatItWasNotMadeFor) {
  std::vector<std::string> accepted;
  for (const char *words :
       {"turn on the lights in the kitchen", "the quick brown fox jumps over the lazy dog",
        "navigate to the nearest gas station", "where did i leave my keys", "remind me to call my mother",
        "translate good night into spanish", "the train to london leaves at nine",
        "find me a recipe for apple pie", "read the news to me", "take a picture of the garden"}) {
    for (const Speaker speaker : {Speaker::slt, Speaker::awb}) {
      const Reply reply = converse(inNoise(words, speaker), "");
      if (reply.skill != "unknown") accepted.push_back(words + (" -> " + reply.skill));
    }
  }
  // The synthesiser never speaks twice the same.
  EXPECT_LE(accepted.size(), 4U) << testing::PrintToString(accepted);
}

TEST_F(RecogniserTest, TheRecordedQuestionsMakeOneConversation) {
  const struct {
    const char *file;
    const char *skill;
    const char *says;
    bool followOn = false;
  } cases[] = {{"01-what-time-is-it", "time", "It is 12:00 AM"},
               {"02-what-day-is-the-third-of-may", "day of a date", "It is Sunday, 3 May 2026"},
               {"03-what-is-seven-plus-five", "arithmetic", "7 + 5 = 12"},
               {"04-how-many-miles-is-ten-kilometers", "conversion", "10 kilometers"},
               {"05-how-do-you-spell-elephant", "spelling", "Elephant"},
               {"09-lets-play-a-guessing-game", "guessing game", "I am thinking of a number", true},
               {"10-fifty", "guessing game", "My number is higher than 50", true},
               {"11-is-it-seventy-five", "guessing game", "75 is right! You found it in 2 tries."},
               {"12-stop-the-game", "stop", "All right"}};  // it is over already
  std::string state;
  for (const auto &c : cases) {
    const auto question = tests::readAudio(VELMORA_QUESTIONS "/" + std::string(c.file) + ".wav");
    const Reply reply = converse(question.samples, state);
    EXPECT_EQ(reply.skill, c.skill) << c.file;
    EXPECT_THAT(reply.text, StartsWith(c.says)) << c.file;
    EXPECT_EQ(reply.followOn, c.followOn) << c.file;
    state = reply.state;
  }
}

TEST_F(RecogniserTest, UtterancesDoNotInfluenceOneAnother) {
  const Samples question = inNoise("what is seven plus five", Speaker::awb);
  const Recognition alone = recogniser.recognise(question);
  EXPECT_FALSE(recogniser.recognise({}).confident);
  EXPECT_FALSE(recogniser.recognise(Samples(10)).confident);
  EXPECT_FALSE(recogniser.recognise(tests::silence(3000)).confident);
  (void)recogniser.recognise(tests::pinkNoise(16000, -10.0));
  const Recognition after = recogniser.recognise(question);
  EXPECT_TRUE(after.confident);
  EXPECT_EQ(after.text, alone.text);
  EXPECT_DOUBLE_EQ(after.confidence, alone.confidence);
}

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

TEST_F(RecogniserTest, SaysWhatIsMissing) {
  const tests::TemporaryFolder folder;
  EXPECT_THAT([&] { const Recogniser broken(Language::instance(), folder.path()); },
              testing::ThrowsMessage<std::runtime_error>("Speech recognition cannot start: there is no " +
                                                         (folder.path() / "en-us").string()));
}

}  // namespace
}  // namespace velmora
