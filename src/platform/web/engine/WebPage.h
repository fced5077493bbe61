// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWebEnginePage>

#include "platform/web/WebEngine.h"

class QWebEngineCertificateError;

namespace velmora {

/// Whether a page is one of the program's own, which it alone can show.
[[nodiscard]] bool isLocal(const QUrl &url);

/// A page that asks its client where it may go, and gets nothing of the desktop.
class WebPage : public QWebEnginePage {
 public:
  WebPage(QWebEngineProfile &profile, QString trustedRoots, WebEngineClient &client);

 protected:
  bool acceptNavigationRequest(const QUrl &target, NavigationType type, bool isMainFrame) override;
  QStringList chooseFiles(FileSelectionMode mode, const QStringList &oldFiles,
                          const QStringList &acceptedMimeTypes) override;
  void javaScriptConsoleMessage(JavaScriptConsoleMessageLevel level, const QString &message, int lineNumber,
                                const QString &sourceID) override;

 private:
  void decideAbout(QWebEngineCertificateError error) const;

  QString m_trustedRoots;
  WebEngineClient &m_client;
};

}  // namespace velmora
