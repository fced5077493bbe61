// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/AssistantProvider.h"

#include <gmock/gmock.h>

#include <functional>

#include "assistant/skills/ShoppingList.h"
#include "assistant/speech/Voice.h"
#include "foundation/Deployment.h"
#include "protocol/Certificates.h"
#include "protocol/EmbeddedAssistantServer.h"
#include "protocol/EmbeddedAssistantService.h"
#include "support/CapturedLog.h"
#include "support/RawHttp.h"
#include "support/Speech.h"
#include "support/TemporaryFolder.h"
#include "support/Waiting.h"

namespace velmora {
namespace {

using AudioInConfig = Google_Assistant_Embedded_V1alpha1_AudioInConfig;
using AudioOutConfig = Google_Assistant_Embedded_V1alpha1_AudioOutConfig;
using ClientError = Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantClientError;
using Config = Google_Assistant_Embedded_V1alpha1_ConverseConfig;
using ConverseRequest = Google_Assistant_Embedded_V1alpha1_ConverseRequest;
using Response = Google_Assistant_Embedded_V1alpha1_ConverseResponse;
using Result = Google_Assistant_Embedded_V1alpha1_ConverseResult;
using State = Google_Assistant_Embedded_V1alpha1_ConverseState;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using tests::Inbox;

/// A configuration that it serves, or what `change` makes of it.
using Change = std::function<void(AudioInConfig &, AudioOutConfig &)>;
ConverseRequest configured(const Change &change = {}, const State &state = {}) {
  AudioInConfig in;
  in.setEncoding(AudioInConfig::Encoding::linear16);
  in.setSampleRateHertz(16000);
  AudioOutConfig out;
  out.setEncoding(AudioOutConfig::Encoding::mp3);
  out.setSampleRateHertz(16000);
  out.setVolumePercentage(100);
  if (change) change(in, out);
  Config config;
  config.setAudioInConfig(in);
  config.setAudioOutConfig(out);
  config.setConverseState(state);
  ConverseRequest made;
  made.setConfig(config);
  return made;
}

ConverseRequest audioRequest(std::string bytes) {
  ConverseRequest made;
  made.setAudioIn(std::move(bytes));
  return made;
}

/// `text` as a person might say it into a quiet room, with a moment of silence on either side.
std::string spoken(const std::string &text) {
  const auto stream = tests::joined({tests::silence(400), speak(text), tests::silence(1500)});
  const auto heard = tests::mixed(stream, tests::pinkNoise(stream.size(), -69.0));
  return {reinterpret_cast<const char *>(heard.data()), heard.size() * sizeof heard[0]};
}

void expectEnd(const CallResult &end, StatusCode code, const char *says) {
  EXPECT_EQ(end.statusCode, static_cast<int>(code)) << says;
  EXPECT_THAT(end.statusMessage.value_or(""), HasSubstr(says));
}

/// What came of one turn.
struct Turn {
  std::vector<std::string> kinds;  // of the responses, in order
  std::string requestText;
  std::string answerText;
  std::string audio;
  Result last;
  CallResult end;
};

class AssistantProviderTest : public ::testing::Test {
 protected:
  AssistantProviderTest()
      : m_provider([](std::string_view token) { return token == "the-token"; },
                   Dialogue({.clock = [] { return QDateTime(QDate(2026, 3, 29), QTime(12, 0)); },
                             .random = [](int, int high) { return std::min(high, 50); },
                             .shoppingList = m_list},
                            StateSeal(StateSeal::Key{})),
                   {.streams = 3, .clientSilence = std::chrono::seconds(1), .pieces = 400}) {
    const Certificates certificates = makeCertificates(m_folder.path());
    m_server.emplace("127.0.0.1:0", certificates.key, certificates.chain);
    m_server->setPatience(std::chrono::seconds(1));
    m_server->start(m_provider);
    m_service.emplace("127.0.0.1:" + std::to_string(m_server->port()), readFile(certificates.roots),
                      std::nullopt);
    m_service->metadata().emplace("authorization", "Bearer the-token");
  }

  /// Sends the requests, closes, and collects the responses.
  Turn run(const std::vector<ConverseRequest> &requests, bool close = true) {
    Inbox<CallResult> ended;
    const auto call = m_service->converse([ended](const CallResult &result) { ended.put(result); });
    Turn turn;
    try {
      for (const auto &each : requests) call->send(each);
      if (close) call->closeSend();
    } catch (const CallError &) {
      // Refused before everything was sent.
    }
    try {
      for (;;) take(call->receive(), turn);
    } catch (const ClientError &) {
    }
    turn.end = ended.waitFor(1).at(0);
    return turn;
  }

