// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "auth/Authenticator.h"

#include <gmock/gmock.h>

#include <optional>

#include "auth/TokenStore.h"
#include "support/CapturedLog.h"
#include "support/EventLoop.h"
#include "support/HttpServer.h"
#include "support/OAuthDeployment.h"

namespace velmora {
namespace {

using testing::HasSubstr;
using tests::HttpAnswer;
using tests::HttpRequest;
using tests::HttpServer;
using tests::runUntil;

constexpr auto kClient = "client_id=me%20%26%20you%2B1&client_secret=s%3D%C3%BC%2F&";

struct AuthenticatorTest : testing::Test {
  bool hasLogged(std::string_view label) const { return log.count(label) > 0; }
  void store(QLatin1String key, const QVariant &value) { defaults.setObject(value, key); }

  tests::TemporaryFolder folder;
  UserDefaults defaults;
  tests::CapturedLog log;
  HttpAnswer answer{.body = "{}"};
  HttpServer server{[this](const HttpRequest &) { return answer; }};
  Deployment deployment = tests::oauthDeployment(folder, "http://127.0.0.1/auth", server.url("/token"));
  Authenticator authenticator{deployment, defaults};
};

TEST_F(AuthenticatorTest, ACodeIsSentInTheseBytesAndAnyJsonAnswerSignsInAndIsStored) {
  struct Case {
    HttpAnswer answer;
    bool expires;
    QVariant access;
    QVariant refresh;
  };
  const QVariant a = QStringLiteral("A-hush");
  const QVariant r = QStringLiteral("R-hush");
  const Case cases[] = {
      {{.body = R"({"access_token": "A-hush", "expires_in": 3600.0, "refresh_token": "R-hush"})"},
       true,
       a,
       r},
      {{.body = R"({"access_token": 7, "expires_in": "3600", "refresh_token": null})"}, false, {}, {}},
      {{.body = R"({"access_token": "A-hush", "expires_in": 9223372036854775808})"}, false, a, {}},
      {{.status = 400, .body = R"({"error": "invalid_grant"})"}, false, {}, {}},
  };
  for (const Case &c : cases) {
    authenticator.logout();
    for (const auto key : {kAuthTokenKey, kRefreshTokenKey, kExpiresInKey}) store(key, {});
    answer = c.answer;
    bool storedFirst = true;
    const auto watch = defaults.addObserver(
        kLoggedInKey, UserDefaults::Notify::newOnly,
        [&](const QVariant &) { storedFirst &= defaults.objectForKey(kAuthTokenKey) == c.access; });
    const auto before = QDateTime::currentDateTimeUtc();
    authenticator.requestToken(QStringLiteral("4/a+b=c d&x=\u00fc%20"));
    ASSERT_TRUE(runUntil([&] { return defaults.boolForKey(kLoggedInKey); })) << c.answer.body;
    const HttpRequest request = server.requests().values().back();
    EXPECT_EQ(request.method + ' ' + request.target, "POST /token");
    EXPECT_EQ(request.headers.at("Content-Type"), "application/x-www-form-urlencoded; charset=utf-8");
    EXPECT_EQ(request.body, std::string(kClient) +
                                "code=4%2Fa%2Bb%3Dc%20d%26x%3D%C3%BC%2520&grant_type=authorization_code&"
                                "redirect_uri=http%3A%2F%2Flocalhost%2F");
    EXPECT_TRUE(storedFirst) << "whoever hears of the sign-in finds the token";
    EXPECT_EQ(defaults.objectForKey(kAuthTokenKey), c.access) << c.answer.body;
    EXPECT_EQ(defaults.objectForKey(kRefreshTokenKey), c.refresh) << c.answer.body;
    const QDateTime expiry = defaults.dateForKey(kExpiresInKey);
    ASSERT_EQ(expiry.isValid(), c.expires) << c.answer.body;
    if (c.expires) {
      EXPECT_GE(expiry, before.addSecs(3600));
      EXPECT_LE(expiry, QDateTime::currentDateTimeUtc().addSecs(3600));
    }
  }
  EXPECT_TRUE(hasLogged("Token store: expires_in is held, access_token is not held, refresh_token is held"));
  for (const auto &line : log.lines()) EXPECT_THAT(line, testing::Not(HasSubstr("hush")));
}

TEST_F(AuthenticatorTest, WhatIsNoAnswerIsNoSignInAndLeavesTheStoreAlone) {
  answer.body = "hush";
  authenticator.requestToken(QStringLiteral("code-hush"));
  ASSERT_TRUE(runUntil([&] { return hasLogged("Token request error: the answer is no JSON"); }));
  std::optional<bool> refreshed;
  authenticator.refreshToken([&](bool value) { refreshed = value; });
  ASSERT_TRUE(runUntil([&] { return refreshed.has_value(); }));
  EXPECT_FALSE(*refreshed);
  EXPECT_TRUE(hasLogged("Token refresh error: "));
  EXPECT_FALSE(defaults.objectForKey(kLoggedInKey).isValid());
  for (const auto &line : log.lines()) EXPECT_THAT(line, testing::Not(HasSubstr("hush")));
}

TEST_F(AuthenticatorTest, AskedOfTheSignInItRefreshesWhenTheTimeIsOverOrUnknownAndStoresNothing) {
  struct Case {
    QVariant expiry;
    bool loggedIn;
    bool signedIn;
    bool asks;
  };
  answer.body = R"({"access_token": "new", "expires_in": 3600})";
  store(kAuthTokenKey, QStringLiteral("old"));
  store(kRefreshTokenKey, QStringLiteral("1/+ü"));
  const auto now = QDateTime::currentDateTimeUtc();
  const Case cases[] = {{now.addSecs(60), false, false, false},
                        {now.addSecs(60), true, true, false},
                        {now.addSecs(-1), true, true, true},
                        {{}, true, true, true}};
  for (const Case &c : cases) {
    store(kLoggedInKey, c.loggedIn);
    store(kExpiresInKey, c.expiry);
    const auto before = server.requests().values().size();
    std::optional<bool> signedIn;
    authenticator.checkLoginStatus([&](bool value) { signedIn = value; });
    EXPECT_EQ(signedIn.has_value(), !c.asks) << "what needs no request is answered at once";
    ASSERT_TRUE(runUntil([&] { return signedIn.has_value(); }));
    EXPECT_EQ(*signedIn, c.signedIn);
    const auto requests = server.requests().values();
    EXPECT_EQ(requests.size() - before, c.asks ? 1U : 0U);
    if (c.asks) {
      EXPECT_EQ(requests.back().body,
                std::string(kClient) + "grant_type=refresh_token&refresh_token=1%2F%2B%C3%BC");
    }
    EXPECT_EQ(defaults.stringForKey(kAuthTokenKey), QStringLiteral("old"));
    EXPECT_EQ(defaults.objectForKey(kExpiresInKey), c.expiry);
  }
}

}  // namespace
}  // namespace velmora
