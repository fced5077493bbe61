// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "auth/LoginWindowController.h"

#include "auth/LoginNavigation.h"
#include "platform/window/WindowSize.h"
#include "ui_LoginWindowController.h"

namespace velmora {

LoginWindowController::LoginWindowController(const Deployment &deployment, UserDefaults &defaults)
    : m_authenticator(deployment, defaults),
      m_loopbackPrefix(QString::fromStdString(deployment.loopbackPrefix)),
      m_roots(deployment.resource("roots", "pem")) {
  // A status-bar program goes on without a window.
  setAttribute(Qt::WA_QuitOnClose, false);
}

LoginWindowController::~LoginWindowController() = default;

void LoginWindowController::showWindow() {
  if (!m_ui) {
    m_ui = std::make_unique<Ui::LoginWindowController>();
    m_ui->setupUi(this);
    boundToScreen(*this);
    windowDidLoad();
  } else {
    show();
    raise();
    activateWindow();
  }
}

void LoginWindowController::windowDidLoad() {
  m_ui->loginWebView->setTrustedRoots(m_roots);
  m_ui->loginWebView->setFrameLoadDelegate(this);
  m_ui->loginWebView->setPolicyDelegate(this);
  setWindowFlag(Qt::WindowStaysOnTopHint);
  show();
  raise();
  activateWindow();
  m_ui->loginWebView->setFocus();
  m_ui->loginWebView->load(loginPage(m_authenticator.loginUrl()));
}

void LoginWindowController::closeEvent(QCloseEvent *event) {
  QWidget::closeEvent(event);
  if (m_ui) m_ui->loginWebView->unload();
}

void LoginWindowController::didFailLoad(WebView &webView, const QUrl &url) {
  // Nobody needs to listen where the sign-in ends.
  if (!isLoginRedirect(url, m_loopbackPrefix)) webView.showFailure();
}

void LoginWindowController::decidePolicyForNavigationAction(WebView &, WebNavigationType, const QUrl &request,
                                                            WebPolicyListener &listener) {
  const auto requestToken = [this](const QString &code) { m_authenticator.requestToken(code); };
  const auto navigation = followLoginNavigation(request, m_loopbackPrefix, requestToken);
  listener.use();
  if (navigation == LoginNavigation::redirectWithCode) close();
}

}  // namespace velmora
