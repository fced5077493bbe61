// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "protocol/EmbeddedAssistantServer.h"

#include <gmock/gmock.h>

#include <functional>

#include "foundation/Deployment.h"
#include "protocol/Certificates.h"
#include "protocol/EmbeddedAssistantService.h"
#include "protocol/Responses.h"
#include "support/CapturedLog.h"
#include "support/TemporaryFolder.h"
#include "support/Waiting.h"

namespace velmora {
namespace {

using tests::CapturedLog;
using tests::Inbox;
using tests::soundOf;
using tests::TemporaryFolder;
using Server = Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantServer;
using Session = Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantConverseSession;
using Service = Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantService;
using Request = Google_Assistant_Embedded_V1alpha1_ConverseRequest;
using ::testing::HasSubstr;

/// Serves calls with a function.
struct Provider : Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantProvider {
  explicit Provider(std::function<void(Session &)> serving) : serve(std::move(serving)) {}
  void converse(Session &session) override { serve(session); }
  std::function<void(Session &)> serve;
};

/// A TLS server with its client.
struct Host {
  explicit Host(std::function<void(Session &)> serving) : provider(std::move(serving)) {
    const Certificates certificates = makeCertificates(folder.path());
    server.emplace("127.0.0.1:0", certificates.key, certificates.chain);
    server->start(provider);
    service.emplace("127.0.0.1:" + std::to_string(server->port()), readFile(certificates.roots),
                    std::nullopt);
  }
  CallResult end() { return ended.waitFor(1).at(0); }
  auto start() {
    return service->converse([ended = ended](const CallResult &result) { ended.put(result); });
  }

  TemporaryFolder folder;
  Provider provider;
  std::optional<Server> server;
  std::optional<Service> service;
  Inbox<CallResult> ended;
};

Request audio(const std::string &bytes) {
  Request request;
  request.setAudioIn(bytes);
  return request;
}

/// Reads what the client sends, up to the end.
void readAll(
    Session &session, const std::function<void(const Request &)> &take = [](const Request &) {}) {
  try {
    for (;;) take(session.receive().value());
  } catch (Session::ServerError) {
  }
}

TEST(EmbeddedAssistantServer, ServesACallAndLogsItWithoutItsToken) {
  const CapturedLog log;
  Host host([&](Session &session) {
    session.initialMetadata().emplace("hello", "there");
    session.trailingMetadata().emplace("turns", "1");
    EXPECT_EQ(session.requestMetadata().find("authorization")->second, "Bearer secret-token");
    readAll(session, [&](const Request &request) { session.send(soundOf(request.audioIn())); });
    EXPECT_EQ(&session.provider(), &host.provider);
  });
  host.service->metadata().emplace("authorization", "Bearer secret-token");
  const auto call = host.start();
  for (const char *text : {"one", "two"}) {
    call->send(audio(text));
    EXPECT_EQ(call->receive().audioOut().audioData(), text);
  }
  call->closeSend();
  const CallResult result = host.end();
  EXPECT_EQ(result.statusCode, 0);
  EXPECT_EQ(result.initialMetadata.count("hello"), 1U);
  EXPECT_EQ(result.trailingMetadata.count("turns"), 1U);
  ASSERT_EQ(log.count("Server received request to "), 1);
  for (const std::string &line : log.lines()) {
    EXPECT_THAT(line,
                HasSubstr(" calling /google.assistant.embedded.v1alpha1.EmbeddedAssistant/Converse from "));
    EXPECT_EQ(line.find("secret-token"), std::string::npos);
  }
}

TEST(EmbeddedAssistantServer, EndsACallAsTheProviderOrItsFailureSays) {
  const struct {
    std::string method;
    std::function<void(Session &)> serve;
    StatusCode code;
    const char *message;
    const char *logged;
  } cases[] = {{Service::kConverseMethod,
                [](Session &session) { session.setStatus(StatusCode::unauthenticated, "no token"); },
                StatusCode::unauthenticated, "no token", "Server received request to "},
               {Service::kConverseMethod, [](Session &) { throw std::runtime_error("oh dear"); },
                StatusCode::internal, "The assistant failed", "Server error: oh dear"},
               {Service::kConverseMethod, [](Session &session) { (void)session.receive(); },
                StatusCode::invalidArgument, "A request could not be parsed", "error "},
               {"/elsewhere/Method", [](Session &) { ADD_FAILURE() << "served"; }, StatusCode::unimplemented,
                "Unknown method /elsewhere/Method", "Server received request to "}};
  for (const auto &c : cases) {
    const CapturedLog log;
    Host host(c.serve);
    ByteCall call(host.service->channel(), c.method, {},
                  [ended = host.ended](const CallResult &result) { ended.put(result); });
    call.send("\x12\x7f", {});  // malformed
    const CallResult result = host.end();
    EXPECT_EQ(result.statusCode, static_cast<int>(c.code)) << c.message;
    EXPECT_EQ(result.statusMessage, c.message);
    EXPECT_TRUE(log.waitFor(c.logged)) << c.message;
  }
}

TEST(EmbeddedAssistantServer, AReceiveHasPatienceAndLosesNothing) {
  const Inbox<int> waited;
  Host host([waited](Session &session) {
    std::optional<Request> request;
    while (!(request = session.receive(std::chrono::milliseconds(1)))) waited.put(1);
    session.send(soundOf(request->audioIn()));
  });
  const auto call = host.start();
  ASSERT_GE(waited.waitFor(3).size(), 3U);
  call->send(audio("late"));
  EXPECT_EQ(call->receive().audioOut().audioData(), "late");
}

TEST(EmbeddedAssistantServer, AProviderNoticesThatItsClientIsGone) {
  Inbox<std::string> noticed;
  Host host([&](Session &session) {
    session.send(soundOf("x"));
    readAll(session);
    noticed.put("end of stream");
    while (!session.cancelled()) std::this_thread::yield();
    noticed.put("cancelled");
    try {
      session.send(soundOf("into the void"));
    } catch (const CallError &) {
      noticed.put("send raises");
    }
  });
  auto call = host.start();
  (void)call->receive();
  call.reset();
  EXPECT_THAT(noticed.waitFor(3), ::testing::ElementsAre("end of stream", "cancelled", "send raises"));
}

TEST(EmbeddedAssistantServer, ServesManyClientsAtOnceRefusesTooManyAndEndsThemAllAsItStops) {
  constexpr std::size_t kMost = 64;
  const Inbox<bool> left;
  Host host([left](Session &session) {
    session.send(soundOf("in"));
    readAll(session);
    left.put(true);
  });
  std::vector<decltype(host.start())> calls;
  while (calls.size() < kMost) {
    calls.push_back(host.start());
    EXPECT_EQ(calls.back()->receive().audioOut().audioData(), "in");
  }
  const auto refused = host.start();
  EXPECT_EQ(host.end().statusCode, static_cast<int>(StatusCode::resourceExhausted));
  EXPECT_TRUE(host.server->stop(std::chrono::seconds(2)));
  EXPECT_EQ(left.values().size(), kMost);
  for (const CallResult &result : host.ended.waitFor(kMost + 1)) EXPECT_NE(result.statusCode, 0);
}

}  // namespace
}  // namespace velmora
