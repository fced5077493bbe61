// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "engine/API.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>

#include "engine/LocalAssistant.h"
#include "support/CapturedLog.h"
#include "support/Relay.h"
#include "support/ScriptedServer.h"
#include "support/TemporaryFolder.h"
#include "support/Waiting.h"

namespace velmora {
namespace {

using tests::CapturedLog;
using tests::Inbox;
using tests::ScriptedServer;
using End = ScriptedServer::End;
using Request = Google_Assistant_Embedded_V1alpha1_ConverseRequest;
using Response = Google_Assistant_Embedded_V1alpha1_ConverseResponse;
using Result = Google_Assistant_Embedded_V1alpha1_ConverseResult;
using State = Google_Assistant_Embedded_V1alpha1_ConverseState;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::string event() {
  Response response;
  response.setEventType(Response::EventType::endOfUtterance);
  return response.serialize();
}

std::string audio(const std::string &bytes) {
  Google_Assistant_Embedded_V1alpha1_AudioOut out;
  out.setAudioData(bytes);
  Response response;
  response.setAudioOut(out);
  return response.serialize();
}

std::string result(const std::string &request, const std::string &answer, const std::string &stateBytes = {},
                   Result::MicrophoneMode mode = Result::MicrophoneMode::closeMicrophone) {
  Result value;
  value.setSpokenRequestText(request);
  value.setSpokenResponseText(answer);
  value.setConversationState(stateBytes);
  value.setMicrophoneMode(mode);
  Response response;
  response.setResult(value);
  return response.serialize();
}

std::string stateOf(const std::string &opaque) {
  State state;
  state.setConversationState(opaque);
  return state.serialize();
}

/// Notes what it hears, in order.
struct Screen : ConversationTextDelegate, TurnObserver {
  void updateRequestText(const std::string &text) override { heard.put("request " + text); }
  void updateResponseText(const std::string &text) override { heard.put("response " + text); }
  void stopListening() override {
    heard.put("stop");
    if (onStop) onStop();
  }
  void startListening() override {
    heard.put("start");
    if (onStart) onStart();
  }
  void playResponse(const std::string &mp3) override { heard.put("play " + mp3); }
  void responseReceived(const Response &) override {}
  void turnEnded(const CallResult &end) override { ended.put(end.statusCode); }

  /// What was heard up to the end of the `count`th turn.
  std::vector<std::string> untilTurn(std::size_t count) {
    EXPECT_EQ(ended.waitFor(count).size(), count);
    return heard.values();
  }

  Inbox<std::string> heard;
  Inbox<int> ended;
  std::function<void()> onStop;
  std::function<void()> onStart;
};

/// A conversation with a scripted service.
struct Conversation {
  explicit Conversation(ScriptedServer::Script script, int port = 0) : server(std::move(script)) {
    (void)folder.write("roots.pem", server.roots());
    defaults.setObject(QStringLiteral("token-1"), QStringLiteral("auth_token"));
    deployment.folder = folder.path();
    deployment.host = "127.0.0.1";
    deployment.port = static_cast<std::uint16_t>(port != 0 ? port : server.port());
    open();
  }
  void open(std::chrono::milliseconds linger = API::kLinger) {
    api.reset();
    api = std::make_unique<API>(screen, deployment, defaults, linger);
    api->setTurnObserver(&screen);
  }
  void turn(int frames = 1) {
    api->beginTurn(80);
    const std::array<std::int16_t, 1600> samples{1, 2, 3};
    for (int i = 0; i < frames; ++i) api->sendAudioFrame(samples.data(), samples.size());
    api->endAudio();
  }

