// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// velmora-converse with a microphone and a loudspeaker of the test's own.
#include "end_to_end/CommandLine.h"
#include "support/AudioFiles.h"
#include "support/SoundServer.h"
#include "support/Waiting.h"

namespace velmora {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::Not;
using tests::eventually;
using tests::Program;

class VoiceTest : public tests::CommandLine {
 protected:
  void say(const std::string &name) const {
    m_server.say(tests::readAudio(VELMORA_QUESTIONS "/" + name).samples, "mic", AudioSource::sampleRate);
  }
  [[nodiscard]] bool isHeard(bool wanted = true) const {
    return eventually([=, this] { return m_server.isHeardBySomebody() == wanted; });
  }
  [[nodiscard]] std::string failure(const std::vector<std::string> &arguments) const {
    const Outcome outcome = converse(arguments);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.out, IsEmpty());
    return outcome.err;
  }

  tests::SoundServer m_server;
};

TEST_F(VoiceTest, HoldsAConversationForAsLongAsTheAssistantAsksBack) {
  std::optional<Program> program;
  {
    const auto recording = m_server.record();
    const std::vector<std::string> arguments{"--microphone", "--device", "mic", "--save-answer",
                                             m_home.path() / "answer.mp3"};
    program.emplace(VELMORA_CONVERSE, arguments, environment());
    EXPECT_EQ(recording->waitForSound(5000).size(), 5000U) << "no start prompt";
  }
  EXPECT_TRUE(isHeard());
  say("09-lets-play-a-guessing-game.wav");
  ASSERT_TRUE(program->waitForOut("Velmora: ")) << program->err();
  // Deaf while it speaks; then it listens by itself.
  EXPECT_TRUE(isHeard(false));
  EXPECT_TRUE(isHeard());
  say("12-stop-the-game.wav");
  EXPECT_EQ(program->wait(), 0);
  EXPECT_THAT(program->out(), MatchesRegex("You: let's play a guessing game\nVelmora: [^\n]+\n"
                                           "You: stop the game\nVelmora: [^\n]+\n"));
  EXPECT_THAT(program->err(), IsEmpty()) << "a meter where there is no terminal";
  for (const char *const name : {"answer-1.mp3", "answer-2.mp3"})
    EXPECT_THAT(readFile(m_home.path() / name), Not(IsEmpty()));
}

TEST_F(VoiceTest, SaysWhatIsWrongWithTheMicrophone) {
  Program deaf(VELMORA_CONVERSE, {"--microphone"}, environment());
  EXPECT_TRUE(isHeard());
  m_server.kill();
  EXPECT_EQ(deaf.wait(), 1);
  EXPECT_THAT(deaf.err(), HasSubstr("the microphone gives no sound"));
  EXPECT_THAT(failure({"--microphone"}), HasSubstr("there is no sound server"));
  m_server.start();
  EXPECT_THAT(failure({"--microphone", "--device", "none"}), HasSubstr("there is no microphone none"));
  m_server.unplugMicrophone("mic");
  EXPECT_THAT(failure({"--list-devices"}), HasSubstr("no microphone is attached"));
}

}  // namespace
}  // namespace velmora
