// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The sign-in screen and window with the real web engine, at a provider in this process.
#include <gmock/gmock.h>

#include <array>
#include <atomic>
#include <latch>

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

/// Sends every other visitor back to the program, by one way after the other, and shows the rest a page.
struct SignInTest : testing::Test {
  HttpAnswer answer(const HttpRequest &request) {
    if (request.target == "/token") {
      tokensMayGo.wait();
      return {.body = R"({"access_token": "A", "expires_in": 3600, "refresh_token": "R"})"};
    }
    if (request.target == "/consent") return ways[0];
    if (!request.target.starts_with("/auth")) return {.status = 404};
    const std::size_t visit = visits++;
    return visit % 2 == 0 ? ways.at(visit / 2) : page("Do you agree?", "consent");
  }
  bool signedIn() const { return defaults.boolForKey(kLoggedInKey); }

  const std::array<HttpAnswer, 3> ways{
      HttpAnswer{.status = 302, .headers = {{"Location", "http://localhost/?code=ABC"}}},
      page("<a id=x href='http://localhost/?code=ABC'>on</a><script>x.click()</script>"),
      page("<form id=x method=post action=/consent></form><script>x.submit()</script>")};
  std::atomic<std::size_t> visits = 0;
  std::latch tokensMayGo{1};
  tests::TemporaryFolder folder;
  UserDefaults defaults;
  tests::HttpServer server{[this](const HttpRequest &request) { return answer(request); }};
  Deployment deployment = tests::oauthDeployment(folder, server.url("/auth"), server.url("/token"));
};

TEST_F(SignInTest, EachWayBackIsOneExchangeAndShowsTheConsentPageAfresh) {
  tokensMayGo.count_down();
  for (std::ptrdiff_t done = 0; done < std::ssize(ways); ++done) {
    defaults.setObject(false, kLoggedInKey);
    LoginViewController screen(deployment, defaults);
    const auto title = [&] { return engineIn(screen)->property("title").toString(); };
    EXPECT_EQ(engineIn(screen), nullptr) << "nothing is loaded before it is shown";
    screen.view().show();
    ASSERT_TRUE(runUntil([&] { return signedIn() && title() == QStringLiteral("consent"); })) << done;
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
  EXPECT_EQ(countOf(server, "POST /token"), 1);
}

}  // namespace
}  // namespace velmora
