// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// velmora-converse and velmora-assistant, looked at from outside.
#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <sys/socket.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "foundation/Deployment.h"
#include "platform/audio/AudioFile.h"
#include "support/AudioFiles.h"
#include "support/Program.h"
#include "support/TemporaryFolder.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;
using tests::ProcessWatch;
using tests::Program;

/// A socket of this machine that takes connections and never says a word.
class MuteListener {
 public:
  MuteListener() : m_socket(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto *const generic = reinterpret_cast<sockaddr *>(&address);
    if (::bind(m_socket, generic, size) != 0 || ::listen(m_socket, 8) != 0 ||
        ::getsockname(m_socket, generic, &size) != 0) {
      throw std::runtime_error("no listener");
    }
    m_port = ntohs(address.sin_port);
  }
  ~MuteListener() { ::close(m_socket); }
  MuteListener(const MuteListener &) = delete;
  MuteListener &operator=(const MuteListener &) = delete;

  [[nodiscard]] std::string address() const { return "127.0.0.1:" + std::to_string(m_port); }
  [[nodiscard]] bool wasContacted() const {
    const int connection = ::accept(m_socket, nullptr, nullptr);
    if (connection >= 0) ::close(connection);
    return connection >= 0;
  }

 private:
  int m_socket;
  int m_port = 0;
};

class ConverseTest : public ::testing::Test {
 protected:
  ConverseTest() {
    for (const auto &entry : fs::directory_iterator(VELMORA_QUESTIONS)) {
      if (entry.path().extension() == ".wav") m_questions.push_back(entry.path());
    }
    std::sort(m_questions.begin(), m_questions.end());
    if (m_questions.empty()) throw std::runtime_error("no questions in " VELMORA_QUESTIONS);
    fs::permissions(m_folder.path(), fs::perms::owner_all);
  }

  [[nodiscard]] Program::Environment environment(const std::string &token = "") const {
    const std::string home = m_folder.path();
    return {{"HOME", home},           {"XDG_CONFIG_HOME", home},  {"XDG_RUNTIME_DIR", home},
            {"XDG_STATE_HOME", home}, {"VELMORA_DEPLOYMENT", ""}, {"VELMORA_ASSISTANT_TOKEN", token}};
  }

  /// Runs velmora-converse to its end.
  struct Outcome {
    int status;
    std::string out;
    std::string err;
  };
  Outcome converse(const std::vector<std::string> &arguments, const std::string &input = {}) {
    Program program(VELMORA_CONVERSE, arguments, environment());
    if (!input.empty()) program.say(input);
    const int status = program.finish();
    return {status, program.out(), program.err()};
  }
  /// The same through the shell, which redirects.
  Outcome converseInShell(const std::string &redirection, const std::vector<std::string> &arguments) {
    std::vector<std::string> all{"-c", "exec \"$0\" \"$@\" " + redirection, VELMORA_CONVERSE};
    all.insert(all.end(), arguments.begin(), arguments.end());
    Program program("/bin/sh", all, environment());
    const int status = program.finish();
    return {status, program.out(), program.err()};
  }

  [[nodiscard]] std::string tone(const char *name, double seconds) const {
    const fs::path file = m_folder.path() / name;
    tests::writeAudio(file, tests::tone(300, seconds, 8000, {0.2}), 8000, 1,
                      SF_FORMAT_WAV | SF_FORMAT_PCM_U8);
    return file;
  }

  tests::TemporaryFolder m_folder;
  std::vector<std::string> m_questions;
};

std::vector<json> objects(const std::string &lines) {
  std::vector<json> found;
  std::istringstream in(lines);
  for (std::string line; std::getline(in, line);) found.push_back(json::parse(line));
  return found;
}

TEST_F(ConverseTest, InRealTimeItPrintsARequestAndAnAnswerAndNothingElse) {
  const Outcome outcome = converse({m_questions.front()});  // nothing is configured: the local assistant
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_THAT(outcome.out, MatchesRegex("You: [^\n]+\nVelmora: [^\n]+\n"));
  EXPECT_EQ(outcome.err, "");
}

