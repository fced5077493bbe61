// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QVariant>
#include <QWidget>
#include <filesystem>
#include <memory>

#include "auth/Authenticator.h"
#include "platform/ViewController.h"
#include "platform/web/WebView.h"

namespace Ui {
class LoginView;
}

namespace velmora {

/// The sign-in screen: the provider's pages, and the consent page afresh whenever they lead back here. That
/// the user is signed in shows in the settings only. Main thread.
class LoginViewController : public QWidget,
                            public ViewController,
                            private WebFrameLoadDelegate,
                            private WebPolicyDelegate {
  Q_OBJECT

 public:
  /// `defaults` outlives the screen. Fatal without a client description, as `Authenticator` is.
  LoginViewController(const Deployment &deployment, UserDefaults &defaults, QWidget *parent = nullptr);
  ~LoginViewController() override;

  /// Sets up what is seen, the first time, with the first page of the sign-in.
  [[nodiscard]] QWidget &view() override;

  /// Shows the first page of the sign-in.
  void loadLoginUrl();

  /// Whatever the owner wants to keep with the screen.
  [[nodiscard]] const QVariant &representedObject() const { return m_representedObject; }
  void setRepresentedObject(const QVariant &object) { m_representedObject = object; }

 protected:
  void hideEvent(QHideEvent *event) override;

 private:
  void viewDidLoad();
  void didFailLoad(WebView &webView, const QUrl &url) override;
  void decidePolicyForNavigationAction(WebView &webView, WebNavigationType type, const QUrl &request,
                                       WebPolicyListener &listener) override;

  QString m_loopbackPrefix;
  UserDefaults &m_defaults;
  Authenticator m_authenticator;
  QVariant m_representedObject;
  std::filesystem::path m_roots;
  std::unique_ptr<Ui::LoginView> m_ui;  // null until it is loaded
};

}  // namespace velmora
