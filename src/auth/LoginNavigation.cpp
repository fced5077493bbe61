// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "auth/LoginNavigation.h"

#include "foundation/fatal.h"

namespace velmora {

LoginNavigation followLoginNavigation(const QUrl &request, const QString &loopbackPrefix,
                                      const std::function<void(const QString &code)> &requestToken) {
  const QString address = QString::fromLatin1(request.toEncoded());
  if (loopbackPrefix.isEmpty() || !address.startsWith(loopbackPrefix)) return LoginNavigation::elsewhere;
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