TEST_F(ConverseTest, EveryQuestionIsAnsweredInOneConversation) {
  const fs::path answer = m_folder.path() / "answer.mp3";
  std::vector<std::string> arguments{"--local", "--fast", "--json", "--save-answer", answer};
  // At least two turns, so that there are numbers.
  const std::vector<std::string> questions =
      m_questions.size() > 1 ? m_questions : std::vector{m_questions[0], m_questions[0]};
  arguments.insert(arguments.end(), questions.begin(), questions.end());
  const Outcome outcome = converse(arguments);
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(outcome.err, "");
  const auto turns = objects(outcome.out);
  ASSERT_THAT(turns, SizeIs(questions.size()));
  bool isGameOver = false;
  for (std::size_t i = 0; i < turns.size(); ++i) {
    SCOPED_TRACE(turns[i].dump());
    EXPECT_TRUE(!turns[i].at("request").get<std::string>().empty() || isGameOver);
    EXPECT_NE(turns[i].at("answer"), "");
    // Once in fifty times one of the guesses is right, and what follows it is about no game any more.
    isGameOver =
        isGameOver || turns[i].at("answer").get<std::string>().find(" is right!") != std::string::npos;
    EXPECT_EQ(turns[i].at("status"), 0);
    EXPECT_TRUE(turns[i].at("follow_on").is_boolean());
    EXPECT_LE(turns[i].at("end_of_utterance_ms").get<double>(), turns[i].at("first_audio_ms").get<double>());
    EXPECT_LE(turns[i].at("first_audio_ms").get<double>(), turns[i].at("done_ms").get<double>());
    const std::string mp3 = readFile(m_folder.path() / ("answer-" + std::to_string(i + 1) + ".mp3"));
    EXPECT_EQ(turns[i].at("audio_bytes"), mp3.size());
    ASSERT_GT(mp3.size(), 1000U);
    // The synchronisation word of an MPEG frame, layer III.
    EXPECT_EQ(static_cast<unsigned char>(mp3[0]), 0xff);
    EXPECT_EQ(static_cast<unsigned char>(mp3[1]) & 0xe6, 0xe2);
  }
}

TEST_F(ConverseTest, RawSamplesComeFromStandardInput) {
  AudioFile file(m_questions.front());
  std::string bytes;
  for (const std::int16_t sample : tests::readAll(file)) {
    bytes += static_cast<char>(sample & 0xff);
    bytes += static_cast<char>(sample >> 8 & 0xff);
  }
  const Outcome outcome = converse({"--fast", "-"}, bytes);
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(outcome.out.substr(0, outcome.out.find('\n')),
            converse({"--fast", m_questions.front()}).out.substr(0, outcome.out.find('\n')));
}

TEST_F(ConverseTest, ARefusedTokenIsReportedWhileTheAudioIsStillBeingSent) {
  // Five minutes of audio: the test would run out of time if they were sent to the end.
  const std::string audio = tone("long.wav", 300);
  const Outcome outcome = converse({"--local", "--token", "wrong-token", "--json", audio});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err, MatchesRegex("velmora-converse: the service refused the token[^\n]*--token\\)\n"));
  EXPECT_THAT(outcome.err, Not(HasSubstr("wrong-token")));
  const auto turns = objects(outcome.out);
  ASSERT_THAT(turns, SizeIs(1));
  EXPECT_EQ(turns[0].at("status"), 16);
  EXPECT_TRUE(turns[0].at("first_audio_ms").is_null());
}

TEST_F(ConverseTest, AnAddressRootsAndATokenNeedNoDeployment) {
  Program assistant(VELMORA_ASSISTANT, {"--port", "0", "--stop-at-eof"}, environment("the-token"));
  ASSERT_TRUE(assistant.waitForOut("\n")) << assistant.err();
  const json ready = json::parse(assistant.out());
  const std::string address = ready.at("address");
  const std::string roots = fs::path(ready.at("deployment").get<std::string>()) / "roots.pem";
  const std::string question = m_questions.front();

  const Outcome good =
      converse({"--endpoint", address, "--roots", roots, "--token", "the-token", "--fast", question});
  EXPECT_EQ(good.status, 0) << good.err;

  Program other(VELMORA_ASSISTANT, {"--port", "0", "--stop-at-eof"}, environment("the-token"));
  ASSERT_TRUE(other.waitForOut("\n")) << other.err();
  const std::string otherAddress = json::parse(other.out()).at("address");
  const Outcome strange = converse(
      {"--endpoint", otherAddress, "--roots", roots, "--token", "the-token", "--fast", "--json", question});
  EXPECT_EQ(strange.status, 1);
  EXPECT_EQ(objects(strange.out).at(0).at("status"), 14);
  EXPECT_THAT(strange.err, AllOf(HasSubstr("cannot be reached"), HasSubstr("--roots")));

  const Outcome dead = converse(
      {"--endpoint", "localhost:1", "--roots", roots, "--token", "t", "--json", tone("long.wav", 300)});
  EXPECT_EQ(dead.status, 1);
  EXPECT_EQ(objects(dead.out).at(0).at("status"), 14);
  EXPECT_THAT(dead.err,
              MatchesRegex("velmora-converse: the service at localhost:1 cannot be reached[^\n]*\n"));

  const MuteListener mute;
  const Outcome silent = converse({"--endpoint", mute.address(), "--roots", roots, "--token", "t", "--fast",
                                   "--json", "--timeout", "0.5", question});
  EXPECT_EQ(silent.status, 1);
  EXPECT_EQ(objects(silent.out).at(0).at("status"), 4);
  EXPECT_THAT(silent.err, HasSubstr("does not answer: no answer within 0.5 s"));
}

