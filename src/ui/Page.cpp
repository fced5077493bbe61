// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "ui/Page.h"

#include <QFile>

#include "ui/Translations.h"

namespace velmora {

QUrl pageNamed(const QString &name) {
  for (const QString &ending : {QLatin1Char('_') + interfaceLanguage(), QString()}) {
    const QString path = QStringLiteral(":/pages/%1%2.html").arg(name, ending);
    if (QFile::exists(path)) return QUrl(QStringLiteral("qrc") + path);
  }
  return {};
}

}  // namespace velmora
