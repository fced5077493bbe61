// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "auth/LoginNavigation.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

TEST(LoginNavigationTest, TakesTheCodeOutOfARedirectAsItStands) {
  constexpr auto elsewhere = LoginNavigation::elsewhere;
  constexpr auto withCode = LoginNavigation::redirectWithCode;
  const struct {
    const char *request;
    LoginNavigation navigation;
    const char *code = "";
  } cases[] = {
      {"http://127.0.0.1:8080/auth?redirect_uri=http://localhost/", elsewhere},
      {"https://localhost/?code=ABC", elsewhere},
      {"http://localhost/?code=4%2FA%3D%C3%BC+%20&scope=X#f", withCode, "4%2FA%3D%C3%BC+%20&scope=X#f"},
      {"http://localhost:8080/?state=1&code=ABC", withCode, "1&code=ABC"},
      {"http://localhost/?denied", LoginNavigation::redirect}};
  for (const auto &c : cases) {
    std::string taken;
    const auto take = [&](const QString &code) { taken += code.toStdString(); };
    const QUrl request(QString::fromLatin1(c.request));
    EXPECT_EQ(followLoginNavigation(request, QStringLiteral("http://localhost"), take), c.navigation)
        << c.request;
    EXPECT_EQ(followLoginNavigation(request, QString(), take), elsewhere) << "a deployment without a prefix";
    EXPECT_EQ(taken, c.code) << c.request;
  }
}

}  // namespace
}  // namespace velmora