  tests::TemporaryFolder folder;
  ScriptedServer server;
  UserDefaults defaults;
  Deployment deployment;
  Screen screen;
  std::unique_ptr<API> api;
};

/// Sends the responses after the client has closed its side.
ScriptedServer::Script answering(std::vector<std::string> responses, End end = {}) {
  return [responses = std::move(responses), end = std::move(end)](ScriptedServer::Call &call) {
    call.readAll();
    for (const auto &bytes : responses) call.write(bytes);
    return end;
  };
}

TEST(API, SendsTheConfigurationThenTheSamplesAsTheyAre) {
  Inbox<Request> requests;
  Inbox<Metadata> metadata;
  Conversation conversation([&](ScriptedServer::Call &call) -> End {
    metadata.put(call.metadata());
    while (const auto bytes = call.read()) requests.put(Request::parse(*bytes));
    return {};
  });
  conversation.turn(2);
  conversation.screen.untilTurn(1);
  const auto got = requests.waitFor(3);
  ASSERT_EQ(got.size(), 3U);
  // The state is present, and empty, on the first turn.
  const auto config = got[0].config();
  EXPECT_EQ(config.debugDescription(),
            "audio_in_config { encoding: LINEAR16 sample_rate_hertz: 16000 } "
            "audio_out_config { encoding: MP3 sample_rate_hertz: 16000 volume_percentage: 80 } "
            "converse_state { }");
  EXPECT_EQ(got[1].audioIn().size(), 3200U);
  EXPECT_EQ(got[1].audioIn().substr(0, 6), std::string("\1\0\2\0\3\0", 6));
  EXPECT_EQ(metadata.waitFor(1)[0].find("authorization")->second, "Bearer token-1");
}

TEST(API, ReportsEachResponseInOrderAndHandsTheAnswerOverAtTheEnd) {
  Conversation conversation(answering({event(), result("what time is it", ""), audio("mp3-"), audio("data"),
                                       result("", "It is noon", stateOf("s1"))}));
  conversation.turn();
  EXPECT_THAT(conversation.screen.untilTurn(1),
              ElementsAre("response Speaking response...", "stop", "request what time is it",
                          "response Speaking response...", "response Speaking response...",
                          "response Speaking response...", "response It is noon", "play mp3-data"));
  EXPECT_EQ(conversation.api->converseState()->conversationState(), "s1");
}

TEST(API, KeepsTheStateAndTheFollowUpOfTheLastResponseOnly) {
  const auto followOn = Result::MicrophoneMode::dialogFollowOn;
  // Bytes that are no message of the state's kind: the next turn starts afresh.
  const std::string unparsable = "\x0a\x7f";
  const std::string withUnknownField = stateOf("s") + "\x10\x07";
  const struct {
    const char *what;
    std::vector<std::string> responses;
    bool followUp;
    std::optional<std::string> state;
  } cases[] = {
      {"result last", {audio("x"), result("", "", stateOf("s"), followOn)}, true, stateOf("s")},
      {"audio last", {result("", "", stateOf("s"), followOn), audio("x")}, false, ""},
      {"unknown fields are kept", {result("", "", withUnknownField, followOn)}, true, withUnknownField},
      {"unparsable state", {result("", "", unparsable, followOn)}, true, std::nullopt},
      {"no response", {}, false, std::nullopt}};
  for (const auto &c : cases) {
    Conversation conversation(answering(c.responses));
    conversation.turn();
    conversation.screen.untilTurn(1);
    EXPECT_EQ(conversation.api->followUp(), c.followUp) << c.what;
    const auto state = conversation.api->converseState();
    EXPECT_EQ(state ? std::optional(state->serialize()) : std::nullopt, c.state) << c.what;
  }
}

TEST(API, AFollowOnIsOneNewTurnWithTheSavedState) {
  Inbox<std::string> states;
  Conversation conversation([&](ScriptedServer::Call &call) -> End {
    states.put(Request::parse(call.read().value()).config().converseState().conversationState());
    call.readAll();
    call.write(result("", "and?", stateOf("round 1"), Result::MicrophoneMode::dialogFollowOn));
    return {};
  });
  conversation.screen.onStart = [&] { conversation.turn(); };
  conversation.turn();
  conversation.screen.untilTurn(1);
  conversation.api->continueIfFollowUp();
  conversation.screen.untilTurn(2);
  EXPECT_THAT(states.waitFor(2), ElementsAre("", "round 1"));
  // The second turn's own question is not lost by having answered the first.
  EXPECT_TRUE(conversation.api->followUp());
  conversation.screen.onStart = nullptr;
  conversation.api->continueIfFollowUp();
  conversation.api->continueIfFollowUp();
  const auto heard = conversation.screen.heard.values();
  EXPECT_EQ(std::count(heard.begin(), heard.end(), "start"), 2);
}

TEST(API, ATurnWithoutSoundPlaysNothing) {
  Conversation conversation(answering({event(), result("hello", "Hi", stateOf("s"))}));
  conversation.turn();
  EXPECT_THAT(conversation.screen.untilTurn(1),
              ElementsAre("response Speaking response...", "stop", "request hello", "response Hi"));
}

TEST(API, ABadResponseEndsTheDrainAndHandsOverWhatCame) {
  Conversation conversation(answering({event(), audio("half"), "\x10\x80", audio("lost")}));
  const CapturedLog log;
  conversation.turn();
  const auto heard = conversation.screen.untilTurn(1);
  EXPECT_EQ(heard.back(), "play half");
  EXPECT_EQ(log.count("close catch invalidMessageReceived:"), 1);
}

TEST(API, AFailedCloseKeepsTheSoundForTheNextTurn) {
  std::atomic<int> calls{0};
  Conversation conversation([&](ScriptedServer::Call &call) -> End {
    if (calls++ == 0) {
      call.write(audio("early-"));
      return {.code = StatusCode::unavailable, .message = "gone"};
    }
    return answering({event(), audio("late")})(call);
  });
  const CapturedLog log;
  conversation.api->beginTurn(100);
  conversation.screen.untilTurn(1);
  conversation.api->endAudio();
  EXPECT_EQ(log.count("Close catch: callEnded:"), 1);
  conversation.turn();
  EXPECT_EQ(conversation.screen.untilTurn(2).back(), "play early-late");
  EXPECT_THAT(conversation.screen.ended.values(), ElementsAre(14, 0));
}

TEST(API, AServiceThatEndsBeforeTheCloseIsStillPlayed) {
  Conversation conversation([](ScriptedServer::Call &call) -> End {
    for (const auto &bytes : {event(), audio("quick")}) call.write(bytes);
    return {};
  });
  const CapturedLog log;
  conversation.api->beginTurn(100);
  ASSERT_TRUE(log.waitFor("Result code 0"));
  conversation.api->endAudio();
  EXPECT_EQ(conversation.screen.untilTurn(1).back(), "play quick");
}

TEST(API, TheTokenIsThatOfItsBirth) {
  Inbox<std::string> tokens;
  Conversation conversation([&](ScriptedServer::Call &call) -> End {
    tokens.put(call.metadata().find("authorization")->second);
    return {};
  });
  conversation.defaults.setObject(QStringLiteral("token-2"), QStringLiteral("auth_token"));
  conversation.turn();
  conversation.screen.untilTurn(1);
  conversation.open();
  conversation.turn();
  conversation.screen.untilTurn(2);
  conversation.defaults.removeObjectForKey(QStringLiteral("auth_token"));
  conversation.open();
  conversation.turn();
  conversation.screen.untilTurn(3);
  EXPECT_THAT(tokens.waitFor(3), ElementsAre("Bearer token-1", "Bearer token-2", "Bearer "));
}

TEST(API, LogsEachStageUnderItsLabel) {
  Conversation conversation(answering({event()}, {.code = StatusCode::unauthenticated, .message = "who?"}));
  const CapturedLog log;
  conversation.turn();
  conversation.screen.untilTurn(1);
  for (const char *label :
       {"audio request....", "request config is ..", "request.......", "request  __________", "Closed send",
        "close catch endOfStream:", "Result code 16", "Result description ", "Metadata ",
        "Status message who?", "Obj description ", "result "}) {
    EXPECT_EQ(log.count(label), 1) << label;
  }
  // A token that cannot be sent: the turn is abandoned with one line, and its frames with none.
  conversation.defaults.setObject(QStringLiteral("line\nbreak"), QStringLiteral("auth_token"));
  conversation.open();
  conversation.turn();
  EXPECT_EQ(log.count("Initial catch: illegalMetadata:"), 1);
  EXPECT_EQ(conversation.screen.ended.waitFor(2).at(1), 13);
}

TEST(API, RefusedFramesAreDroppedWithALine) {
  Conversation conversation(
      [](ScriptedServer::Call &) -> End { return {.code = StatusCode::unauthenticated}; });
  const CapturedLog log;
  conversation.api->beginTurn(100);
  conversation.screen.untilTurn(1);
  const std::int16_t sample = 0;
  conversation.api->sendAudioFrame(&sample, 1);
  EXPECT_EQ(log.count("Frame catch: callEnded:"), 1);
  EXPECT_EQ(log.count("Status message Error"), 1);
}

TEST(API, WithoutATurnThereIsNothingToSendOrEnd) {
  Conversation conversation([](ScriptedServer::Call &) -> End { return {}; });
  const std::int16_t sample = 0;
  conversation.api->sendAudioFrame(&sample, 1);
  conversation.api->endAudio();
  conversation.api->continueIfFollowUp();
  EXPECT_THAT(conversation.screen.heard.values(), IsEmpty());
}

TEST(API, ANewTurnSilencesTheOneItReplaces) {
  std::atomic<int> calls{0};
  Conversation conversation([&](ScriptedServer::Call &call) -> End {
    if (calls++ > 0) return answering({event(), audio("new")})(call);
    call.readAll();
    call.write(audio("stale"));
    call.waitForCancel();
    return {};
  });
  conversation.turn();
  EXPECT_THAT(conversation.screen.heard.waitFor(1), ElementsAre("response Speaking response..."));
  conversation.turn();
  EXPECT_EQ(conversation.screen.untilTurn(1).back(), "play new");
}

TEST(API, AFiftyMegabyteAnswerArrivesWhole) {
  const std::vector<std::string> chunks(50, audio(std::string(1U << 20U, 'M')));
  Conversation conversation(answering(chunks));
  conversation.turn();
  EXPECT_EQ(conversation.screen.untilTurn(1).back().size(), (50U << 20U) + 5);
}

TEST(API, AResetConnectionEndsTheTurn) {
  std::atomic<tests::Relay *> relay{nullptr};
  Conversation conversation([&](ScriptedServer::Call &call) -> End {
    call.readAll();
    call.write(audio("before"));
    while (!call.cancelled()) {
      if (auto *there = relay.load()) there->reset();
    }
    return {};
  });
  tests::Relay between(conversation.server.port());
  conversation.deployment.port = static_cast<std::uint16_t>(std::stoi(between.address().substr(10)));
  conversation.open();
  conversation.turn();
  ASSERT_THAT(conversation.screen.heard.waitFor(1), ElementsAre("response Speaking response..."));
  relay = &between;
  EXPECT_EQ(conversation.screen.untilTurn(1).back(), "play before");
  EXPECT_THAT(conversation.screen.ended.values(), ElementsAre(14));
}

TEST(API, MayGoInAnyPhaseAndNothingIsHeardAfterwards) {
  Conversation conversation([](ScriptedServer::Call &call) -> End {
    call.write(event());
    while (call.write(audio(std::string(800, 'x'))) && !call.cancelled()) {
    }
    return {};
  });
  std::mt19937 random(11);
  for (int round = 0; round < 60; ++round) {
    conversation.api->beginTurn(100);
    const std::array<std::int16_t, 1600> samples{};
    if (round % 4 >= 1) conversation.api->sendAudioFrame(samples.data(), samples.size());
    if (round % 4 >= 2) conversation.api->endAudio();
    if (round % 4 == 3) conversation.api->beginTurn(100);
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 3000));
    conversation.api.reset();
    const auto heard = conversation.screen.heard.values().size();
    std::this_thread::sleep_for(std::chrono::microseconds(300));
    ASSERT_EQ(conversation.screen.heard.values().size(), heard);
    conversation.open();
  }
}

