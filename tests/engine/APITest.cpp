// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "engine/API.h"

#include <gmock/gmock.h>

#include <array>
#include <random>

#include "support/CapturedLog.h"
#include "support/Responses.h"
#include "support/ScriptedServer.h"

namespace velmora {
namespace {

using namespace std::chrono_literals;
using tests::CapturedLog;
using tests::endOfUtterance;
using tests::Inbox;
using tests::Response;
using tests::resultOf;
using tests::ScriptedServer;
using tests::soundOf;
using Call = ScriptedServer::Call;
using End = ScriptedServer::End;
using Mode = tests::Result::MicrophoneMode;
using Request = Google_Assistant_Embedded_V1alpha1_ConverseRequest;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

std::string stateOf(const std::string &opaque) {
  Google_Assistant_Embedded_V1alpha1_ConverseState state;
  state.setConversationState(opaque);
  return state.serialize();
}

/// Notes what it hears, in order.
struct Screen : ConversationTextDelegate, TurnObserver {
  void updateRequestText(const std::string &text) override { heard.put("request " + text); }
  void updateResponseText(const std::string &text) override { heard.put("response " + text); }
  void stopListening() override { heard.put("stop"); }
  void startListening() override { heard.put("start"); }
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
};

/// A conversation with a scripted service.
struct Conversation {
  explicit Conversation(ScriptedServer::Script script) : server(std::move(script)) { open("token"); }
  void open(const char *token, std::chrono::milliseconds linger = API::kLinger) {
    defaults.setObject(QString::fromLatin1(token), QStringLiteral("auth_token"));
    api.reset();
    api = std::make_unique<API>(screen, server.deployment(), defaults, linger);
    api->setTurnObserver(&screen);
  }
  void sendFrame() const {
    const std::array<std::int16_t, 1600> samples{1, 2, 3};
    api->sendAudioFrame(samples.data(), samples.size());
  }
  void turn() const {
    api->beginTurn(80);
    sendFrame();
    api->endAudio();
  }

