// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include <future>
#include <random>
#include <thread>

#include "protocol/CompletionThread.h"
#include "protocol/EmbeddedAssistantService.h"
#include "support/Relay.h"
#include "support/Responses.h"
#include "support/ScriptedServer.h"
#include "support/Waiting.h"

namespace velmora {
namespace {

using tests::Inbox;
using tests::Relay;
using tests::Response;
using tests::ScriptedServer;
using Service = Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantService;
using Call = Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantConverseCall;
using ClientError = Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantClientError;
using Request = Google_Assistant_Embedded_V1alpha1_ConverseRequest;
using End = ScriptedServer::End;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

Request audio(const std::string &bytes) {
  Request request;
  request.setAudioIn(bytes);
  return request;
}

std::string audioResponse(const std::string &bytes) { return tests::soundOf(bytes).serialize(); }

/// A received response as text: its audio, or the name of the error.
std::string asText(const std::optional<Response> &response, const std::optional<ClientError> &error) {
  if (response.has_value() == error.has_value()) return "both or neither";
  return error ? error->name() : response->audioOut().audioData();
}

/// A blocking receive in the same words.
std::string receiveText(Call &call) {
  try {
    return asText(call.receive(), std::nullopt);
  } catch (const ClientError &error) {
    return error.name();
  }
}

template <typename Operation>
std::string raised(Operation operation) {
  try {
    operation();
  } catch (const CallError &error) {
    return error.name();
  }
  return "nothing";
}

/// A client of one scripted server.
struct Client {
  explicit Client(ScriptedServer::Script script)
      : server(std::move(script)), service(server.deployment().address(), server.roots(), std::nullopt) {}

  std::shared_ptr<Call> start() {
    return service.converse([ended = ended](const CallResult &result) { ended.put(result); });
  }
  CallResult end() { return ended.waitFor(1).at(0); }

  Inbox<CallResult> ended;
  ScriptedServer server;
  Service service;
};

TEST(ConverseCall, KeepsABurstInOrderAndDeliversToTheEndAfterTheClose) {
  Client client([](ScriptedServer::Call &call) -> End {
    int expected = 0;
    while (const auto bytes = call.read()) {
      if (Request::parse(*bytes).audioIn() != std::to_string(expected++)) {
        return {.code = StatusCode::internal, .message = "out of order"};
      }
    }
    for (int i = 0; i < expected; ++i) call.write(audioResponse(std::to_string(i)));
    return {};
  });
  const auto call = client.start();
  Inbox<bool> sent;
  Inbox<int> closed;
  for (int i = 0; i < 300; ++i) {
    call->send(audio(std::to_string(i)), [&](const auto &error) { sent.put(!error); });
  }
  call->closeSend([&] { closed.put(1); });
  EXPECT_EQ(raised([&] { call->send(audio("late")); }), "sendingClosed");
  EXPECT_EQ(raised([&] { call->closeSend(); }), "sendingClosed");
  for (int i = 0; i < 300; ++i) ASSERT_EQ(receiveText(*call), std::to_string(i));
  EXPECT_EQ(receiveText(*call), "endOfStream");
  EXPECT_EQ(receiveText(*call), "endOfStream");
  EXPECT_EQ(client.end().statusCode, 0);
  EXPECT_EQ(sent.waitFor(300), std::vector<bool>(300, true));
  EXPECT_EQ(closed.waitFor(1).size(), 1U);
  EXPECT_EQ(client.ended.values().size(), 1U);
}

TEST(ConverseCall, BadBytesAreOneErrorAndTheStreamGoesOn) {
  Client client([](ScriptedServer::Call &call) -> End {
    for (const std::string &bytes : {std::string(), std::string("\x10\x80"), audioResponse("after")})
      call.write(bytes);
    return {};
  });
  // Each completion asks for the next as a screen does.
  const auto call = client.start();
  Inbox<std::string> received;
  std::function<void()> next = [&] {
    call->receive([&](const std::optional<Response> &response, const std::optional<ClientError> &error) {
      EXPECT_TRUE(CompletionThread::isCurrent());
      EXPECT_EQ(raised([&] { (void)call->receive(); }), "completionThread") << "it would wait for itself";
      EXPECT_EQ(raised([&] { call->closeSend(); }), "completionThread");
      const bool more = response || error->errorCase() != ClientError::Case::endOfStream;
      received.put(asText(response, error));
      if (more) next();
    });
  };
  next();
  EXPECT_THAT(received.waitFor(4), ElementsAre("", "invalidMessageReceived", "after", "endOfStream"));
}

TEST(ConverseCall, EarlierReceiversAreServedBeforeABlockingOne) {
  Client client([](ScriptedServer::Call &call) -> End {
    for (int i = 0; i < 4; ++i) call.write(audioResponse(std::to_string(i)));
    return {};
  });
  for (std::size_t round = 1; round <= 50; ++round) {
    const auto call = client.start();
    (void)client.ended.waitFor(round);  // all has come
    Inbox<std::string> received;
    for (int i = 0; i < 2; ++i) {
      call->receive([&](auto response, auto error) { received.put("earlier " + asText(response, error)); });
    }
    for (int i = 0; i < 2; ++i) received.put(receiveText(*call));
    ASSERT_THAT(received.waitFor(4), ElementsAre("earlier 0", "earlier 1", "2", "3"));
  }
}

TEST(ConverseCall, TheEndFreesWhoWaitsAndLaterOperationsRaise) {
  for (const bool isCancelled : {false, true}) {
    const Inbox<bool> arrived;
    Client client([&](ScriptedServer::Call &call) -> End {
      arrived.put(true);
      if (isCancelled) call.waitForCancel();
      return {.code = StatusCode::unauthenticated, .message = "so be it"};
    });
    const auto call = client.start();
    auto waiting = std::async(std::launch::async, [&] { return receiveText(*call); });
    (void)arrived.waitFor(1);
    if (isCancelled) call->cancel();
    EXPECT_EQ(waiting.get(), "endOfStream");
    EXPECT_EQ(client.end().statusCode,
              static_cast<int>(isCancelled ? StatusCode::cancelled : StatusCode::unauthenticated));
    EXPECT_EQ(client.end().statusMessage == "so be it", !isCancelled);
    EXPECT_EQ(raised([&] { call->send(audio("late")); }), "callEnded");
    EXPECT_EQ(raised([&] { call->closeSend(); }), "callEnded");
    EXPECT_EQ(receiveText(*call), "endOfStream");
  }
}

TEST(ConverseCall, MayBeDestroyedAtAnyMoment) {
  Client client([](ScriptedServer::Call &call) -> End {
    while (const auto bytes = call.read()) {
      if (!call.write(audioResponse(std::string(1600, 'x')))) break;
    }
    return {};
  });
  std::mt19937 random(7);
  std::atomic<int> completions{0};
  int asked = 0;
  constexpr int kRounds = 150;
  for (int round = 0; round < kRounds; ++round) {
    auto call = client.start();
    const int sends = static_cast<int>(random() % 6);
    for (int i = 0; i < sends; ++i) {
      call->send(audio(std::string(3200, 'y')), [&](const auto &) { ++completions; });
      call->receive([&](auto, auto) { ++completions; });
      asked += 2;
    }
    if (random() % 2 == 0) {
      call->closeSend([&] { ++completions; });
      ++asked;
    }
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 2000));
    call.reset();
  }
  EXPECT_EQ(client.ended.waitFor(kRounds).size(), static_cast<std::size_t>(kRounds));
  EXPECT_TRUE(tests::eventually([&] { return completions == asked; })) << completions << " of " << asked;
}

