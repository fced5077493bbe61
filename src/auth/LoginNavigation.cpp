// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "auth/LoginNavigation.h"

#include "foundation/fatal.h"

namespace velmora {

namespace {

QString absoluteString(const QUrl &url) { return QString::fromLatin1(url.toEncoded()); }

}  // namespace

bool isLoginRedirect(const QUrl &request, const QString &loopbackPrefix) {
  return !loopbackPrefix.isEmpty() && absoluteString(request).startsWith(loopbackPrefix);
}

LoginNavigation followLoginNavigation(const QUrl &request, const QString &loopbackPrefix,
                                      const std::function<void(const QString &code)> &requestToken) {
  if (!isLoginRedirect(request, loopbackPrefix)) return LoginNavigation::elsewhere;
  const QString address = absoluteString(request);
  const qsizetype equals = address.indexOf(QLatin1Char('='));
  if (equals < 0) return LoginNavigation::redirect;
  requestToken(address.mid(equals + 1));
  return LoginNavigation::redirectWithCode;
}

QUrl loginPage(const QString &loginUrl) {
  QUrl page(loginUrl);
  if (!page.isValid()) fatal("The sign-in address is no URL");
  return page;
}

}  // namespace velmora
