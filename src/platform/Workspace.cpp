// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/Workspace.h"

#include <QDesktopServices>
#include <QStringList>
#include <QUrl>
#include <utility>

#include "foundation/Log.h"

namespace velmora {
namespace {

std::function<bool(const QUrl &)> &openerInPlace() {
  static std::function<bool(const QUrl &)> opener;
  return opener;
}

/// Addresses come from pages and from a deployment: a local file could be a program that is started.
bool mayBeOpened(const QUrl &url) {
  static const QStringList kSchemes{QStringLiteral("http"), QStringLiteral("https"),
                                    QStringLiteral("mailto")};
  return url.isValid() && kSchemes.contains(url.scheme());
}

bool open(const QUrl &url) {
  if (const auto opener = openerInPlace()) return opener(url);
  return QDesktopServices::openUrl(url);
}

}  // namespace

bool openUrl(const QUrl &url) {
  if (mayBeOpened(url) && open(url)) return true;
  log("Link error: ", url.toDisplayString().toStdString(), " cannot be opened");
  return false;
}

void setUrlOpener(std::function<bool(const QUrl &)> opener) { openerInPlace() = std::move(opener); }

}  // namespace velmora
