// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/AssistantProvider.h"

#include <gmock/gmock.h>

#include <atomic>
#include <random>

#include "assistant/signin/GrantStore.h"
#include "assistant/skills/ShoppingList.h"
#include "assistant/speech/Voice.h"
#include "foundation/Deployment.h"
#include "protocol/Certificates.h"
#include "protocol/EmbeddedAssistantServer.h"
#include "protocol/EmbeddedAssistantService.h"
#include "support/CapturedLog.h"
#include "support/RawHttp.h"
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
using ::testing::HasSubstr;
using tests::Inbox;

Config configuration(const State &state = {}) {
  AudioInConfig in;
  in.setEncoding(AudioInConfig::Encoding::linear16);
  in.setSampleRateHertz(16000);
  AudioOutConfig out;
  out.setEncoding(AudioOutConfig::Encoding::mp3);
  out.setSampleRateHertz(16000);
  out.setVolumePercentage(100);
  Config config;
  config.setAudioInConfig(in);
  config.setAudioOutConfig(out);
  config.setConverseState(state);
  return config;
}

ConverseRequest request(const Config &config) {
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
  std::vector<std::int16_t> samples(6400);
  const auto speech = speak(text);
  samples.insert(samples.end(), speech.begin(), speech.end());
  samples.resize(samples.size() + 24000);
  std::mt19937 random(3);
  std::uniform_int_distribution<int> noise(-20, 20);
  for (auto &sample : samples) sample = static_cast<std::int16_t>(sample * 0.9 + noise(random));
  return {reinterpret_cast<const char *>(samples.data()), samples.size() * sizeof samples[0]};
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
      : m_provider([this](std::string_view token) { return m_check(token); },
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
    const auto results = ended.waitFor(1);
    if (!results.empty()) turn.end = results.front();
    return turn;
  }

  Turn ask(const std::string &text, const State &state = {}, std::size_t chunk = 3200) {
    std::vector<ConverseRequest> requests{request(configuration(state))};
    const std::string bytes = text.empty() ? std::string(16000 * 2 * 9, '\0') : spoken(text);
    for (std::size_t at = 0; at < bytes.size(); at += chunk)
      requests.push_back(audioRequest(bytes.substr(at, chunk)));
    return run(requests, false);
  }

  static State stateOf(const Turn &turn) { return State::parse(turn.last.conversationState()); }

  const tests::CapturedLog m_log;
  tests::TemporaryFolder m_folder;
  AssistantProvider::TokenCheck m_check = [](std::string_view token) { return token == "the-token"; };
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
    const Turn turn = ask("what time is it", {}, chunk);
    EXPECT_EQ(turn.kinds, (std::vector<std::string>{"end of utterance", "request", "audio", "answer"}));
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
  const Turn guess = ask("seventy", stateOf(start));
  EXPECT_THAT(guess.answerText, HasSubstr("ower")) << guess.requestText;
  ASSERT_EQ(guess.last.microphoneMode(), Result::MicrophoneMode::dialogFollowOn);
  const Turn right = ask("fifty", stateOf(guess));
  EXPECT_EQ(right.last.microphoneMode(), Result::MicrophoneMode::closeMicrophone) << right.answerText;
}

TEST_F(AssistantProviderTest, SilenceEndsTheTurnWithAPoliteAnswer) {
  const Turn turn = ask("");
  EXPECT_EQ(turn.kinds, (std::vector<std::string>{"end of utterance", "audio", "answer"}));
  EXPECT_EQ(turn.end.statusCode, 0);
  // So does a client that closes without having sent anything.
  EXPECT_EQ(run({request(configuration())}).kinds, turn.kinds);
}

TEST_F(AssistantProviderTest, RefusesWhomItDoesNotKnow) {
  for (const char *value : {"", "Bearer ", "Bearer the-tokem", "Bearer the-token2", "the-token"}) {
    m_service->metadata() = {{"authorization", value}};
    if (*value == '\0') m_service->metadata().clear();
    const Turn turn = run({request(configuration())});
    EXPECT_EQ(turn.end.statusCode, static_cast<int>(StatusCode::unauthenticated)) << value;
    EXPECT_TRUE(turn.kinds.empty());
  }
}

