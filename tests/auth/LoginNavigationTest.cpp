// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "auth/LoginNavigation.h"

#include <gmock/gmock.h>

#include <optional>

namespace velmora {
namespace {

TEST(LoginNavigationTest, TakesTheCodeOutOfARedirectAsItStands) {
  struct Case {
    const char *request;
    std::optional<const char *> code;
    LoginNavigation navigation;
  };
  constexpr auto elsewhere = LoginNavigation::elsewhere;
  constexpr auto redirect = LoginNavigation::redirect;
  constexpr auto withCode = LoginNavigation::redirectWithCode;
  const Case cases[] = {
      {"http://127.0.0.1:8080/auth?redirect_uri=http://localhost/", {}, elsewhere},
      {"https://localhost/?code=ABC", {}, elsewhere},
      {"", {}, elsewhere},
      {"http://localhost/?code=ABC", "ABC", withCode},
      {"http://localhost/?code=ABC&scope=X", "ABC&scope=X", withCode},
      {"http://localhost/?code=4%2FA%3D%C3%BC+%20#f", "4%2FA%3D%C3%BC+%20#f", withCode},
      {"http://localhost/?code=", "", withCode},
      {"http://localhost:8080/?state=1&code=ABC", "1&code=ABC", withCode},
      {"http://localhost/?error=access_denied", "access_denied", withCode},
      {"http://localhost/", {}, redirect},
      {"http://localhost", {}, redirect},
      {"http://localhost/?denied", {}, redirect},
  };
  for (const Case &c : cases) {
    std::optional<QString> code;
    const auto take = [&](const QString &value) {
      EXPECT_FALSE(code) << "once";
      code = value;
    };
    const QUrl request(QString::fromLatin1(c.request));
    EXPECT_EQ(followLoginNavigation(request, QStringLiteral("http://localhost"), take), c.navigation)
        << c.request;
    EXPECT_EQ(code, c.code ? std::optional(QString::fromLatin1(*c.code)) : std::nullopt) << c.request;
    EXPECT_EQ(followLoginNavigation(request, QString(), take), elsewhere) << "a deployment without a prefix";
  }
}

TEST(LoginNavigationTest, ASignInAddressThatIsNoUrlIsFatal) {
  EXPECT_EQ(loginPage(QStringLiteral("http://h/?scope=a b")).toEncoded(), "http://h/?scope=a%20b");
  for (const char *address : {"", "http://h:port/"}) {
    EXPECT_DEATH((void)loginPage(QString::fromLatin1(address)), "sign-in address") << address;
  }
}

}  // namespace
}  // namespace velmora