  Turn ask(const std::string &text, const ConverseRequest &configuration = configured(),
           std::size_t chunk = 3200) {
    std::vector<ConverseRequest> requests{configuration};
    const std::string bytes = spoken(text);
    for (std::size_t at = 0; at < bytes.size(); at += chunk)
      requests.push_back(audioRequest(bytes.substr(at, chunk)));
    return run(requests, false);
  }
  [[nodiscard]] bool isIdle() const {
    return tests::eventually([this] { return m_provider.statistics().streams() == 0; });
  }

  const tests::CapturedLog m_log;
  tests::TemporaryFolder m_folder;
  ShoppingList m_list;
  AssistantProvider m_provider;
  std::optional<Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantServer> m_server;
  std::optional<Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantService> m_service;

 private:
  static void take(const Response &response, Turn &turn) {
    if (response.eventType() == Response::EventType::endOfUtterance)
      turn.kinds.emplace_back("end of utterance");
    if (const auto bytes = response.audioOut().audioData(); !bytes.empty()) {
      if (turn.audio.empty()) turn.kinds.emplace_back("audio");
      turn.audio += bytes;
    }
    const Result result = response.result();
    if (!result.spokenRequestText().empty()) {
      turn.kinds.emplace_back("request");
      turn.requestText = result.spokenRequestText();
    }
    if (!result.spokenResponseText().empty()) {
      turn.kinds.emplace_back("answer");
      turn.answerText = result.spokenResponseText();
    }
    turn.last = result;
  }
};

TEST_F(AssistantProviderTest, AnswersASpokenQuestionInTheOrderThatClientsRelyOn) {
  // Samples may be cut between their bytes.
  for (const std::size_t chunk : {3200U, 777U}) {
    const Turn turn = ask("what time is it", configured(), chunk);
    EXPECT_THAT(turn.kinds, ElementsAre("end of utterance", "request", "audio", "answer"));
    EXPECT_THAT(turn.requestText, HasSubstr("time"));
    EXPECT_THAT(turn.answerText, HasSubstr("12:00"));
    EXPECT_GT(turn.audio.size(), 2000U);
    EXPECT_EQ(turn.last.microphoneMode(), Result::MicrophoneMode::closeMicrophone);
    EXPECT_EQ(turn.end.statusCode, 0);
  }
}

TEST_F(AssistantProviderTest, AGameGoesOnThroughTheStateThatTheClientBringsBack) {
  const Turn start = ask("let's play a guessing game");
  ASSERT_EQ(start.last.microphoneMode(), Result::MicrophoneMode::dialogFollowOn) << start.requestText;
  const Turn right = ask("fifty", configured({}, State::parse(start.last.conversationState())));
  EXPECT_THAT(right.answerText, HasSubstr("right"));
  EXPECT_EQ(right.last.microphoneMode(), Result::MicrophoneMode::closeMicrophone);
}

TEST_F(AssistantProviderTest, SilenceEndsTheTurnWithAPoliteAnswer) {
  // So does a client that closes without having sent anything.
  for (const std::size_t seconds : {9U, 0U}) {
    std::vector<ConverseRequest> requests(seconds, audioRequest(std::string(32000, '\0')));
    requests.insert(requests.begin(), configured());
    const Turn turn = run(requests);
    EXPECT_THAT(turn.kinds, ElementsAre("end of utterance", "audio", "answer"));
    EXPECT_EQ(turn.end.statusCode, 0);
  }
}

TEST_F(AssistantProviderTest, RefusesWhomItDoesNotKnow) {
  for (const char *value : {"", "Bearer ", "Bearer the-tokem", "Bearer the-token2", "the-token"}) {
    m_service->metadata() = {{"authorization", value}};
    if (*value == '\0') m_service->metadata().clear();
    const Turn turn = run({configured()});
    expectEnd(turn.end, StatusCode::unauthenticated, "token");
    EXPECT_TRUE(turn.kinds.empty()) << value;
  }
}

TEST_F(AssistantProviderTest, RefusesWhatItCannotServeWithAMessage) {
  const struct {
    const char *says;
    std::vector<ConverseRequest> requests;
  } cases[] = {
      {"configuration is missing", {}},
      {"must hold the configuration", {audioRequest("xx")}},
      {"LINEAR16", {configured([](auto &in, auto &) { in.setEncoding(AudioInConfig::Encoding::flac); })}},
      {"LINEAR16", {configured([](auto &in, auto &) { in.setSampleRateHertz(44100); })}},
      {"MP3 or",
       {configured([](auto &, auto &out) { out.setEncoding(AudioOutConfig::Encoding::UNRECOGNIZED(7)); })}},
      {"LINEAR16 at", {configured([](auto &, auto &out) { out.setSampleRateHertz(24000); })}},
      {"Only audio", {configured(), configured()}}};
  for (const auto &c : cases) {
    const Turn turn = run(c.requests);
    expectEnd(turn.end, StatusCode::invalidArgument, c.says);
    EXPECT_TRUE(turn.kinds.empty());
  }
}

TEST_F(AssistantProviderTest, SpeaksAtTheVolumeAskedForAndTellsAnother) {
  const Turn turn = ask("turn the volume up", configured([](auto &, auto &out) {
                          out.setEncoding(AudioOutConfig::Encoding::linear16);
                          out.setVolumePercentage(0);
                        }));
  EXPECT_EQ(turn.last.volumePercentage(), 20) << turn.requestText;
  EXPECT_GT(turn.audio.size(), 8000U);
  EXPECT_EQ(turn.audio.find_first_not_of('\0'), std::string::npos);
}

TEST_F(AssistantProviderTest, StreamsThatMisbehaveAreEndedAndCostNobodyElseAnything) {
  std::vector<ConverseRequest> flood(500, audioRequest(""));
  flood.front() = configured();
  expectEnd(run(flood, false).end, StatusCode::resourceExhausted, "too many pieces");

  // Two that are silent, and one that never reads: then there is no place left.
  std::vector<std::shared_ptr<Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantConverseCall>> held;
  const Inbox<CallResult> ended;
  for (int i = 0; i < 3; ++i) {
    held.push_back(m_service->converse([ended](const CallResult &result) { ended.put(result); }));
    held.back()->send(configured());
  }
  ASSERT_TRUE(tests::eventually([&] { return m_provider.statistics().streams() == 3; }));
  expectEnd(run({configured()}).end, StatusCode::resourceExhausted, "Too many conversations");
  for (const CallResult &result : ended.waitFor(3))
    expectEnd(result, StatusCode::deadlineExceeded, "has sent nothing for 1 seconds");
  EXPECT_EQ(ask("what time is it").end.statusCode, 0);
  EXPECT_THAT(m_provider.statistics().text(),
              HasSubstr("\"most_streams\":3,\"refused\":5,\"streams\":0,\"turns\":1}"));
}

TEST_F(AssistantProviderTest, WhoNeverReadsNeverSpeaksOrLeavesStandsInNobodysWay) {
  // Connections that say nothing, and some that say what is no handshake.
  std::vector<std::unique_ptr<tests::RawConnection>> mute;
  for (int i = 0; i < 40; ++i) {
    mute.push_back(std::make_unique<tests::RawConnection>(m_server->port()));
    if (i % 2 == 0) mute.back()->send("GET / HTTP/1.1\r\n\r\n\x16\x03\x01 garbage");
  }
  // Calls that end in the middle of their request.
  for (int i = 0; i < 5; ++i) {
    ASSERT_TRUE(isIdle()) << "places are few";
    const auto call = m_service->converse([](const CallResult &) {});
    call->send(configured());
    call->send(audioRequest(spoken("what time is it").substr(0, 20000)));
  }
  // A request for half a megabyte of answer whose responses nobody takes.
  const auto unread = m_service->converse([](const CallResult &) {});
  unread->send(configured([](auto &, auto &out) { out.setEncoding(AudioOutConfig::Encoding::linear16); }));
  unread->send(audioRequest(spoken("what can you do")));
  unread->closeSend();
  // A request that no microphone makes.
  expectEnd(run({configured(), audioRequest(std::string(2 << 20, 'x'))}).end, StatusCode::resourceExhausted,
            "");

  EXPECT_THAT(ask("what time is it").answerText, HasSubstr("12:00"));
  EXPECT_TRUE(isIdle());
}

}  // namespace
}  // namespace velmora
