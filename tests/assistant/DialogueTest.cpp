// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/dialogue/Dialogue.h"

#include <gmock/gmock.h>

#include <QTimeZone>
#include <cctype>
#include <fstream>
#include <thread>

#include "assistant/skills/ShoppingList.h"
#include "foundation/File.h"
#include "support/TemporaryFolder.h"

namespace velmora {
namespace {

using ::testing::ElementsAre;
using ::testing::StartsWith;

struct DialogueTest : testing::Test {
  // A Saturday, ten past three in the afternoon in Berlin.
  QDateTime now{QDate(2026, 11, 21), QTime(15, 10), QTimeZone("Europe/Berlin")};
  int drawn = 0;  ///< over the lowest number that may be drawn
  ShoppingList list;
  const StateSeal seal{StateSeal::Key{1, 2, 3}};
  const Dialogue dialogue{{.clock = [this] { return now; },
                           .random = [this](int low, int high) { return std::min(low + drawn, high); },
                           .shoppingList = list},
                          seal};

  [[nodiscard]] std::string ask(const char *words, int volume = 100) const {
    return dialogue.answer(words, {.state = {}, .volume = volume}).text;
  }
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
      {"what is the eastern time", "It is 9:10 AM, Eastern time."},
      {"what day is it", "Today is Saturday, 21 November 2026."},
      {"what day is the third of may", "It was Sunday, 3 May 2026."},
      {"what day is december thirty first", "It is Thursday, 31 December 2026."},
      {"what day will it be in two weeks", "It is Saturday, 5 December 2026."},
      {"what day is the thirty first of june", "There is no such day as the thirty first of june."},
      {"when is february twenty ninth", "It is on Tuesday, 29 February 2028."},
      {"what date was last saturday", "It was Saturday, 14 November 2026."},
      {"which day is next saturday", "It is Saturday, 28 November 2026."},
      {"when is thanksgiving", "It is on Thursday, 26 November 2026."},
      {"when's easter monday", "It is on Monday, 29 March 2027."},
      {"how many days until new year", "It is 41 days until Friday, 1 January 2027, about 6 weeks."},
      {"how long until tomorrow", "It is 1 day until Sunday, 22 November 2026."},
      {"how long until yesterday", "That was 1 day ago."},
      {"how long until three o'clock", "It is 11 hours and 50 minutes until 3:00 AM."},
      {"how long until quarter to one", "It is 9 hours and 35 minutes until 12:45 AM."},
      {"how many hours until eight thirty in the evening", "It is 5 hours and 20 minutes until 8:30 PM."},
      {"what is seven plus five times two", "7 + 5 × 2 = 17"},
      {"what is ten minus four minus three", "10 − 4 − 3 = 3"},
      {"what is minus five times two point five", "-5 × 2.5 = -12.5"},
      {"what is one divided by a thousand", "1 ÷ 1,000 is less than one hundredth."},
      {"what is one million times a million times a million", "The result is too large for me."},
      {"what is five divided by zero", "Nothing can be divided by zero."},
      {"take three from ten", "10 − 3 = 7"},
      {"what is fifteen percent of eighty", "15% of 80 = 12"},
      {"two to the tenth power", "2^10 = 1,024"},
      {"what is the difference between three and seven", "7 − 3 = 4"},
      {"what is zero to the power of minus one", "That cannot be calculated."},
      {"what is the square root of minus four", "A negative number has no real square root."},
      {"what's the cube root of minus twenty seven", "The cube root of -27 = -3"},
      {"convert minus forty degrees celsius to fahrenheit", "-40° Celsius = -40° Fahrenheit."},
      {"how many grams are in half a pound", "0.5 pounds ≈ 226.8 grams."},
      {"how many miles are in an inch", "1 inch ≈ 0.0000158 miles."},
      {"convert ten miles to pounds", "Miles cannot be converted to pounds."},
      {"roll three dice", "You rolled 1, 1 and 1, together 3."},
      {"pick a number between nine and five", "My number is 5."},
      {"how do you spell rhythm", "Rhythm: R, H, Y, T, H, M."},
      {"repeat after me hello world", "Hello world."},
      {"what is the weather like", "I am afraid that is beyond me."},
      {"what time is it on mars", "I only know what time it is on earth."},
      {"", "I did not understand that."},
      {"seven", "I did not understand that."},
  };
  for (const auto &c : cases) EXPECT_THAT(ask(c.words), StartsWith(c.answer)) << c.words;
  EXPECT_THAT(ask(std::string(100'000, 'a').c_str()), StartsWith("I did not understand"));
}

TEST_F(DialogueTest, ChangesTheVolumeWithinItsRange) {
  const struct {
    const char *words;
    int volume;
    std::optional<int> changed;
  } cases[] = {{"turn it up", 50, 70},
               {"louder", 95, 100},
               {"volume up", 100, {}},
               {"turn the volume down", 20, 10},
               {"set the volume to zero percent", 60, 10},
               {"set the volume to forty", 60, 40},
               {"set the volume to maximum", 60, 100}};
  for (const auto &c : cases)
    EXPECT_EQ(dialogue.answer(c.words, {.state = {}, .volume = c.volume}).volume, c.changed) << c.words;
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
       {"(silence)", "I did not hear", true},
       {"the weather", "I did not understand", true},
       {"(silence)", "I did not hear anything. All right, let us stop. My number was 7."}},
      {{"think of a number", "I am thinking", true},
       {"i give up", "All right, let us stop. My number was 7."}},
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
       {"no thank you", "All right, I keep it."},
       {"clear the list", "There are 2 things", true},
       {"yes please", "Your shopping list is empty now."},
       {"read my shopping list", "Your shopping list is empty."}},
      {{"repeat that", "I have not said anything yet"},
       {"flip a coin", "It is tails."},
       {"what did you say", "It is tails."},
       {"say that again", "It is tails."},
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
  const auto seconds = std::chrono::sys_seconds(std::chrono::seconds(now.toSecsSinceEpoch()));
  const struct {
    const char *what;
    std::string state;
  } cases[] = {
      {"nothing", ""},
      {"plain text", R"({"last":"","question":"quiz","values":{},"misses":0})"},
      {"too large", std::string(100'000, 'x')},
      {"another key", StateSeal(StateSeal::Key{}).seal("{}", seconds)},
      {"no conversation", seal.seal("[1,2", seconds)},
      {"the wrong types", seal.seal(R"({"last":5})", seconds)},
      {"an unknown question",
       seal.seal(R"({"last":"","question":"riddle","values":{},"misses":0})", seconds)},
      {"of tomorrow", seal.seal(R"({"last":"x"})", seconds + std::chrono::hours(24))},
  };
  for (const auto &c : cases)
    EXPECT_THAT(dialogue.answer("fifty", {.state = c.state}).text, StartsWith("I did not understand"))
        << c.what;
  // The secret is not for the client to read.
  EXPECT_EQ(genuine.find("guessing"), std::string::npos);
  now = now.addSecs(-5 * 60);
  EXPECT_EQ(dialogue.pendingQuestion(genuine), "guessing game") << "the clock was set right";
  now = now.addSecs(20 * 60);
  EXPECT_EQ(dialogue.pendingQuestion(genuine), "guessing game");
  now = now.addSecs(1);
  EXPECT_EQ(dialogue.pendingQuestion(genuine), "");

  StateSeal::Time steady = seconds;
  const Dialogue unmoved{{.clock = [this] { return now; },
                          .random = [](int low, int) { return low; },
                          .shoppingList = list,
                          .steadyClock = [&] { return steady; }},
                         seal};
  now = now.addDays(-2);
  EXPECT_EQ(unmoved.pendingQuestion(genuine), "guessing game") << "whatever the clock was set to";
  steady += StateSeal::kLifetime + std::chrono::seconds(1);
  EXPECT_EQ(unmoved.pendingQuestion(genuine), "");
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
  EXPECT_THROW((void)StateSeal::keyIn(folder.path() / "no" / "key"), std::runtime_error);
}

struct ShoppingListTest : testing::Test {
  tests::TemporaryFolder folder;
  const std::filesystem::path file = folder.path() / "place" / "list";
};

TEST_F(ShoppingListTest, TwoProcessesLoseNothingOfOneAnotherUntilItIsFull) {
  std::filesystem::create_directory(file.parent_path());
  const auto addHalf = [&](const std::string &name) {
    ShoppingList list(file);
    for (std::size_t i = 0; i < ShoppingList::kMostItems / 2; ++i)
      EXPECT_TRUE(list.add(name + std::to_string(i)));
  };
  std::thread other([&] { addHalf("milk "); });
  addHalf("eggs ");
  other.join();
  ShoppingList full(file);
  EXPECT_TRUE(full.isOnDisk());
  EXPECT_EQ(full.items().size(), ShoppingList::kMostItems);
  EXPECT_FALSE(full.add("one too many"));
  EXPECT_TRUE(full.add("milk 0")) << "it is there already";
  EXPECT_TRUE(full.remove("milk 7"));
  EXPECT_FALSE(full.remove("milk 7"));
}

TEST_F(ShoppingListTest, WhatCannotBeWrittenLastsAsLongAsTheProgram) {
  ShoppingList list(file);
  ShoppingList hidden(file);
  EXPECT_TRUE(list.add("milk") && hidden.add("wine"));
  EXPECT_FALSE(list.isOnDisk());
  std::filesystem::create_directory(file.parent_path());
  EXPECT_TRUE(list.add("eggs"));
  EXPECT_TRUE(list.isOnDisk());
  EXPECT_EQ(readFile(file), "milk\neggs\n");
  EXPECT_THAT(hidden.items(), ElementsAre("milk", "eggs")) << "what another one has written since";
}

TEST_F(DialogueTest, NothingInTheFileOfTheShoppingListBreaksAnAnswer) {
  const struct {
    std::string held;
    std::vector<std::string> items;
  } cases[] = {{"milk\r\n\xff"
                "eggs\xc3\n",
                {"milk", "eggs"}},
               {"\n \t\nk\xc3\xa4se\n", {"k\xc3\xa4se"}},
               {std::string(500, '\x01') + "\n", {}},
               {std::string(300, '"') + "\n", {std::string(100, '"')}}};
  const tests::TemporaryFolder folder;
  for (const auto &c : cases) EXPECT_EQ(ShoppingList(folder.write("list", c.held)).items(), c.items);
  // Each of these takes two characters in the state: too many to be kept, and no reason not to answer.
  for (int i = 0; i < 10; ++i) list.add(std::string(60, '"') + std::to_string(i));
  const Reply reply = dialogue.answer("read my shopping list", {});
  EXPECT_THAT(reply.text, StartsWith("On your shopping list"));
  EXPECT_THAT(dialogue.answer("repeat that", {.state = reply.state}).text, StartsWith("I have not"));
}

}  // namespace
}  // namespace velmora