TEST_F(ConverseTest, ABadFileIsReportedBeforeAnythingIsContacted) {
  const MuteListener listener;
  const std::string roots = m_folder.write("roots.pem", "-----BEGIN CERTIFICATE-----\n");
  const Outcome outcome = converse({"--endpoint", listener.address(), "--roots", roots, "--token", "t",
                                    m_questions.front(), m_folder.write("bad.wav", "bad")});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err, MatchesRegex("velmora-converse: [^\n]*bad.wav: is not an audio file[^\n]*\n"));
  EXPECT_EQ(outcome.out, "");
  EXPECT_FALSE(listener.wasContacted());
}

TEST_F(ConverseTest, ASignalEndsItAndTheLocalAssistant) {
  for (const int number : {SIGINT, SIGTERM}) {
    Program program(VELMORA_CONVERSE, {"--local", "--verbose", "--json", "-"}, environment());
    program.say(std::string(6400, '\0'));
    ASSERT_TRUE(program.waitForErr("audio request")) << program.err();
    const auto children = program.children();
    ASSERT_THAT(children, SizeIs(1));
    const ProcessWatch assistant(children[0]);
    program.signal(number);
    EXPECT_EQ(program.wait(), 1);
    EXPECT_THAT(program.err(), HasSubstr("velmora-converse: interrupted\n"));
    EXPECT_EQ(objects(program.out()).at(0).at("status"), 1);
    EXPECT_TRUE(assistant.ends());
  }
}

TEST_F(ConverseTest, TheLocalAssistantEndsWithAProgramThatIsKilled) {
  Program program(VELMORA_CONVERSE, {"--local", "--verbose", "-"}, environment());
  program.say(std::string(6400, '\0'));
  ASSERT_TRUE(program.waitForErr("audio request")) << program.err();
  const auto children = program.children();
  ASSERT_THAT(children, SizeIs(1));
  const ProcessWatch assistant(children[0]);
  program.signal(SIGKILL);
  EXPECT_EQ(program.wait(), -1);
  EXPECT_TRUE(assistant.ends());
}

TEST_F(ConverseTest, StreamsThatCannotBeUsedAreAFailure) {
  const struct {
    const char *redirection;
    std::vector<std::string> arguments;
    const char *says;
  } cases[] = {
      {">/dev/full", {"--version"}, "standard output cannot be written to: No space left"},
      {">&-", {"--help"}, "standard output cannot be written to: Bad file descriptor"},
      {">/dev/full", {"--local", "--fast", m_questions.front()}, "standard output cannot be written to"},
      {">&- <&-", {"--local", "--fast", m_questions.front()}, "standard output cannot be written to"},
      {"<&-", {"--local", "--fast", "-"}, "standard input is closed"},
      {"",
       {"--local", "--fast", "--save-answer", "/dev/full", m_questions.front()},
       "the answer cannot be saved: /dev/full: No space left"}};
  for (const auto &c : cases) {
    const Outcome outcome = converseInShell(c.redirection, c.arguments);
    EXPECT_EQ(outcome.status, 1) << c.redirection;
    EXPECT_THAT(outcome.err, AllOf(StartsWith("velmora-converse: "), HasSubstr(c.says)));
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
  }
}

TEST_F(ConverseTest, HelpVersionAndWrongArguments) {
  EXPECT_EQ(converse({"--version"}).out, "velmora-converse 0.1.0\n");
  EXPECT_THAT(converse({"--help"}).out, StartsWith("Usage: velmora-converse "));
  const Outcome wrong = converse({"--volume", "-1", m_questions.front()});
  EXPECT_EQ(wrong.status, 2);
  EXPECT_EQ(wrong.out, "");
  EXPECT_THAT(wrong.err, MatchesRegex("velmora-converse: --volume [^\n]*--help\n"));
}

TEST_F(ConverseTest, SaysWhenTheLocalAssistantIsNotInstalled) {
  const fs::path alone = m_folder.path() / "velmora-converse";
  fs::copy_file(VELMORA_CONVERSE, alone);
  auto all = environment();
  all.emplace_back("PATH", m_folder.path());
  Program program(alone, {"--fast", m_questions.front()}, all);
  EXPECT_EQ(program.finish(), 1);
  EXPECT_THAT(program.err(), HasSubstr("the local assistant is not installed"));
}

}  // namespace
}  // namespace velmora
