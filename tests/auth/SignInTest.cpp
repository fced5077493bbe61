// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The sign-in screen and window with the real web engine, at a provider in this process.
#include <gmock/gmock.h>

#include <atomic>
#include <future>
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

constexpr auto kTokens = R"({"access_token": "A", "expires_in": 3600, "refresh_token": "R"})";

/// Sends the first visitor to the program in the way that a test chooses, and shows later ones a page.
struct SignInTest : testing::Test {
  HttpAnswer answer(const HttpRequest &request) {
    if (request.target == "/token") {
      tokensMayGo.get_future().wait();
      return {.body = kTokens};
    }
    if (request.target == "/consent") return {.status = 302, .headers = {{"Location", back}}};
    if (request.target == "/favicon.ico") return {.status = 404};
    const std::lock_guard lock(mutex);
    return visits++ == 0 ? first : page("Do you agree?", "consent");
  }
  void answerFirst(HttpAnswer wanted) {
    const std::lock_guard lock(mutex);
    first = std::move(wanted);
  }
  /// The number of exchanges, and what the code was.
  std::vector<std::string> codes() const {
    std::vector<std::string> found;
    for (const auto &request : server.requests().values()) {
      if (request.target != "/token") continue;
      const auto begin = request.body.find("&code=") + 6;
      found.push_back(request.body.substr(begin, request.body.find('&', begin) - begin));
    }
    return found;
  }
  bool signedIn() const { return defaults.boolForKey(kLoggedInKey); }

  std::string back = "http://localhost/?code=ABC";
  std::mutex mutex;  // guards what the first visitor gets
  HttpAnswer first = {.status = 302, .headers = {{"Location", back}}};
  std::atomic<int> visits = 0;
  std::promise<void> tokensMayGo;
  tests::TemporaryFolder folder;
  UserDefaults defaults;
  tests::HttpServer server{[this](const HttpRequest &request) { return answer(request); }};
  Deployment deployment = tests::oauthDeployment(folder, server.url("/auth"), server.url("/token"));
};

struct Way {
  const char *name;
  HttpAnswer first;
};

class EachWayBack : public SignInTest, public testing::WithParamInterface<Way> {};

TEST_P(EachWayBack, IsOneExchangeAndShowsTheConsentPageAfresh) {
  answerFirst(GetParam().first);
  tokensMayGo.set_value();
  LoginViewController screen(deployment, defaults);
  const auto title = [&] { return engineIn(screen)->property("title").toString(); };
  EXPECT_EQ(engineIn(screen), nullptr) << "nothing is loaded before it is shown";
  screen.view().show();
  ASSERT_TRUE(runUntil([&] { return signedIn() && title() == QStringLiteral("consent"); }));
  EXPECT_THAT(codes(), testing::ElementsAre("ABC"));
  EXPECT_EQ(countOf(server, "GET /auth"), 2);
  EXPECT_EQ(defaults.stringForKey(kAuthTokenKey), QStringLiteral("A"));
  screen.hide();
  EXPECT_TRUE(runUntil([&] { return engineIn(screen) == nullptr; })) << "who is signed in needs no page";
}

INSTANTIATE_TEST_SUITE_P(
    SignIn, EachWayBack,
    testing::Values(
        Way{"Redirect", {.status = 302, .headers = {{"Location", "http://localhost/?code=ABC"}}}},
        Way{"Link", page("<a id=x href='http://localhost/?code=ABC'>on</a><script>x.click()</script>")},
        Way{"Script", page("<script>location.replace('http://localhost/?code=ABC')</script>")},
        Way{"Refresh", page("<meta http-equiv=refresh content='0; url=http://localhost/?code=ABC'>")},
        Way{"FormPost", page("<form id=x method=post action=/consent></form><script>x.submit()</script>")},
        Way{"FormToTheProgram", page("<form id=x action=http://localhost/><input name=code value=ABC></form>"
                                     "<script>x.submit()</script>")}),
    [](const auto &each) { return each.param.name; });

TEST_F(SignInTest, ARedirectWithoutACodeShowsTheScreensPageAfreshOnly) {
  answerFirst({.status = 302, .headers = {{"Location", "http://localhost/?denied"}}});
  LoginViewController screen(deployment, defaults);
  screen.view().show();
  EXPECT_TRUE(runUntil([&] { return visits == 2; }));
  EXPECT_TRUE(codes().empty());
}

TEST_F(SignInTest, TheWindowClosesBeforeTheExchangeIsAnswered) {
  LoginWindowController window(deployment, defaults);
  window.close();
  window.showWindow();
  EXPECT_TRUE(window.windowFlags() & Qt::WindowStaysOnTopHint);
  ASSERT_TRUE(runUntil([&] { return !window.isVisible(); }));
  EXPECT_FALSE(signedIn());
  EXPECT_TRUE(runUntil([&] { return engineIn(window) == nullptr; })) << "a closed window holds no page";
  tokensMayGo.set_value();
  ASSERT_TRUE(runUntil([&] { return signedIn(); }));
  EXPECT_THAT(codes(), testing::ElementsAre("ABC"));
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
  EXPECT_TRUE(codes().empty());
  EXPECT_THAT(engineIn(window)->property("title").toString().toStdString(),
              testing::Not(testing::HasSubstr("localhost")));
}

}  // namespace
}  // namespace velmora