  ScriptedServer server;
  UserDefaults defaults;
  Screen screen;
  std::unique_ptr<API> api;
};

/// Sends the responses after the client has closed its side.
ScriptedServer::Script answering(std::vector<Response> responses, StatusCode code = StatusCode::ok) {
  return [responses = std::move(responses), code](Call &call) -> End {
    call.readAll();
    for (const auto &response : responses) call.write(response.serialize());
    return {.code = code};
  };
}

TEST(API, SendsTheConfigurationThenTheSamplesAsTheyAre) {
  const Inbox<Request> requests;
  Conversation conversation([&](Call &call) -> End {
    while (const auto bytes = call.read()) requests.put(Request::parse(*bytes));
    return {};
  });
  conversation.turn();
  conversation.screen.untilTurn(1);
  const auto got = requests.waitFor(2);
  ASSERT_EQ(got.size(), 2U);
  // The state is present, and empty, on the first turn.
  EXPECT_EQ(got[0].config().debugDescription(),
            "audio_in_config { encoding: LINEAR16 sample_rate_hertz: 16000 } "
            "audio_out_config { encoding: MP3 sample_rate_hertz: 16000 volume_percentage: 80 } "
            "converse_state { }");
  EXPECT_EQ(got[1].audioIn().size(), 3200U);
  EXPECT_EQ(got[1].audioIn().substr(0, 6), std::string("\1\0\2\0\3\0", 6));
}

TEST(API, ReportsEachResponseInOrderAndKeepsStateAndFollowUpOfTheLastOne) {
  const std::string waits = "response Speaking response...";
  // Bytes that are no message of the state's kind: the next turn starts afresh.
  const std::string unparsable = "\x0a\x7f";
  const auto asking = [](const std::string &state) { return resultOf("", "", state, Mode::dialogFollowOn); };
  const struct {
    std::vector<Response> responses;
    std::vector<std::string> heard;
    std::optional<std::string> state;
    bool followUp;
    StatusCode end = StatusCode::ok;
  } cases[] = {{{endOfUtterance(), resultOf("what time is it"), soundOf("mp3-"), soundOf("data"),
                 resultOf("", "It is noon", stateOf("s"))},
                {waits, "stop", "request what time is it", waits, waits, waits, "response It is noon",
                 "play mp3-data"},
                stateOf("s"),
                false},
               {{asking(stateOf("s")), asking(unparsable)}, {waits, waits}, std::nullopt, true},
               {{soundOf("half")}, {waits, "play half"}, "", false, StatusCode::unavailable},
               {{}, {}, std::nullopt, false}};
  for (const auto &c : cases) {
    Conversation conversation(answering(c.responses, c.end));
    conversation.turn();
    EXPECT_THAT(conversation.screen.untilTurn(1), ElementsAreArray(c.heard));
    EXPECT_THAT(conversation.screen.ended.values(), ElementsAre(static_cast<int>(c.end)));
    EXPECT_EQ(conversation.api->followUp(), c.followUp) << ::testing::PrintToString(c.heard);
    const auto state = conversation.api->converseState();
    EXPECT_EQ(state ? std::optional(state->serialize()) : std::nullopt, c.state);
  }
}

TEST(API, ABadResponseEndsTheDrainAndHandsOverWhatCame) {
  Conversation conversation([](Call &call) -> End {
    call.readAll();
    for (const auto &bytes : {soundOf("half").serialize(), std::string("\x10\x80")}) call.write(bytes);
    call.waitForCancel();
    return {};
  });
  conversation.turn();
  EXPECT_EQ(conversation.screen.untilTurn(1).back(), "play half");
}

TEST(API, AServiceThatEndsBeforeTheCloseIsStillPlayed) {
  Conversation conversation([](Call &call) -> End {
    call.write(soundOf("quick").serialize());
    return {};
  });
  const CapturedLog log;
  conversation.api->beginTurn(100);
  ASSERT_TRUE(log.waitFor("Result code 0"));
  conversation.api->endAudio();
  EXPECT_EQ(conversation.screen.untilTurn(1).back(), "play quick");
}

TEST(API, WhatCannotBeSentIsDroppedWithALine) {
  Conversation conversation(
      [](Call &) -> End { return {.code = StatusCode::unauthenticated, .message = "who?"}; });
  const CapturedLog log;
  // Before a turn there is nothing to send or end.
  conversation.sendFrame();
  conversation.api->endAudio();
  conversation.api->continueIfFollowUp();
  conversation.api->beginTurn(100);
  conversation.screen.untilTurn(1);
  conversation.sendFrame();
  conversation.api->endAudio();
  for (const char *label : {"audio request....", "request config is ..", "Result code 16",
                            "Status message who?", "Frame catch: callEnded:", "Close catch: callEnded:"}) {
    EXPECT_EQ(log.count(label), 1) << label;
  }
  // A token that cannot be sent: the turn is abandoned with one line, and its frames with none.
  conversation.open("line\nbreak");
  conversation.turn();
  EXPECT_EQ(log.count("Initial catch: illegalMetadata:"), 1);
  EXPECT_THAT(conversation.screen.ended.waitFor(2), ElementsAre(16, 13));
  EXPECT_THAT(conversation.screen.heard.values(), IsEmpty());
}

TEST(API, ANewTurnSilencesTheOneItReplaces) {
  std::atomic<int> calls{0};
  Conversation conversation([&](Call &call) -> End {
    if (calls++ > 0) return answering({endOfUtterance(), soundOf("new")})(call);
    call.readAll();
    call.write(soundOf("stale").serialize());
    call.waitForCancel();
    return {};
  });
  conversation.turn();
  EXPECT_THAT(conversation.screen.heard.waitFor(1), ElementsAre("response Speaking response..."));
  conversation.turn();
  EXPECT_EQ(conversation.screen.untilTurn(1).back(), "play new");
}

TEST(API, MayGoInAnyPhaseAndNothingIsHeardAfterwards) {
  Conversation conversation([](Call &call) -> End {
    call.write(endOfUtterance().serialize());
    while (call.write(soundOf(std::string(800, 'x')).serialize())) {
    }
    return {};
  });
  std::mt19937 random(11);
  for (int round = 0; round < 60; ++round) {
    conversation.api->beginTurn(100);
    if (round % 4 >= 1) conversation.sendFrame();
    if (round % 4 >= 2) conversation.api->endAudio();
    if (round % 4 == 3) conversation.api->beginTurn(100);
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 3000));
    conversation.api.reset();
    const auto heard = conversation.screen.heard.values().size();
    std::this_thread::sleep_for(300us);
    ASSERT_EQ(conversation.screen.heard.values().size(), heard);
    conversation.open("token");
  }
}

TEST(API, AConversationGoesOnAfterItsChannelWasClosed) {
  const Inbox<std::string> states;
  Conversation conversation([&](Call &call) -> End {
    states.put(Request::parse(call.read().value()).config().converseState().conversationState());
    call.readAll();
    call.write(resultOf("", "yes", stateOf(std::to_string(states.values().size()))).serialize());
    return {};
  });
  conversation.open("token", 0ms);
  std::vector<std::string> expected{""};
  // Each begins at another moment of the closing.
  for (std::size_t i = 1; i <= 30; ++i) {
    conversation.turn();
    conversation.screen.untilTurn(i);
    expected.push_back(std::to_string(i));
    std::this_thread::sleep_for(std::chrono::microseconds(i * 50));
  }
  expected.pop_back();
  EXPECT_EQ(states.waitFor(30), expected);
  EXPECT_THAT(conversation.screen.ended.values(), ::testing::Each(0));
}

}  // namespace
}  // namespace velmora
