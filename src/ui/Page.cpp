// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "ui/Page.h"

#include <QFile>

namespace velmora {

QUrl pageNamed(const QString &name) {
  const QString path = QStringLiteral("/pages/%1.html").arg(name);
  return QFile::exists(QLatin1Char(':') + path) ? QUrl(QStringLiteral("qrc") + QLatin1Char(':') + path)
                                                : QUrl();
}

}  // namespace velmora