TEST_F(AssistantProviderTest, ServesASignInAsLongAsItsTokenIsLive) {
  std::atomic now = std::chrono::system_clock::time_point(std::chrono::hours(1));  // the service reads it
  GrantStore grants(
      {}, [&] { return now.load(); }, [](std::string_view) {});
  const TokenAnswer tokens =
      grants.exchange(grants.newCode({"c", "http://localhost/", ""}), "c", "http://localhost/").value();
  m_check = [&](std::string_view token) { return grants.isLive(token); };
  m_service->metadata() = {{"authorization", "Bearer " + tokens.accessToken}};
  const auto status = [&] { return run({}).end.statusCode; };
  // A call that comes in is told that its configuration is missing.
  const int in = static_cast<int>(StatusCode::invalidArgument);
  const int refused = static_cast<int>(StatusCode::unauthenticated);
  EXPECT_EQ(status(), in);
  now = now.load() + GrantStore::kAccessLife;
  EXPECT_EQ(status(), refused);
  ASSERT_TRUE(grants.refresh(*tokens.refreshToken, "c"));
  EXPECT_EQ(status(), in);
  ASSERT_TRUE(grants.revoke(tokens.accessToken, "c"));
  EXPECT_EQ(status(), refused);
}

TEST_F(AssistantProviderTest, RefusesWhatItCannotServeWithAMessage) {
  const auto changed = [](auto change) {
    Config config = configuration();
    AudioInConfig in = config.audioInConfig();
    AudioOutConfig out = config.audioOutConfig();
    change(in, out);
    config.setAudioInConfig(in);
    config.setAudioOutConfig(out);
    return std::vector{request(config)};
  };
  const struct {
    const char *says;
    std::vector<ConverseRequest> requests;
  } cases[] = {{"configuration is missing", {}},
               {"must hold the configuration", {audioRequest("xx")}},
               {"must hold the configuration", {ConverseRequest()}},
               {"LINEAR16", {request(Config())}},
               {"LINEAR16", changed([](auto &in, auto &) { in.setEncoding(AudioInConfig::Encoding::flac); })},
               {"LINEAR16", changed([](auto &in, auto &) { in.setSampleRateHertz(44100); })},
               {"MP3 or", changed([](auto &, auto &out) {
                  out.setEncoding(AudioOutConfig::Encoding::UNRECOGNIZED(7));
                })},
               {"LINEAR16 at", changed([](auto &, auto &out) { out.setSampleRateHertz(24000); })},
               {"Only audio", {request(configuration()), request(configuration())}}};
  for (const auto &c : cases) {
    const Turn turn = run(c.requests);
    EXPECT_EQ(turn.end.statusCode, static_cast<int>(StatusCode::invalidArgument)) << c.says;
    EXPECT_THAT(turn.end.statusMessage.value_or(""), HasSubstr(c.says));
    EXPECT_TRUE(turn.kinds.empty());
  }
}

TEST_F(AssistantProviderTest, SpeaksInPlainSamplesAtTheVolumeAskedFor) {
  const auto bytesAt = [this](int volume) {
    Config config = configuration();
    AudioOutConfig out = config.audioOutConfig();
    out.setEncoding(AudioOutConfig::Encoding::linear16);
    out.setVolumePercentage(volume);
    config.setAudioOutConfig(out);
    return run({request(config)}).audio;
  };
  const std::string full = bytesAt(100);
  ASSERT_GT(full.size(), 16000U);
  EXPECT_EQ(full.size() % 2, 0U);
  EXPECT_EQ(bytesAt(0).find_first_not_of('\0'), std::string::npos);
}

TEST_F(AssistantProviderTest, TellsTheClientHowLoudToBe) {
  const Turn turn = ask("turn the volume down");
  EXPECT_EQ(turn.last.volumePercentage(), 80) << turn.requestText;
}