TEST(API, AConversationGoesOnAfterItsChannelWasClosed) {
  Inbox<std::string> states;
  Conversation conversation([&](ScriptedServer::Call &call) -> End {
    states.put(Request::parse(call.read().value()).config().converseState().conversationState());
    call.readAll();
    call.write(result("", "", stateOf(std::to_string(states.values().size()))));
    return {};
  });
  conversation.open(std::chrono::milliseconds(0));
  // Each begins at another moment of the closing.
  for (std::size_t i = 1; i <= 30; ++i) {
    conversation.turn();
    conversation.screen.untilTurn(i);
    std::this_thread::sleep_for(std::chrono::microseconds(i * 50));
  }
  const auto got = states.waitFor(30);
  ASSERT_EQ(got.size(), 30U);
  EXPECT_EQ(got.front(), "");
  for (std::size_t i = 1; i < 30; ++i) EXPECT_EQ(got[i], std::to_string(i));
  EXPECT_THAT(conversation.screen.ended.values(), ::testing::Each(0));
}

/// Those of this process, sorted.
std::vector<std::string> threadNames() {
  std::vector<std::string> names;
  for (const auto &thread : std::filesystem::directory_iterator("/proc/self/task")) {
    std::string name;
    std::getline(std::ifstream(thread.path() / "comm"), name);
    names.push_back(name);
  }
  std::sort(names.begin(), names.end());
  return names;
}

