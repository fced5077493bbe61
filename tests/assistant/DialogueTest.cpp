// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/dialogue/Dialogue.h"

#include <gmock/gmock.h>

#include <QTimeZone>
#include <cctype>
#include <fstream>
#include <thread>

#include "assistant/skills/ShoppingList.h"
#include "support/TemporaryFolder.h"

namespace velmora {
namespace {

using ::testing::ElementsAre;
using ::testing::StartsWith;

struct DialogueTest : testing::Test {
  // A Saturday, ten past three in the afternoon in Berlin.
  QDateTime now{QDate(2026, 11, 21), QTime(15, 10), QTimeZone("Europe/Berlin")};
  StateSeal::Time steady{std::chrono::hours(1'000)};
  int drawn = 0;  ///< over the lowest number that may be drawn
  ShoppingList list;
  const StateSeal seal{StateSeal::Key{1, 2, 3}};
  const Dialogue dialogue{{.clock = [this] { return now; },
                           .random = [this](int low, int high) { return std::min(low + drawn, high); },
                           .shoppingList = list,
                           .steadyClock = [this] { return steady; }},
                          seal};
};

TEST_F(DialogueTest, EveryExampleReachesItsSkillAndCanBeSpoken) {
  for (const SkillTable &table : skillTables()) {
    for (const Skill &skill : table.skills) {
      for (const std::string &example : skill.examples) {
        const Reply reply = dialogue.answer(example, {});
        EXPECT_EQ(reply.skill, skill.name) << example;
        EXPECT_FALSE(reply.text.empty()) << example;
        for (const char c : reply.speech)
          EXPECT_FALSE(std::isdigit(static_cast<unsigned char>(c)) || c == '%' || c == '=') << reply.speech;
        EXPECT_LE(reply.state.size(), StateSeal::kLargest);
        EXPECT_EQ(reply.followOn, !dialogue.pendingQuestion(reply.state).empty()) << example;
      }
    }
  }
}

TEST_F(DialogueTest, Answers) {
  const struct {
    const char *words;
    const char *answer;
  } cases[] = {
      {"What time is it?", "It is 3:10 PM."},
      {"hey could you please tell me what time it is in new york please", "It is 9:10 AM in New York."},
      {"what time is it in auckland", "It is 3:10 AM tomorrow in Auckland."},
      {"what day is the third of may", "It was Sunday, 3 May 2026."},
      {"what day will it be in two weeks", "It is Saturday, 5 December 2026."},
      {"what day is the thirty first of june", "There is no such day as the thirty first of june."},
      {"when is february twenty ninth", "It is on Tuesday, 29 February 2028."},
      {"when is thanksgiving", "It is on Thursday, 26 November 2026."},
      {"when's easter monday", "It is on Monday, 29 March 2027."},
      {"how many days until new year", "It is 41 days until Friday, 1 January 2027, about 6 weeks."},
      {"how long until three o'clock", "It is 11 hours and 50 minutes until 3:00 AM."},
      {"how long until quarter to one", "It is 9 hours and 35 minutes until 12:45 AM."},
      {"how many hours until eight thirty in the evening", "It is 5 hours and 20 minutes until 8:30 PM."},
      {"what is seven plus five times two", "7 + 5 × 2 = 17"},
      {"what is ten minus four minus three", "10 − 4 − 3 = 3"},
      {"what is minus five times two point five", "-5 × 2.5 = -12.5"},
      {"what is one divided by a thousand", "1 ÷ 1,000 is less than one hundredth."},
      {"what is five divided by zero", "Nothing can be divided by zero."},
      {"take three from ten", "10 − 3 = 7"},
      {"two to the tenth power", "2^10 = 1,024"},
      {"what is the difference between three and seven", "7 − 3 = 4"},
      {"what is the square root of minus four", "A negative number has no real square root."},
      {"convert minus forty degrees celsius to fahrenheit", "-40° Celsius = -40° Fahrenheit."},
      {"how many miles are in an inch", "1 inch ≈ 0.0000158 miles."},
      {"convert ten miles to pounds", "Miles cannot be converted to pounds."},
      {"pick a number between nine and five", "My number is 5."},
      {"turn it up", "The volume is at its highest already."},
      {"not so loud", "The volume is now 80%."},
      {"set the volume to zero percent", "The volume is now 10%."},
      {"", "I did not understand that."},
  };
  for (const auto &c : cases) EXPECT_THAT(dialogue.answer(c.words, {}).text, StartsWith(c.answer)) << c.words;
  EXPECT_THAT(dialogue.answer(std::string(100'000, 'a'), {}).text, StartsWith("I did not understand"));
}

TEST(LanguageTest, KnowsWhatIsCompleteAndWhatPeopleGoOnWith) {
  using enum Language::Completeness;
  const struct {
    const char *words, *question;
    Language::Completeness completeness;
  } cases[] = {{"what is on my shopping list", "", finished},
               {"what time is it", "", complete},
               {"add milk and", "", none},
               {"is it seventy", "guessing game", complete},
               {"is it seventy five", "guessing game", finished},
               {"is it seventy five", "", none}};
  for (const auto &c : cases)
    EXPECT_EQ(Language::instance().completeness(c.words, c.question), c.completeness) << c.words;
}

/// One thing said and what comes of it.
struct Step {
  const char *words;  ///< "(silence)" and "(unclear)" stand for what they say
  const char *answer;
  bool followOn = false;
};

TEST_F(DialogueTest, Conversations) {
  drawn = 6;  // the secret is 7, the quiz begins with its seventh question
  const std::vector<Step> cases[] = {
      {{"let's play a guessing game", "I am thinking", true},
       {"is it fifty", "My number is lower than 50.", true},
       {"what time is it", "It is 3:10 PM. Say a number from 1 to 100.", true},
       {"zero", "My number is from 1 to 100.", true},
       {"what did you say", "Say a number", true},
       {"seven", "7 is right! You found it in 2 tries."},
       {"seven", "I did not understand"}},
      {{"think of a number", "I am thinking", true},
       {"(silence)", "I did not hear anything. Say a number", true},
       {"(unclear)", "I did not understand that. Say a number", true},
       {"five", "My number is higher", true},
       {"the weather", "I did not understand", true},
       {"(silence)", "I did not hear", true},
       {"(silence)", "I did not hear anything. All right, let us stop. My number was 7."}},
      {{"quiz me", "Here are three questions. How many minutes", true},
       {"a hundred and twenty", "That is right! Which is the tallest animal", true},
       {"is it mars", "The answer is the giraffe. What is the capital", true},
       {"i don't know", "The answer is Paris. You had 1 of 3 right."}},
      {{"clear my shopping list", "Your shopping list is empty already."},
       {"add milk and some eggs to my shopping list", "I have put milk and eggs on"},
       {"we need olive oil",
        "I have put olive oil on your shopping list. It cannot be written to the disk, so it is kept only"},
       {"remove milk and bread from the list",
        "I have taken milk off your shopping list. There was no bread"},
       {"what's on my list", "On your shopping list: eggs and olive oil."},
       {"empty the shopping list", "There are 2 things on it. Do you want to clear", true},
       {"yes please", "Your shopping list is empty now."},
       {"read my shopping list", "Your shopping list is empty."}},
      {{"repeat that", "I have not said anything yet"},
       {"flip a coin", "It is tails."},
       {"(unclear)", "I did not understand that. You can ask"},
       {"(silence)", "I did not hear anything."},
       {"repeat that", "It is tails."}},
  };
  for (const auto &steps : cases) {
    std::string state;
    for (const Step &step : steps) {
      const Dialogue::Context context{.state = state};
      const std::string words = step.words;
      const Reply reply = words == "(silence)"   ? dialogue.answerToSilence(context)
                          : words == "(unclear)" ? dialogue.answerToUnclearSpeech(context)
                                                 : dialogue.answer(words, context);
      EXPECT_THAT(reply.text, StartsWith(step.answer)) << words;
      EXPECT_EQ(reply.followOn, step.followOn) << words;
      state = reply.state;
    }
  }
}

TEST_F(DialogueTest, OnlyAStateOfItsOwnGoesOn) {
  const std::string genuine = dialogue.answer("think of a number", {}).state;
  ASSERT_EQ(dialogue.pendingQuestion(genuine), "guessing game");
  for (std::size_t i = 0; i < genuine.size(); ++i) {
    std::string forged = genuine;
    forged[i] = static_cast<char>(forged[i] ^ 1);
    EXPECT_EQ(dialogue.pendingQuestion(forged), "") << i;
    EXPECT_EQ(dialogue.pendingQuestion(genuine.substr(0, i)), "") << i;
  }
  const std::pair<const char *, std::string> cases[] = {
      {"too large", std::string(100'000, 'x')},
      {"another key", StateSeal(StateSeal::Key{}).seal("{}", steady)},
      {"no conversation", seal.seal("[1,2", steady)},
      {"the wrong types", seal.seal(R"({"last":5})", steady)},
      {"an unknown question", seal.seal(R"({"last":"","question":"riddle","values":{},"misses":0})", steady)},
      {"of tomorrow", seal.seal(R"({"last":"x"})", steady + std::chrono::hours(24))},
  };
  for (const auto &[what, state] : cases)
    EXPECT_THAT(dialogue.answer("fifty", {.state = state}).text, StartsWith("I did not understand")) << what;
  // The secret is not for the client to read.
  EXPECT_EQ(genuine.find("guessing"), std::string::npos);
  now = now.addDays(-2);  // whatever the clock is set to
  steady += StateSeal::kLifetime;
  EXPECT_EQ(dialogue.pendingQuestion(genuine), "guessing game");
  steady += std::chrono::seconds(1);
  EXPECT_EQ(dialogue.pendingQuestion(genuine), "");
}

TEST(StateSealTest, StartsOfOneUserHaveOneKey) {
  const tests::TemporaryFolder folder;
  for (int round = 0; round < 20; ++round) {
    const auto file = folder.path() / std::to_string(round);
    StateSeal::Key one;
    std::thread other([&] { one = StateSeal::keyIn(file); });
    const StateSeal::Key two = StateSeal::keyIn(file);
    other.join();
    EXPECT_EQ(one, two);
    EXPECT_EQ(StateSeal::keyIn(file), two) << "kept";
    EXPECT_EQ(std::filesystem::status(file).permissions(), std::filesystem::perms(0600));
    std::ofstream(file) << "damaged";
    EXPECT_NE(StateSeal::keyIn(file), two);
  }
}

TEST(ShoppingListTest, TwoProcessesLoseNothingOfOneAnotherUntilItIsFull) {
  const tests::TemporaryFolder folder;
  const auto file = folder.path() / "list";
  const auto addHalf = [&](const std::string &name) {
    ShoppingList list(file);
    for (std::size_t i = 0; i < ShoppingList::kMostItems / 2; ++i)
      EXPECT_TRUE(list.add(name + std::to_string(i)));
  };
  std::thread other([&] { addHalf("milk "); });
  addHalf("eggs ");
  other.join();
  ShoppingList full(file);
  EXPECT_EQ(full.items().size(), ShoppingList::kMostItems);
  EXPECT_FALSE(full.add("one too many"));
  EXPECT_TRUE(full.add("milk 0")) << "it is there already";
  EXPECT_TRUE(full.remove("milk 7"));
}

TEST_F(DialogueTest, NothingInTheFileOfTheShoppingListBreaksAnAnswer) {
  const tests::TemporaryFolder folder;
  const auto damaged = folder.write("list", "milk\r\n\x01\n\xff" + std::string(300, '"') + "\xc3\n");
  EXPECT_THAT(ShoppingList(damaged).items(), ElementsAre("milk", std::string(100, '"')));
  // Each of these takes two characters in the state: too many to be kept, and no reason not to answer.
  for (int i = 0; i < 10; ++i) list.add(std::string(60, '"') + std::to_string(i));
  const Reply reply = dialogue.answer("read my shopping list", {});
  EXPECT_THAT(reply.text, StartsWith("On your shopping list"));
  EXPECT_THAT(dialogue.answer("repeat that", {.state = reply.state}).text, StartsWith("I have not"));
}

}  // namespace
}  // namespace velmora
