// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Addresses that the pages of a sign-in lead to, and the loopback prefix of a deployment.
#include <QUrl>

#include "auth/LoginNavigation.h"
#include "fuzz/Input.h"

namespace velmora {

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  fuzz::Input input(data, size);
  const bool ownPrefix = input.byte() % 4 == 0;
  const QString prefix = ownPrefix ? QString::fromUtf8(QByteArray::fromStdString(input.piece()))
                                   : QStringLiteral("http://localhost");
  const QString text = QString::fromUtf8(QByteArray::fromStdString(input.rest()));
  for (const auto mode : {QUrl::TolerantMode, QUrl::StrictMode}) {
    const QUrl address(text, mode);
    int codes = 0;
    QString code;
    const LoginNavigation kind = followLoginNavigation(address, prefix, [&](const QString &found) {
      ++codes;
      code = found;
    });
    fuzz::require((kind != LoginNavigation::elsewhere) == isLoginRedirect(address, prefix),
                  "what leads back to the program is a redirect");
    fuzz::require(codes == (kind == LoginNavigation::redirectWithCode ? 1 : 0), "a code is told once");
    const QString whole = QString::fromLatin1(address.toEncoded());
    fuzz::require(kind == LoginNavigation::elsewhere || (!prefix.isEmpty() && whole.startsWith(prefix)),
                  "a redirect begins with the prefix");
    if (codes == 0) continue;
    fuzz::require(whole.endsWith(QLatin1Char('=') + code), "a code is what follows an equals sign");
    fuzz::require(whole.indexOf(QLatin1Char('=')) == whole.size() - code.size() - 1, "the first one");
  }
  return 0;
}

}  // namespace velmora
