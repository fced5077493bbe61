// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "protocol/EmbeddedAssistantServer.h"

#include <gmock/gmock.h>

#include <functional>

#include "foundation/Deployment.h"
#include "protocol/Certificates.h"
#include "protocol/EmbeddedAssistantService.h"
#include "support/CapturedLog.h"
#include "support/TemporaryFolder.h"
#include "support/Waiting.h"

namespace velmora {
namespace {

using tests::CapturedLog;
using tests::Inbox;
using tests::TemporaryFolder;
using Server = Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantServer;
using Session = Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantConverseSession;
using Service = Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantService;
using Request = Google_Assistant_Embedded_V1alpha1_ConverseRequest;
using Response = Google_Assistant_Embedded_V1alpha1_ConverseResponse;
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

Response audioResponse(const std::string &bytes) {
  Google_Assistant_Embedded_V1alpha1_AudioOut out;
  out.setAudioData(bytes);
  Response response;
  response.setAudioOut(out);
  return response;
}

TEST(EmbeddedAssistantServer, ServesACallAndLogsItWithoutItsToken) {
  const CapturedLog log;
  Host host([&](Session &session) {
    session.initialMetadata().emplace("hello", "there");
    session.trailingMetadata().emplace("turns", "1");
    EXPECT_EQ(session.requestMetadata().find("authorization")->second, "Bearer secret-token");
    try {
      for (;;) session.send(audioResponse(session.receive()->audioIn()));
    } catch (Session::ServerError) {
      EXPECT_EQ(&session.provider(), &host.provider);
    }
  });
  host.service->metadata().emplace("authorization", "Bearer secret-token");
  const auto call = host.start();
  for (const char *text : {"one", "two"}) {
    Request request;
    request.setAudioIn(text);
    call->send(request);
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
    const char *what;
    std::function<void(Session &)> serve;
    std::string bytes;
    StatusCode code;
    const char *message;
    const char *logged;
  } cases[] = {{"refused",
                [](Session &session) { session.setStatus(StatusCode::unauthenticated, "no token"); },
                {},
                StatusCode::unauthenticated,
                "no token",
                "Server received"},
               {"raised",
                [](Session &) { throw std::runtime_error("oh dear"); },
                {},
                StatusCode::internal,
                "The assistant failed",
                "Server error: oh dear"},
               {"malformed request", [](Session &session) { (void)session.receive(); }, "\x12\x7f",
                StatusCode::invalidArgument, "A request could not be parsed", "error "}};
  for (const auto &c : cases) {
    const CapturedLog log;
    Host host(c.serve);
    Inbox<CallResult> ended;
    ByteCall call(host.service->channel(), Service::kConverseMethod, {},
                  [ended](const CallResult &result) { ended.put(result); });
    call.send(c.bytes, {});
    const CallResult result = ended.waitFor(1).at(0);
    EXPECT_EQ(result.statusCode, static_cast<int>(c.code)) << c.what;
    EXPECT_EQ(result.statusMessage, c.message) << c.what;
    EXPECT_TRUE(log.waitFor(c.logged)) << c.what;
  }
}

TEST(EmbeddedAssistantServer, AnotherMethodReachesNoProvider) {
  const CapturedLog log;
  Host host([](Session &) { ADD_FAILURE(); });
  Inbox<CallResult> ended;
  const ByteCall call(host.service->channel(), "/elsewhere/Method", {},
                      [ended](const CallResult &result) { ended.put(result); });
  EXPECT_EQ(ended.waitFor(1).at(0).statusCode, static_cast<int>(StatusCode::unimplemented));
  EXPECT_TRUE(log.waitFor("Server received request to "));
}

TEST(EmbeddedAssistantServer, AReceiveHasPatienceAndLosesNothing) {
  const Inbox<int> waited;
  Host host([waited](Session &session) {
    std::optional<Request> request;
    for (int empty = 1; !(request = session.receive(std::chrono::milliseconds(1))); ++empty) {
      if (empty <= 3) waited.put(empty);
    }
    session.send(audioResponse(request->audioIn()));
  });
  const auto call = host.start();
  ASSERT_EQ(waited.waitFor(3).size(), 3U);
  Request request;
  request.setAudioIn("late");
  call->send(request);
  EXPECT_EQ(call->receive().audioOut().audioData(), "late");
}

TEST(EmbeddedAssistantServer, AProviderNoticesThatItsClientIsGone) {
  Inbox<std::string> noticed;
  Host host([&](Session &session) {
    session.send(audioResponse("x"));
    try {
      for (;;) (void)session.receive();
    } catch (Session::ServerError) {
      noticed.put("end of stream");
    }
    while (!session.cancelled()) std::this_thread::yield();
    noticed.put("cancelled");
    try {
      session.send(audioResponse("into the void"));
    } catch (const CallError &) {
      noticed.put("send raises");
    }
  });
  auto call = host.start();
  (void)call->receive();
  call.reset();
  EXPECT_THAT(noticed.waitFor(3), ::testing::ElementsAre("end of stream", "cancelled", "send raises"));
}

TEST(EmbeddedAssistantServer, StoppingEndsTheCallsUnderWay) {
  Inbox<bool> left;
  Host host([&](Session &session) {
    session.send(audioResponse("x"));
    try {
      for (;;) (void)session.receive();
    } catch (Session::ServerError) {
      left.put(true);
    }
  });
  const auto call = host.start();
  (void)call->receive();
  EXPECT_TRUE(host.server->stop(std::chrono::milliseconds(200)));
  EXPECT_EQ(left.values().size(), 1U);
  EXPECT_NE(host.end().statusCode, 0);
}

TEST(EmbeddedAssistantServer, ServesSeveralClientsAtOnceAndRefusesTooMany) {
  Host host([](Session &session) {
    session.send(audioResponse("in"));
    try {
      for (;;) (void)session.receive();
    } catch (Session::ServerError) {
    }
  });
  std::vector<decltype(host.start())> calls;
  for (int i = 0; i < 64; ++i) {
    calls.push_back(host.start());
    EXPECT_EQ(calls.back()->receive().audioOut().audioData(), "in");
  }
  const auto refused = host.start();
  EXPECT_EQ(host.end().statusCode, static_cast<int>(StatusCode::resourceExhausted));
}

TEST(EmbeddedAssistantServer, SaysWhyItCannotStart) {
  const TemporaryFolder folder;
  const Certificates good = makeCertificates(folder.path());
  const auto garbage = folder.write("garbage.pem", "no key at all");
  const Server first("127.0.0.1:0", good.key, good.chain);
  const std::string taken = "127.0.0.1:" + std::to_string(first.port());
  const struct {
    std::string address;
    std::filesystem::path key;
    std::filesystem::path chain;
    std::string says;
  } cases[] = {{taken, good.key, good.chain, "Cannot listen on " + taken},
               {"127.0.0.1:0", folder.path() / "none.key", good.chain, "none.key"},
               {"127.0.0.1:0", good.key, folder.path() / "none.pem", "none.pem"},
               {"127.0.0.1:0", garbage, good.chain, "Cannot listen"},
               {"192.0.2.1:0", good.key, good.chain, "Cannot listen"}};
  for (const auto &c : cases) {
    try {
      const Server server(c.address, c.key, c.chain);
      ADD_FAILURE() << c.says;
    } catch (const std::runtime_error &error) {
      EXPECT_THAT(error.what(), HasSubstr(c.says));
    }
  }
}

}  // namespace
}  // namespace velmora
