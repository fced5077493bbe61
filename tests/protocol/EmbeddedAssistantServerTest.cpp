// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "protocol/EmbeddedAssistantServer.h"

#include <gmock/gmock.h>

#include <functional>

#include "foundation/Deployment.h"
#include "protocol/Certificates.h"
#include "protocol/EmbeddedAssistantService.h"
#include "support/CapturedLog.h"
#include "support/Responses.h"
#include "support/TemporaryFolder.h"
#include "support/Waiting.h"

namespace velmora {
namespace {

using tests::Inbox;
using tests::soundOf;
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
    server.start(provider);
  }
  CallResult end() { return ended.waitFor(1).at(0); }
  auto start() {
    return service.converse([ended = ended](const CallResult &result) { ended.put(result); });
  }

  tests::TemporaryFolder folder;
  Certificates certificates = makeCertificates(folder.path());
  Provider provider;
  Server server{"127.0.0.1:0", certificates.key, certificates.chain};
  Service service{"127.0.0.1:" + std::to_string(server.port()), readFile(certificates.roots), std::nullopt};
  Inbox<CallResult> ended;
};

/// Reads what the client sends, up to the end.
void readAll(
    Session &session, const std::function<void(const Request &)> &take = [](const Request &) {}) {
  try {
    for (;;) take(session.receive().value());
  } catch (Session::ServerError) {
  }
}

TEST(EmbeddedAssistantServer, ServesACallAndLogsItWithoutItsToken) {
  const tests::CapturedLog log;
  Host host([&](Session &session) {
    EXPECT_EQ(session.requestMetadata().find("authorization")->second, "Bearer secret-token");
    readAll(session, [&](const Request &request) { session.send(soundOf(request.audioIn())); });
  });
  host.service.metadata().emplace("authorization", "Bearer secret-token");
  const auto call = host.start();
  for (const char *text : {"one", "two"}) {
    Request request;
    request.setAudioIn(text);
    call->send(request);
    EXPECT_EQ(call->receive().audioOut().audioData(), text);
  }
  call->closeSend();
  EXPECT_EQ(host.end().statusCode, 0);
  ASSERT_EQ(log.count("Server received request to "), 1);
  for (const std::string &line : log.lines()) {
    EXPECT_THAT(line,
                HasSubstr(" calling /google.assistant.embedded.v1alpha1.EmbeddedAssistant/Converse from "));
    EXPECT_EQ(line.find("secret-token"), std::string::npos);
  }
}

TEST(EmbeddedAssistantServer, EndsACallAsTheFailureOfTheProviderSays) {
  const struct {
    std::function<void(Session &)> serve;
    StatusCode code;
    const char *message;
  } cases[] = {
      {[](Session &) { throw std::runtime_error("oh dear"); }, StatusCode::internal, "The assistant failed"},
      {[](Session &session) { (void)session.receive(); }, StatusCode::invalidArgument,
       "A request could not be parsed"}};
  for (const auto &c : cases) {
    Host host(c.serve);
    ByteCall call(host.service.channel(), Service::kConverseMethod, {},
                  [ended = host.ended](const CallResult &result) { ended.put(result); });
    call.send("\x12\x7f", {});  // malformed
    EXPECT_EQ(host.end().statusCode, static_cast<int>(c.code)) << c.message;
    EXPECT_EQ(host.end().statusMessage, c.message);
  }
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
  EXPECT_TRUE(host.server.stop(std::chrono::seconds(2)));
  EXPECT_EQ(left.values().size(), kMost);
  for (const CallResult &result : host.ended.waitFor(kMost + 1)) EXPECT_NE(result.statusCode, 0);
}

}  // namespace
}  // namespace velmora
