// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/dialogue/Dialogue.h"

#include <gmock/gmock.h>

namespace velmora {
namespace {

using namespace std::chrono;
using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr int kSecret = 42;

/// A dialogue at a given time; the number to be guessed is `kSecret`.
Dialogue dialogueAt(year_month_day date, minutes time = {}) {
  return {[=] { return local_days(date) + time; },
          [](int low, int high) {
            EXPECT_EQ(low, 1);
            EXPECT_EQ(high, 100);
            return kSecret;
          }};
}

Dialogue dialogue() { return dialogueAt(2026y / March / 2, 15h + 5min); }

TEST(Dialogue, FindsTheSkillThatIsMeant) {
  const struct {
    const char *words;
    const char *skill;
  } cases[] = {{"what time is it", "time"},
               {"What's the time?", "time"},
               {"can you tell me what the time is", "time"},
               {"do you know what time it is", "time"},
               {"what day is it", "date"},
               {"tell me what day it is", "date"},
               {"what is today's date", "date"},
               {"what day of the week is it", "date"},
               {"what is seven plus five", "arithmetic"},
               {"how much is a hundred and two divided by four", "arithmetic"},
               {"what can you do", "help"},
               {"can you help me", "help"},
               {"hello there", "greeting"},
               {"good morning", "greeting"},
               {"thank you", "thanks"},
               {"thanks a lot", "thanks"},
               {"let's play a guessing game", "game"},
               {"start the game", "game"},
               // What is not understood, and what is too short to be believed when nothing was asked.
               {"", "unknown"},
               {"?!", "unknown"},
               {"what is the capital of australia", "unknown"},
               {"what is two plus banana", "unknown"},
               {"fifty", "unknown"},
               {"is it fifty", "unknown"},
               {"no", "unknown"},
               {"stop", "unknown"},
               {"hello", "unknown"},
               {"\xff\xfe\x80", "unknown"}};
  for (const auto &c : cases) {
    const Reply reply = dialogue().answer(c.words, "");
    EXPECT_EQ(reply.skill, c.skill) << c.words;
    EXPECT_FALSE(reply.text.empty());
    EXPECT_FALSE(reply.speech.empty());
    EXPECT_EQ(reply.followOn, reply.skill == "game") << c.words;
  }
  EXPECT_EQ(dialogue().answer(std::string(1'000'000, 'a'), "").skill, "unknown");
}

TEST(Dialogue, TellsTheTime) {
  const struct {
    minutes time;
    const char *text;
    const char *speech;
  } cases[] = {{0min, "It is 12:00 AM.", "It is midnight."},
               {7min, "It is 12:07 AM.", "It is twelve oh seven in the morning."},
               {11h + 59min, "It is 11:59 AM.", "It is eleven fifty nine in the morning."},
               {12h, "It is 12:00 PM.", "It is noon."},
               {15h + 5min, "It is 3:05 PM.", "It is three oh five in the afternoon."},
               {21h, "It is 9:00 PM.", "It is nine o'clock in the evening."},
               {23h + 30min, "It is 11:30 PM.", "It is eleven thirty in the evening."}};
  for (const auto &c : cases) {
    const Reply reply = dialogueAt(2026y / March / 2, c.time).answer("what time is it", "");
    EXPECT_EQ(reply.text, c.text);
    EXPECT_EQ(reply.speech, c.speech);
  }
}

TEST(Dialogue, TellsTheDate) {
  const Reply leap = dialogueAt(2028y / February / 29, 23h + 59min).answer("what day is it", "");
  EXPECT_EQ(leap.text, "Today is Tuesday, 29 February 2028.");
  EXPECT_EQ(leap.speech, "Today is Tuesday, the twenty ninth of February, twenty twenty eight.");
  EXPECT_EQ(dialogueAt(2026y / January / 4).answer("what's the date", "").text,
            "Today is Sunday, 4 January 2026.");
}

TEST(Dialogue, Calculates) {
  const struct {
    const char *words;
    const char *text;
    const char *speech;
  } cases[] = {
      {"what is seven plus five", "7 + 5 = 12", "seven plus five is twelve."},
      {"what is three minus eight", "3 - 8 = -5", "three minus eight is minus five."},
      {"how much is nine hundred ninety nine times nine hundred ninety nine", "999 × 999 = 998001",
       "nine hundred and ninety nine times nine hundred and ninety nine is nine hundred and ninety eight "
       "thousand "
       "and one."},
      {"calculate nine multiplied by nine", "9 × 9 = 81", "nine multiplied by nine is eighty one."},
      {"what is ten divided by five", "10 ÷ 5 = 2", "ten divided by five is two."},
      {"what is seven divided by two", "7 ÷ 2 = 3.5", "seven divided by two is three point five."},
      {"what is one divided by twenty", "1 ÷ 20 = 0.05", "one divided by twenty is zero point zero five."},
      {"what is ten divided by three", "10 ÷ 3 ≈ 3.33",
       "ten divided by three is about three point three three."},
      {"what is nine hundred ninety eight divided by nine hundred ninety nine", "998 ÷ 999 ≈ 1",
       "nine hundred and ninety eight divided by nine hundred and ninety nine is about one."},
      {"what is one divided by nine hundred", "1 ÷ 900 < 0.01",
       "one divided by nine hundred is less than one hundredth."},
      {"what is zero divided by nine", "0 ÷ 9 = 0", "zero divided by nine is zero."},
      {"what is six divided by zero", "Nothing can be divided by zero.", "Nothing can be divided by zero."},
      {"what is zero divided by zero", "Nothing can be divided by zero.", "Nothing can be divided by zero."}};
  for (const auto &c : cases) {
    const Reply reply = dialogue().answer(c.words, "");
    EXPECT_EQ(reply.text, c.text);
    EXPECT_EQ(reply.speech, c.speech);
  }
}

/// One request of a scripted game; null words are silence, "~" is speech that was not recognised.
struct Turn {
  const char *words;
  const char *says;
  bool goesOn = true;
};

void playThrough(std::initializer_list<Turn> turns) {
  const Dialogue player = dialogue();
  std::string state;
  for (const Turn &turn : turns) {
    const Reply reply = !turn.words            ? player.answerToSilence(state)
                        : turn.words[0] == '~' ? player.answerToUnclearSpeech(state)
                                               : player.answer(turn.words, state);
    EXPECT_THAT(reply.text, HasSubstr(turn.says));
    EXPECT_EQ(reply.followOn, turn.goesOn) << reply.text;
    EXPECT_EQ(reply.speech.find_first_of("0123456789"), std::string::npos) << reply.speech;
    EXPECT_FALSE(reply.state.empty());
    EXPECT_LE(reply.state.size(), Dialogue::kLargestState);
    state = reply.state;
  }
}

TEST(Dialogue, PlaysAGuessingGame) {
  playThrough({{"let's play a game", "from 1 to 100"},
               {"fifty", "lower than 50"},
               {"is it twenty five", "higher than 25"},
               {"what time is it", "Say a number"},  // not a guess, and not counted
               {"two hundred", "Say a number"},
               {"zero", "Say a number"},
               {"~", "did not understand"},
               {nullptr, "did not hear"},
               {"i guess forty two", "in 3 tries", false},
               {"fifty", "did not understand", false}});
  playThrough({{"play a game", "What is your guess"}, {"forty two", "first try", false}});
  for (const char *stop : {"stop", "cancel", "stop the game", "i give up", "never mind"}) {
    playThrough({{"play a game", "What is your guess"},
                 {stop, "My number was 42", false},
                 {stop, "not understand", false}});
  }
}

TEST(Dialogue, AGameDoesNotListenForEverInAnEmptyRoom) {
  playThrough({{"play a game", "What is your guess"},
               {nullptr, "did not hear"},
               {nullptr, "did not hear"},
               {"one", "higher"},
               {nullptr, "did not hear"},
               {nullptr, "did not hear"},
               {nullptr, "end the game", false},
               {nullptr, "did not hear", false}});
}

TEST(Dialogue, AForgedStateStartsAfresh) {
  const Dialogue player = dialogue();
  const std::string good = player.answer("play a game", "").state;
  ASSERT_TRUE(player.answer("fifty", good).followOn);

  const auto game = [](const std::string &members) { return R"({"game":{)" + members + "}}"; };
  const std::string cases[] = {
      "{",
      "null",
      "[]",
      "7",
      std::string(1, '\0'),
      "\xff\xfe",
      R"({"game":7})",
      R"({"game":[]})",
      game(""),
      game(R"("secret":42,"tries":1)"),
      game(R"("secret":0,"tries":1,"silences":0)"),
      game(R"("secret":101,"tries":1,"silences":0)"),
      game(R"("secret":42.5,"tries":1,"silences":0)"),
      game(R"("secret":"42","tries":1,"silences":0)"),
      game(R"("secret":42,"tries":-1,"silences":0)"),
      game(R"("secret":42,"tries":2147483647,"silences":0)"),
      game(R"("secret":42,"tries":18446744073709551615,"silences":0)"),
      game(R"("secret":42,"tries":1e999,"silences":0)"),
      good.substr(0, good.size() - 1),
      std::string(1000, '['),
      good + std::string(Dialogue::kLargestState, ' '),
      std::string(100'000, '['),
  };
  for (const std::string &state : cases) {
    EXPECT_EQ(player.answer("fifty", state).skill, "unknown") << state;
    EXPECT_FALSE(player.answerToSilence(state).followOn) << state;
    EXPECT_FALSE(player.answerToUnclearSpeech(state).followOn) << state;
    EXPECT_EQ(player.answer("what time is it", state).skill, "time") << state;
  }
  // The most that passes for a count stays one.
  const std::string many = game(R"("secret":42,"tries":999,"silences":0)");
  const std::string more = player.answer("fifty", many).state;
  EXPECT_THAT(player.answer("forty two", more).text, HasSubstr("999 tries"));
}

TEST(Dialogue, TheSystemsRandomNumbersStayInTheGame) {
  const Dialogue player;
  for (int i = 0; i < 50; ++i) {
    const Reply reply = player.answer("play a game", "");
    EXPECT_TRUE(player.answer("one hundred and one", reply.state).followOn) << reply.state;
  }
  EXPECT_THAT(player.answer("what time is it", "").text, StartsWith("It is "));
}

}  // namespace
}  // namespace velmora
