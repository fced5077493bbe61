// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// velmora-converse and velmora-assistant, looked at from outside.
#include <algorithm>

#include "end_to_end/CommandLine.h"
#include "support/Waiting.h"

namespace velmora {
namespace {

using nlohmann::json;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::SizeIs;
using ::testing::StartsWith;
using tests::Program;

struct ConverseTest : tests::CommandLine {};

std::vector<json> objects(const std::string &lines) {
  std::vector<json> found;
  std::istringstream in(lines);
  for (std::string line; std::getline(in, line);) found.push_back(json::parse(line));
  return found;
}

TEST_F(ConverseTest, InRealTimeItPrintsARequestAndAnAnswerAndNothingElse) {
  const Outcome outcome = converse({m_question});  // nothing is configured: the local assistant
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_THAT(outcome.out, MatchesRegex("You: [^\n]+\nVelmora: [^\n]+\n"));
  EXPECT_EQ(outcome.err, "");
}

TEST_F(ConverseTest, QuestionsOfFilesAndOfStandardInputMakeOneConversation) {
  const std::string first = VELMORA_QUESTIONS "/09-lets-play-a-guessing-game.wav";
  Program program(VELMORA_CONVERSE,
                  {"--local", "--fast", "--json", "--save-answer", m_home.path() / "answer.mp3", first, "-"},
                  environment());
  constexpr std::size_t kHeader = 44;  // bytes of a WAV file before its samples
  program.say(readFile(VELMORA_QUESTIONS "/12-stop-the-game.wav").substr(kHeader));
  const Outcome outcome = endOf(program);
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(outcome.err, "");
  const auto turns = objects(outcome.out);
  ASSERT_THAT(turns, SizeIs(2));
  EXPECT_THAT(turns[1].at("answer").get<std::string>(), HasSubstr("My number was"));
  for (std::size_t i = 0; i < turns.size(); ++i) {
    SCOPED_TRACE(turns[i].dump());
    EXPECT_EQ(turns[i].at("status"), 0);
    EXPECT_EQ(turns[i].at("follow_on"), i == 0);
    EXPECT_LE(turns[i].at("end_of_utterance_ms").get<double>(), turns[i].at("first_audio_ms").get<double>());
    EXPECT_LE(turns[i].at("first_audio_ms").get<double>(), turns[i].at("done_ms").get<double>());
    const std::string mp3 = readFile(m_home.path() / ("answer-" + std::to_string(i + 1) + ".mp3"));
    EXPECT_EQ(turns[i].at("audio_bytes"), mp3.size());
    EXPECT_GT(mp3.size(), 1000U);
  }
}

TEST_F(ConverseTest, ASignalEndsItAndTheLocalAssistant) {
  for (const int number : {SIGINT, SIGTERM, SIGKILL}) {
    Program program(VELMORA_CONVERSE, {"--local", "--verbose", "--json", "-"}, environment());
    program.say(std::string(6400, '\0'));
    ASSERT_TRUE(program.waitForErr("audio request")) << program.err();
    const auto children = tests::childrenOf(program.pid());
    ASSERT_THAT(children, SizeIs(1));
    program.signal(number);
    EXPECT_EQ(program.wait(), number == SIGKILL ? -1 : 1);
    EXPECT_TRUE(tests::eventually([&] { return ::kill(children[0], 0) != 0; }));
    if (number == SIGKILL) continue;
    EXPECT_THAT(program.err(), HasSubstr("velmora-converse: interrupted\n"));
    EXPECT_EQ(objects(program.out()).at(0).at("status"), 1);
  }
}

TEST_F(ConverseTest, StreamsThatCannotBeUsedAreAFailure) {
  const std::string fast = "--local --fast " + m_question;
  const std::pair<std::string, const char *> cases[] = {
      {"--version >/dev/full", "standard output cannot be written to: No space left"},
      {fast + " >/dev/full", "standard output cannot be written to"},
      {"--local --fast - <&-", "standard input is closed"},
      {fast + " --save-answer /dev/full", "the answer cannot be saved: /dev/full: No space left"}};
  for (const auto &[line, says] : cases) {
    Program program("/bin/sh", {"-c", "exec " VELMORA_CONVERSE " " + line}, environment());
    const Outcome outcome = endOf(program);
    EXPECT_EQ(outcome.status, 1) << line;
    EXPECT_THAT(outcome.err, AllOf(StartsWith("velmora-converse: "), HasSubstr(says)));
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
  }
}

}  // namespace
}  // namespace velmora