TEST_F(AssistantProviderTest, StreamsThatMisbehaveAreEndedAndCostNobodyElseAnything) {
  std::vector<ConverseRequest> flood(500, audioRequest(""));
  flood.front() = request(configuration());
  const Turn flooded = run(flood, false);
  EXPECT_EQ(flooded.end.statusCode, static_cast<int>(StatusCode::resourceExhausted));
  EXPECT_THAT(flooded.end.statusMessage.value_or(""), HasSubstr("too many pieces"));

  // Two that are silent, and one that never reads: then there is no place left.
  std::vector<std::shared_ptr<Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantConverseCall>> held;
  const Inbox<CallResult> ended;
  for (int i = 0; i < 3; ++i) {
    held.push_back(m_service->converse([ended](const CallResult &result) { ended.put(result); }));
    held.back()->send(request(configuration()));
  }
  ASSERT_TRUE(tests::eventually([&] { return m_provider.statistics().streams() == 3; }));
  const Turn refused = run({request(configuration())});
  EXPECT_EQ(refused.end.statusCode, static_cast<int>(StatusCode::resourceExhausted));
  EXPECT_THAT(refused.end.statusMessage.value_or(""), HasSubstr("Too many conversations"));
  for (const CallResult &result : ended.waitFor(3)) {
    EXPECT_EQ(result.statusCode, static_cast<int>(StatusCode::deadlineExceeded));
    EXPECT_THAT(result.statusMessage.value_or(""), HasSubstr("has sent nothing for 1 seconds"));
  }
  EXPECT_EQ(ask("what time is it").end.statusCode, 0);
  EXPECT_THAT(m_provider.statistics().text(),
              HasSubstr("\"most_streams\":3,\"refused\":5,\"streams\":0,\"turns\":1}"));
}

TEST_F(AssistantProviderTest, WhoNeverReadsAndWhoNeverSpeaksStandInNobodysWay) {
  // Connections that say nothing, and some that say what is no handshake.
  std::vector<std::unique_ptr<tests::RawConnection>> mute;
  for (int i = 0; i < 40; ++i) {
    mute.push_back(std::make_unique<tests::RawConnection>(m_server->port()));
    if (i % 2 == 0) mute.back()->send("GET / HTTP/1.1\r\n\r\n\x16\x03\x01 garbage");
  }
  // A request for half a megabyte of answer whose responses nobody takes.
  Config loud = configuration();
  AudioOutConfig out = loud.audioOutConfig();
  out.setEncoding(AudioOutConfig::Encoding::linear16);
  loud.setAudioOutConfig(out);
  const auto unread = m_service->converse([](const CallResult &) {});
  unread->send(request(loud));
  for (const std::string bytes = spoken("what can you do");
       const std::size_t at : {0U, 1U, 2U, 3U, 4U, 5U, 6U, 7U, 8U})
    if (at * 16000 < bytes.size()) unread->send(audioRequest(bytes.substr(at * 16000, 16000)));
  unread->closeSend();
  // A request that no microphone makes.
  EXPECT_EQ(run({request(configuration()), audioRequest(std::string(2 << 20, 'x'))}).end.statusCode,
            static_cast<int>(StatusCode::resourceExhausted));

  const Turn turn = ask("what time is it");
  EXPECT_EQ(turn.end.statusCode, 0);
  EXPECT_THAT(turn.answerText, HasSubstr("12:00"));
  EXPECT_TRUE(tests::eventually([&] { return m_provider.statistics().streams() == 0; }));
}

TEST_F(AssistantProviderTest, AClientThatVanishesDisturbsNobody) {
  for (int i = 0; i < 5; ++i) {
    // Places are few, and the one before has been left in the lurch just now.
    ASSERT_TRUE(tests::eventually([&] { return m_provider.statistics().streams() == 0; }));
    const auto call = m_service->converse([](const CallResult &) {});
    call->send(request(configuration()));
    call->send(audioRequest(spoken("what time is it").substr(0, 20000)));
  }
  EXPECT_TRUE(tests::eventually([&] { return m_provider.statistics().streams() == 0; }));
  EXPECT_EQ(ask("what time is it").end.statusCode, 0);
}

}  // namespace
}  // namespace velmora