TEST(API, NothingRunsWhenNothingWasAskedForAWhile) {
  const LocalAssistant assistant({.program = VELMORA_ASSISTANT});  // a process of its own
  UserDefaults defaults;
  defaults.setObject(QString::fromStdString(assistant.token()), QStringLiteral("auth_token"));
  Screen screen;
  auto before = threadNames();
  before.push_back(before.front());  // that of the drain
  std::sort(before.begin(), before.end());
  API api(screen, assistant.deployment(), defaults, std::chrono::milliseconds(0));
  api.setTurnObserver(&screen);
  const std::array<std::int16_t, 1600> silence{};
  for (std::size_t turn = 1; turn <= 2; ++turn) {
    api.beginTurn(100);
    EXPECT_GT(threadNames().size(), before.size());
    for (int i = 0; i < 3; ++i) api.sendAudioFrame(silence.data(), silence.size());
    api.endAudio();
    ASSERT_EQ(screen.ended.waitFor(turn).size(), turn);
    EXPECT_EQ(screen.ended.values().back(), 0);
    EXPECT_TRUE(tests::eventually([&] { return threadNames() == before; }))
        << ::testing::PrintToString(threadNames());
  }
}

TEST(APIDeathTest, MissingRootsAreFatal) {
  Screen screen;
  const Deployment deployment{.folder = "/nowhere", .host = "localhost"};
  const UserDefaults defaults;
  EXPECT_DEATH(API(screen, deployment, defaults), "^The TLS roots cannot be read: /nowhere/roots.pem");
}

}  // namespace
}  // namespace velmora
