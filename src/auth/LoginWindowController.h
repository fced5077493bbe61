// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>
#include <memory>

#include "auth/Authenticator.h"
#include "platform/web/WebView.h"

namespace Ui {
class LoginWindowController;
}

namespace velmora {

/// The sign-in in a window of its own, above the others, which closes as soon as a code is there. That the
/// user is signed in shows in the settings only. Main thread.
class LoginWindowController : public QWidget, private WebFrameLoadDelegate, private WebPolicyDelegate {
  Q_OBJECT

 public:
  /// `defaults` outlives the window. Fatal without a client description, as `Authenticator` is.
  LoginWindowController(const Deployment &deployment, UserDefaults &defaults);
  ~LoginWindowController() override;

  /// Opens the window with the first page of the sign-in, or brings it to the front.
  void showWindow();

 protected:
  void closeEvent(QCloseEvent *event) override;

 private:
  void windowDidLoad();
  void didFailLoad(WebView &webView, const QUrl &url) override;
  void decidePolicyForNavigationAction(WebView &webView, WebNavigationType type, const QUrl &request,
                                       WebPolicyListener &listener) override;

  Authenticator m_authenticator;
  QString m_loopbackPrefix;
  std::filesystem::path m_roots;
  std::unique_ptr<Ui::LoginWindowController> m_ui;  // null until the window is first shown
};

}  // namespace velmora
