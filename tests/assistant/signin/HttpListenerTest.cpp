// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/signin/HttpListener.h"

#include <gmock/gmock.h>

#include <atomic>
#include <thread>

#include "support/RawHttp.h"

namespace velmora {
namespace {

using tests::RawConnection;
using tests::sendRaw;

/// Answers what it was asked for.
HttpResponse echo(const HttpRequest &request) {
  if (request.path == "/throw") throw std::runtime_error("a secret");
  return {.contentType = "text/plain",
          .body = request.method + ' ' + request.path + '|' + request.query + '|' + request.body};
}

HttpListener::Settings generous(std::chrono::milliseconds limit = std::chrono::hours(1)) {
  return {.requestsASecond = 1e6, .burst = 1e6, .requestLimit = limit};
}

struct HttpListenerTest : ::testing::Test {
  void start(const HttpListener::Settings &settings) {
    listener.emplace(settings);
    listener->start(echo);
  }
  [[nodiscard]] int port() const { return listener->port(); }

  std::optional<HttpListener> listener;
};

TEST_F(HttpListenerTest, RefusesWhatMayNotComeInWithAStatusOfItsOwn) {
  start(generous());
  const std::string own = tests::hostField(port());
  const std::string origin = "http://127.0.0.1:" + std::to_string(port());
  const std::string form = "Content-Type: application/x-www-form-urlencoded\r\n";
  const std::string three = "Content-Length: 3\r\n";
  const std::string end = "\r\na=b";
  const struct {
    int status;
    std::string request;
    std::string body = {};
  } cases[] = {
      {200, "GET /a%zz?b=%41 HTTP/1.1\r\n" + own + "\r\n", "GET /a%zz|b=%41|"},
      {200, "POST /a HTTP/1.1\r\n" + own + form + three + "Origin: " + origin + "\r\n" + end, "POST /a||a=b"},
      {400, "GET /a HTTP/1.1\r\n" + own + own + "\r\n"},
      {403, "GET /a HTTP/1.1\r\nHost: evil.example:" + std::to_string(port()) + "\r\n\r\n"},
      {403, "POST /a HTTP/1.1\r\n" + own + form + three + "Origin: http://evil.example\r\n" + end},
      {405, "DELETE /a HTTP/1.1\r\n" + own + "\r\n"},
      {411, "POST /a HTTP/1.1\r\n" + own + form + "Transfer-Encoding: chunked\r\n\r\n3\r\na=b\r\n0\r\n\r\n"},
      {413, "POST /a HTTP/1.1\r\n" + own + form + "Content-Length: 99999999999999999999\r\n" + end},
      {413, "POST /a HTTP/1.1\r\n" + own + form + "Content-Length: 10485760\r\n\r\n" +
                std::string(10 * 1024 * 1024, 'x')},
      {415, "POST /a HTTP/1.1\r\n" + own + form + "Content-Encoding: gzip\r\n" + three + end},
      {404, "GET /" + std::string(5000, 'a') + " HTTP/1.1\r\n" + own + "\r\n"},
      {400, "no HTTP at all\r\n\r\n"},
      {500, "GET /throw HTTP/1.1\r\n" + own + "\r\n"}};
  for (const auto &c : cases) {
    const tests::Answer answer = sendRaw(port(), c.request);
    EXPECT_EQ(answer.status, c.status) << c.request.substr(0, 200);
    EXPECT_EQ(answer.field("X-Frame-Options"), "DENY");
    EXPECT_EQ(answer.field("Cache-Control"), "no-store");
    EXPECT_EQ(answer.head.find("secret"), std::string::npos);
    EXPECT_THAT(answer.body, ::testing::StartsWith(c.body));
  }
}

TEST_F(HttpListenerTest, AdmitsABurstAndThenARate) {
  std::atomic<std::int64_t> now{1000};
  start({.requestsASecond = 1, .burst = 3, .clock = [&] {
           return std::chrono::system_clock::time_point(std::chrono::seconds(now));
         }});
  // A clock that is set back neither gives nor takes for good.
  const std::pair<int, std::vector<int>> cases[] = {
      {0, {200, 200, 200, 429}}, {2, {200, 200, 429}}, {-500, {429}}, {1, {200, 429}}};
  for (const auto &[seconds, statuses] : cases) {
    now += seconds;
    for (const int status : statuses) EXPECT_EQ(tests::get(port(), "/a").status, status) << seconds;
  }
}

TEST_F(HttpListenerTest, SlowClientsHoldNobodyUpForLong) {
  start(generous(std::chrono::milliseconds(200)));
  std::vector<std::unique_ptr<RawConnection>> silent;
  silent.reserve(12);
  for (int i = 0; i < 12; ++i) silent.push_back(std::make_unique<RawConnection>(port()));
  EXPECT_EQ(tests::get(port(), "/a").status, 200);
  // A byte now and then does not buy more time.
  const RawConnection dripping(port());
  const auto end = std::chrono::steady_clock::now() + tests::kPatience;
  bool open = dripping.send("GET /a HTTP/1.1\r\nX: ");
  while (open && std::chrono::steady_clock::now() < end) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    open = dripping.send("x");
  }
  EXPECT_FALSE(open);
}

TEST_F(HttpListenerTest, EndsAtOnceWithClientsInTheMiddleOfARequest) {
  start(generous());
  const RawConnection half(port());
  half.send("GET /a HTTP/1.1\r\n");
  listener.reset();
  EXPECT_EQ(half.receive(), "");
  const HttpListener idle(generous());  // one that never began to listen ends as well
}

}  // namespace
}  // namespace velmora
