// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "auth/HttpClient.h"

#include <gmock/gmock.h>

#include <QTcpServer>
#include <QTcpSocket>
#include <optional>

#include "support/EventLoop.h"
#include "support/HttpServer.h"
#include "support/TemporaryFolder.h"

namespace velmora {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;
using tests::HttpAnswer;
using tests::HttpRequest;
using tests::HttpServer;
using tests::runUntil;

constexpr auto kSecret = "hush-hush";

struct HttpClientTest : testing::Test {
  /// The text of the error, or "JSON".
  std::string post(HttpClient &by, const std::string &url) {
    std::optional<HttpClient::Answer> answer;
    by.postForm(QString::fromStdString(url), {{QStringLiteral("code"), QString::fromLatin1(kSecret)}},
                [&](const HttpClient::Answer &value) { answer = value; });
    EXPECT_FALSE(answer) << "from the event loop only";
    if (!runUntil([&] { return answer.has_value(); })) return "no answer";
    const auto *error = std::get_if<HttpError>(&*answer);
    if (!error) return "JSON";
    EXPECT_THAT(error->text, testing::Not(HasSubstr(kSecret)));
    return error->text;
  }

  tests::TemporaryFolder folder;
  HttpClient client{folder.path() / "roots.pem"};
};

TEST_F(HttpClientTest, TakesEveryJsonAnswerAndNoOther) {
  HttpServer elsewhere([](const HttpRequest &) { return HttpAnswer{.body = "{}"}; });
  // As much as may come, and as deep as it can be: whatever a server sends must not exhaust the stack.
  const std::string deep =
      std::string(HttpClient::kLargestAnswer / 2, '[') + std::string(HttpClient::kLargestAnswer / 2, ']');
  struct Case {
    HttpAnswer answer;
    const char *expected;
  };
  const std::map<std::string, Case> cases{
      {"/broken", {{.status = 503, .body = "{}"}, "JSON"}},
      {"/deep", {{.body = deep}, "JSON"}},
      {"/larger", {{.body = deep + ' '}, "the answer is too large"}},
      {"/here", {{.status = 307, .headers = {{"Location", "/broken"}}}, "JSON"}},
      {"/elsewhere", {{.status = 307, .headers = {{"Location", elsewhere.url("/")}}}, "edirect"}},
      {"/file", {{.status = 307, .headers = {{"Location", "file:///etc/hostname"}}}, "rotocol"}},
  };
  HttpServer server([&](const HttpRequest &request) { return cases.at(request.target).answer; });
  for (const auto &[path, each] : cases) {
    EXPECT_THAT(post(client, server.url(path)), HasSubstr(each.expected)) << path;
    EXPECT_EQ(server.requests().values().back().body, "code=hush-hush") << path;
  }
  EXPECT_TRUE(elsewhere.requests().values().empty());
  for (const char *url : {"", "file:///etc/hostname", "http://[", "127.0.0.1"}) {
    EXPECT_EQ(post(client, url), "the address is none of HTTP") << url;
  }
}

TEST_F(HttpClientTest, TrustsTheRootsOfTheDeploymentForTheHostTheyName) {
  const Certificates certificates = makeCertificates(folder.path());
  HttpServer server([](const HttpRequest &) { return HttpAnswer{.body = "{}"}; }, &certificates);
  EXPECT_EQ(post(client, server.url("/")), "JSON");
  HttpClient stranger(folder.path() / "no-such-roots.pem");
  EXPECT_THAT(post(stranger, server.url("/")), HasSubstr("SSL"));
  EXPECT_THAT(post(client, server.url("/", "127.0.0.2")), testing::Not("JSON"));
  EXPECT_EQ(server.requests().values().size(), 1U);
}

TEST_F(HttpClientTest, SendsAFormOnceWhenTheConnectionBreaksAndGivesUpInTime) {
  QTcpServer broken;
  int forms = 0;
  QObject::connect(&broken, &QTcpServer::newConnection, &broken, [&] {
    QTcpSocket *socket = broken.nextPendingConnection();
    QObject::connect(socket, &QTcpSocket::readyRead, socket, [&forms, socket] {
      if (!socket->peek(4096).contains(kSecret)) return;
      ++forms;
      socket->abort();
    });
  });
  const auto urlOf = [](QTcpServer &server) {
    server.listen(QHostAddress::LocalHost);
    return "http://127.0.0.1:" + std::to_string(server.serverPort()) + '/';
  };
  EXPECT_THAT(post(client, urlOf(broken)), testing::Not("JSON"));
  EXPECT_EQ(forms, 1);
  QTcpServer silent;
  HttpClient impatient(folder.path() / "roots.pem", 100ms);
  EXPECT_EQ(post(impatient, urlOf(silent)), "no answer in time");
}

TEST_F(HttpClientTest, DeliversNothingOnceDestroyed) {
  HttpServer server([](const HttpRequest &) { return HttpAnswer{.body = "{}"}; });
  const QString url = QString::fromStdString(server.url("/"));
  auto owner = std::make_unique<HttpClient>(folder.path());
  for (const QString &address : {url, QStringLiteral("none")}) {
    owner->postForm(address, {}, [](const HttpClient::Answer &) { ADD_FAILURE() << "after the end"; });
  }
  owner = std::make_unique<HttpClient>(folder.path());
  owner->postForm(url, {}, [&](const HttpClient::Answer &) { owner.reset(); });  // inside its own completion
  EXPECT_TRUE(runUntil([&] { return owner == nullptr; }));
}

}  // namespace
}  // namespace velmora
