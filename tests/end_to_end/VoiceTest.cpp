// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// velmora-converse with a microphone and a loudspeaker of the test's own.
#include <gmock/gmock.h>

#include "foundation/Deployment.h"
#include "platform/audio/AudioFile.h"
#include "support/Program.h"
#include "support/SoundServer.h"
#include "support/TemporaryFolder.h"
#include "support/Waiting.h"

namespace velmora {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using tests::eventually;
using tests::Program;

class VoiceTest : public ::testing::Test {
 protected:
  [[nodiscard]] Program::Environment environment() const {
    const std::string home = m_folder.path();
    return {{"HOME", home},
            {"XDG_CONFIG_HOME", home},
            {"XDG_RUNTIME_DIR", home},
            {"XDG_STATE_HOME", home},
            {"VELMORA_DEPLOYMENT", ""}};
  }
  /// How many programs hear something of the server.
  [[nodiscard]] std::ptrdiff_t hearers() const {
    const std::string all = m_server.control({"list", "short", "source-outputs"});
    return std::count(all.begin(), all.end(), '\n');
  }
  void say(const char *name) const {
    AudioFile file(std::filesystem::path(VELMORA_QUESTIONS) / name);
    std::vector<std::int16_t> samples(static_cast<std::size_t>(10 * AudioSource::sampleRate));
    samples.resize(file.read(samples).samples);
    m_server.say(samples, "mic", AudioSource::sampleRate);
  }
  std::pair<int, std::string> failure(const std::vector<std::string> &arguments) const {
    Program program(VELMORA_CONVERSE, arguments, environment());
    const int status = program.finish();
    EXPECT_THAT(program.out(), IsEmpty());
    return {status, program.err()};
  }

  tests::TemporaryFolder m_folder;
  tests::SoundServer m_server;
};

TEST_F(VoiceTest, HoldsAConversationForAsLongAsTheAssistantAsksBack) {
  const auto before = hearers();
  const std::string answers = m_folder.path() / "answer.mp3";
  std::optional<Program> program;
  {
    const auto recording = m_server.record();
    program.emplace(VELMORA_CONVERSE,
                    std::vector<std::string>{"--microphone", "--device", "mic", "--save-answer", answers},
                    environment());
    EXPECT_EQ(recording->waitForSound(5000).size(), 5000U) << "no start prompt";
  }
  EXPECT_TRUE(eventually([&] { return hearers() > before; }));
  say("09-lets-play-a-guessing-game.wav");
  ASSERT_TRUE(program->waitForOut("Velmora: ")) << program->err();
  // Deaf while it speaks; then it listens by itself.
  EXPECT_TRUE(eventually([&] { return hearers() == before; }));
  EXPECT_TRUE(eventually([&] { return hearers() > before; }));
  say("12-stop-the-game.wav");
  EXPECT_EQ(program->wait(), 0);
  EXPECT_THAT(program->out(), MatchesRegex("You: let's play a guessing game\nVelmora: [^\n]+\n"
                                           "You: stop the game\nVelmora: [^\n]+\n"));
  EXPECT_THAT(program->err(), IsEmpty()) << "a meter where there is no terminal";
  for (const char *const name : {"answer-1.mp3", "answer-2.mp3"}) {
    EXPECT_FALSE(readFile(m_folder.path() / name).empty());
  }
}

TEST_F(VoiceTest, SaysWhatIsWrongWithTheMicrophoneAndCanBeInterrupted) {
  Program list(VELMORA_CONVERSE, {"--list-devices"}, environment());
  EXPECT_EQ(list.finish(), 0);
  EXPECT_THAT(list.out(), MatchesRegex("mic\t[^\t\n]+\tdefault\n"));
  const auto [status, error] = failure({"--microphone", "--device", "none"});
  EXPECT_EQ(status, 1);
  EXPECT_THAT(error, HasSubstr("there is no microphone none"));

  const auto before = hearers();
  Program listening(VELMORA_CONVERSE, {"--microphone"}, environment());
  EXPECT_TRUE(eventually([&] { return hearers() > before; }));
  listening.signal(SIGINT);
  EXPECT_EQ(listening.wait(), 1);
  EXPECT_THAT(listening.err(), HasSubstr("interrupted"));
  {
    Program deaf(VELMORA_CONVERSE, {"--microphone"}, environment());
    EXPECT_TRUE(eventually([&] { return hearers() > before; }));
    m_server.kill();
    EXPECT_EQ(deaf.wait(), 1);
    EXPECT_THAT(deaf.err(), HasSubstr("the microphone gives no sound"));
  }
  EXPECT_THAT(failure({"--microphone"}).second, HasSubstr("there is no sound server"));
  m_server.start();
  m_server.unplugMicrophone("mic");
  EXPECT_THAT(failure({"--list-devices"}).second, HasSubstr("no microphone is attached"));
}

}  // namespace
}  // namespace velmora
