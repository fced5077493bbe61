// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The sign-in screen and window with the real web engine, at a provider in this process.
#include <gmock/gmock.h>

#include <latch>
#include <mutex>

#include "auth/LoginViewController.h"
#include "auth/LoginWindowController.h"
#include "auth/TokenStore.h"
#include "support/EventLoop.h"
#include "support/OAuthDeployment.h"
#include "support/WebPages.h"

namespace velmora {
namespace {

using tests::countOf;
using tests::engineIn;
using tests::HttpAnswer;
using tests::HttpRequest;
using tests::page;
using tests::runUntil;

constexpr auto kBack = "http://localhost/?code=ABC";

/// Sends a visitor to the program in the way that a test chooses, and shows later ones a page.
struct SignInTest : testing::Test {
  HttpAnswer answer(const HttpRequest &request) {
    if (request.target == "/token") {
      tokensMayGo.wait();
      return {.body = R"({"access_token": "A", "expires_in": 3600, "refresh_token": "R"})"};
    }
    if (request.target == "/consent") return {.status = 302, .headers = {{"Location", kBack}}};
    if (request.target == "/favicon.ico") return {.status = 404};
    const std::lock_guard lock(mutex);
    return std::exchange(first, std::nullopt).value_or(page("Do you agree?", "consent"));
  }
  void answerFirst(HttpAnswer wanted) {
    const std::lock_guard lock(mutex);
    first = std::move(wanted);
  }
  /// The exchanges of this very code.
  std::ptrdiff_t exchanges() const {
    const auto requests = server.requests().values();
    return std::count_if(requests.begin(), requests.end(), [](const HttpRequest &request) {
      return request.target == "/token" && request.body.find("&code=ABC&") != std::string::npos;
    });
  }
  bool signedIn() const { return defaults.boolForKey(kLoggedInKey); }

  std::mutex mutex;  // guards what the first visitor gets
  std::optional<HttpAnswer> first = HttpAnswer{.status = 302, .headers = {{"Location", kBack}}};
  std::latch tokensMayGo{1};
  tests::TemporaryFolder folder;
  UserDefaults defaults;
  tests::HttpServer server{[this](const HttpRequest &request) { return answer(request); }};
  Deployment deployment = tests::oauthDeployment(folder, server.url("/auth"), server.url("/token"));
};

TEST_F(SignInTest, EachWayBackIsOneExchangeAndShowsTheConsentPageAfresh) {
  tokensMayGo.count_down();
  const HttpAnswer ways[] = {
      {.status = 302, .headers = {{"Location", kBack}}},
      page("<a id=x href='http://localhost/?code=ABC'>on</a><script>x.click()</script>"),
      page("<form id=x method=post action=/consent></form><script>x.submit()</script>"),
      page("<form id=x action=http://localhost/><input name=code value=ABC></form>"
           "<script>x.submit()</script>")};
  for (std::ptrdiff_t done = 0; done < std::ssize(ways); ++done) {
    answerFirst(ways[done]);
    defaults.setObject(false, kLoggedInKey);
    LoginViewController screen(deployment, defaults);
    const auto title = [&] { return engineIn(screen)->property("title").toString(); };
    EXPECT_EQ(engineIn(screen), nullptr) << "nothing is loaded before it is shown";
    screen.view().show();
    ASSERT_TRUE(runUntil([&] { return signedIn() && title() == QStringLiteral("consent"); })) << done;
    EXPECT_EQ(exchanges(), done + 1);
    EXPECT_EQ(countOf(server, "POST /token"), done + 1);
    EXPECT_EQ(countOf(server, "GET /auth"), 2 * (done + 1));
    screen.hide();
    EXPECT_TRUE(runUntil([&] { return engineIn(screen) == nullptr; })) << "who is signed in needs no page";
  }
}

TEST_F(SignInTest, TheWindowClosesBeforeTheExchangeIsAnswered) {
  LoginWindowController window(deployment, defaults);
  window.close();
  window.showWindow();
  ASSERT_TRUE(runUntil([&] { return !window.isVisible(); }));
  EXPECT_FALSE(signedIn());
  EXPECT_TRUE(runUntil([&] { return engineIn(window) == nullptr; })) << "a closed window holds no page";
  tokensMayGo.count_down();
  ASSERT_TRUE(runUntil([&] { return signedIn(); }));
  EXPECT_EQ(exchanges(), 1);
}

TEST_F(SignInTest, TheWindowStaysOpenAndShowsNoErrorPageWithoutACode) {
  answerFirst(page("<script>location.href = 'http://localhost:1/?denied'</script>"));
  LoginWindowController window(deployment, defaults);
  std::vector<bool> loads;
  window.showWindow();
  auto *view = window.findChild<WebView *>();
  QObject::connect(view, &WebView::loadFinished, &window, [&](bool loaded) { loads.push_back(loaded); });
  ASSERT_TRUE(runUntil([&] { return !loads.empty() && !loads.back(); }));
  EXPECT_TRUE(window.isVisible());
  EXPECT_EQ(countOf(server, "POST /token"), 0);
  EXPECT_THAT(engineIn(window)->property("title").toString().toStdString(),
              testing::Not(testing::HasSubstr("localhost")));
}

}  // namespace
}  // namespace velmora