TEST(ConverseCall, AnUnreadStreamIsHeldBackAndLargeResponsesPass) {
  constexpr std::size_t kMegabyte = 1U << 20U;
  constexpr int kCount = 64;
  std::atomic<int> written{0};
  Client client([&](ScriptedServer::Call &call) -> End {
    for (; written < kCount && call.write(audioResponse(std::string(kMegabyte, 'm'))); ++written) {
    }
    call.write(audioResponse(std::string(kCount * kMegabyte, 'L')));
    return {};
  });
  const auto call = client.start();
  EXPECT_EQ(receiveText(*call).size(), kMegabyte);
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  EXPECT_LT(written, kCount / 2);
  for (int i = 1; i < kCount; ++i) ASSERT_EQ(receiveText(*call).size(), kMegabyte);
  EXPECT_EQ(receiveText(*call).size(), kCount * kMegabyte);
  EXPECT_EQ(receiveText(*call), "endOfStream");
}

TEST(ConverseCall, ABrokenConnectionEndsTheCallAndTheNextOneConnectsAgain) {
  const ScriptedServer server([](ScriptedServer::Call &call) -> End {
    call.write(audioResponse("x"));
    call.readAll();
    return {};
  });
  for (const bool reset : {true, false}) {
    Relay relay(*server.deployment().port);
    const Service service(relay.address(), server.roots(), std::nullopt);
    Inbox<CallResult> ended;
    const auto started = std::chrono::steady_clock::now();
    const auto call = service.converse([ended](const CallResult &result) { ended.put(result); });
    EXPECT_EQ(receiveText(*call), "x");
    reset ? relay.reset() : relay.freeze();
    EXPECT_EQ(receiveText(*call), "endOfStream");
    EXPECT_EQ(ended.waitFor(1).at(0).statusCode, static_cast<int>(StatusCode::unavailable));
    EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(20));
  }
}

TEST(ConverseCall, OnlyAServerWithTheRightCertificateIsTalkedTo) {
  // A proxy is no way to this machine.
  for (const char *variable : {"http_proxy", "https_proxy", "grpc_proxy"}) {
    ::setenv(variable, "http://127.0.0.1:1", 1);
  }
  const auto script = [](ScriptedServer::Call &) -> End { return {}; };
  const ScriptedServer server(script);
  const ScriptedServer other(script);
  const struct {
    const char *what;
    std::optional<std::string> roots;
    std::optional<std::string> host;
    int status;
  } cases[] = {{"its own", server.roots(), {}, 0},
               {"not its name", server.roots(), "assistant.example", 14},
               {"another authority", other.roots(), {}, 14},
               {"the system's roots", {}, {}, 14},
               {"no certificate", "nonsense", {}, 14}};
  testing::internal::CaptureStderr();
  for (const auto &c : cases) {
    const Service service(server.deployment().address(), c.roots, c.host);
    Inbox<CallResult> ended;
    const auto call = service.converse([ended](const CallResult &result) { ended.put(result); });
    EXPECT_EQ(ended.waitFor(1).at(0).statusCode, c.status) << c.what;
  }
  // The library's own words about all this stay off the terminal.
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(CallResult, ItsDescriptionShowsNoToken) {
  const CallResult result{
      .statusCode = 16,
      .trailingMetadata = {
          {"authorization", "Bearer ya29.secret-token"}, {"set-cookie", "session-id-value"}, {"k", "v"}}};
  EXPECT_THAT(result.description(), AllOf(HasSubstr("16"), HasSubstr("k: v"), HasSubstr("Bearer ya29"),
                                          Not(HasSubstr("secret")), Not(HasSubstr("session-id"))));
}

}  // namespace
}  // namespace velmora
