// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/hearing/Recogniser.h"

#include <gmock/gmock.h>
#include <sndfile.h>

#include "assistant/dialogue/Dialogue.h"
#include "assistant/hearing/EndOfUtterance.h"
#include "support/IgnoredLeaks.h"
#include "support/Speech.h"
#include "support/TemporaryFolder.h"

namespace velmora {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;
using tests::Samples;
using tests::Speaker;

/// What the assistant makes of a stream, from its first sample to the answer.
Reply converse(Recogniser &recogniser, const Samples &stream, const std::string &state) {
  const Dialogue dialogue([] { return std::chrono::local_seconds(); }, [](int, int) { return 75; });
  EndOfUtterance detector;
  detector.feed(stream);
  if (detector.finish() != EndOfUtterance::State::ended) return dialogue.answerToSilence(state);
  const auto [begin, end] = detector.utterance();
  const Recognition heard = recogniser.recognise(std::span(stream).subspan(begin, end - begin));
  return heard.confident ? dialogue.answer(heard.text, state) : dialogue.answerToUnclearSpeech(state);
}

Samples inNoise(const std::string &words, Speaker speaker) {
  const Samples speech = tests::spoken(words, speaker);
  const Samples stream = tests::joined({tests::silence(300), speech, tests::silence(1000)});
  return tests::mixed(stream, tests::pinkNoise(stream.size(), tests::levelOf(speech) - 20.0));
}

TEST(Recogniser, UnderstandsWhatIsAskedOfIt) {
  const std::string inGame = R"({"game":{"secret":75,"tries":0,"silences":0}})";
  const struct {
    const char *words;
    const char *skill;
    const char *says;
    std::string state;
  } cases[] = {{"what time is it", "time", "It is", ""},
               {"tell me the time", "time", "It is", ""},
               {"what day is it", "date", "Today is", ""},
               {"what's the date", "date", "Today is", ""},
               {"what is seven plus five", "arithmetic", "", ""},
               {"how much is twelve times eleven", "arithmetic", "", ""},
               {"what is forty two minus seventeen", "arithmetic", "", ""},
               {"what can you do", "help", "I can", ""},
               {"hello there", "greeting", "Hello", ""},
               {"thank you very much", "thanks", "You are", ""},
               {"let's play a guessing game", "game", "I am thinking", ""},
               {"start a guessing game", "game", "I am thinking", ""},
               {"is it sixty", "game", "My number is", inGame},
               {"i guess ninety nine", "game", "My number is", inGame},
               {"i give up", "game", "All right", inGame}};
  Recogniser recogniser;
  for (const auto &c : cases) {
    for (const Speaker speaker : {Speaker::slt, Speaker::awb}) {
      const Reply reply = converse(recogniser, inNoise(c.words, speaker), c.state);
      EXPECT_EQ(reply.skill, c.skill) << c.words;
      EXPECT_THAT(reply.text, StartsWith(c.says)) << c.words;
    }
  }
}

TEST(Recogniser, MostlyRefusesWhatItWasNotMadeFor) {
  const char *const sentences[] = {"turn on the lights in the kitchen",
                                   "the quick brown fox jumps over the lazy dog",
                                   "send a message to peter",
                                   "navigate to the nearest gas station",
                                   "where did i leave my keys",
                                   "add milk and bread to the shopping list",
                                   "remind me to call my mother",
                                   "translate good night into spanish",
                                   "the train to london leaves at nine",
                                   "find me a recipe for apple pie",
                                   "read the news to me",
                                   "take a picture of the garden"};
  Recogniser recogniser;
  std::vector<std::string> accepted;
  for (const std::string words : sentences) {
    for (const Speaker speaker : {Speaker::slt, Speaker::awb}) {
      const Reply reply = converse(recogniser, inNoise(words, speaker), "");
      if (reply.skill != "unknown") accepted.push_back(words + " -> " + reply.skill);
    }
  }
  EXPECT_LE(accepted.size(), 4U) << ::testing::PrintToString(accepted);
}

Samples readWav(const std::string &file) {
  SF_INFO info{};
  SNDFILE *const sound = sf_open(file.c_str(), SFM_READ, &info);
  if (!sound) return {};
  EXPECT_EQ(info.samplerate, 16000) << file;
  EXPECT_EQ(info.channels, 1) << file;
  Samples samples(static_cast<std::size_t>(info.frames));
  EXPECT_EQ(sf_read_short(sound, samples.data(), info.frames), info.frames) << file;
  sf_close(sound);
  return samples;
}

TEST(Recogniser, TheRecordedQuestionsMakeOneConversation) {
  const struct {
    const char *file;
    const char *skill;
    const char *says;
    bool followOn = false;
  } cases[] = {{"01-what-time-is-it", "time", "It is 12:00 AM"},
               {"02-what-day-is-it", "date", "Today is Thursday"},
               {"03-what-is-seven-plus-five", "arithmetic", "7 + 5 = 12"},
               {"04-what-is-twelve-times-eleven", "arithmetic", "12 × 11 = 132"},
               {"05-what-can-you-do", "help", "I can"},
               {"06-lets-play-a-guessing-game", "game", "I am thinking of a number", true},
               {"07-fifty", "game", "My number is higher than 50", true},
               {"08-is-it-seventy-five", "game", "75 is right! You found it in 2 tries."},
               {"09-stop-the-game", "unknown", "I did not understand"},  // it is over
               {"10-thank-you-very-much", "thanks", "You are welcome"}};
  Recogniser recogniser;
  std::string state;
  for (const auto &c : cases) {
    const Samples question = readWav(VELMORA_QUESTIONS "/" + std::string(c.file) + ".wav");
    ASSERT_FALSE(question.empty()) << c.file;
    const Reply reply = converse(recogniser, question, state);
    EXPECT_EQ(reply.skill, c.skill) << c.file;
    EXPECT_THAT(reply.text, StartsWith(c.says)) << c.file;
    EXPECT_EQ(reply.followOn, c.followOn) << c.file;
    state = reply.state;
  }
}

TEST(Recogniser, UtterancesDoNotInfluenceOneAnother) {
  const Samples question = inNoise("what is seven plus five", Speaker::awb);
  Recogniser recogniser;
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

TEST(Recogniser, SaysWhatIsMissing) {
  const tests::TemporaryFolder folder;
  const std::string rule = "#JSGF V1.0;\ngrammar g;\npublic <a> = ";
  const struct {
    std::filesystem::path model;
    std::string grammar;
    std::string says;
  } cases[] = {{folder.path(), rule + "yes;", "there is no " + (folder.path() / "en-us").string()},
               {Recogniser::defaultModel(), rule + "yes | velmorish | aardvark;", "\"velmorish\""},
               {Recogniser::defaultModel(), rule + "yes |", "does not parse: syntax error"},
               {Recogniser::defaultModel(), rule + "yes | <missing>;", "<g.missing>"},
               {Recogniser::defaultModel(), "#JSGF V1.0;\ngrammar g;\n<a> = yes;", "no public rule"}};
  for (const auto &c : cases) {
    const tests::IgnoredLeaks ofAParserThatGivesUp;
    try {
      const Recogniser recogniser(c.model, c.grammar);
      ADD_FAILURE() << c.says;
    } catch (const std::runtime_error &error) {
      EXPECT_THAT(error.what(), HasSubstr(c.says));
      EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos);
    }
  }
}

}  // namespace
}  // namespace velmora
