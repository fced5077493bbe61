// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "auth/LoginViewController.h"

#include "auth/LoginNavigation.h"
#include "auth/TokenStore.h"
#include "ui_LoginView.h"

namespace velmora {

LoginViewController::LoginViewController(const Deployment &deployment, UserDefaults &defaults,
                                         QWidget *parent)
    : QWidget(parent),
      m_loopbackPrefix(QString::fromStdString(deployment.loopbackPrefix)),
      m_defaults(defaults),
      m_authenticator(deployment, defaults),
      m_roots(deployment.resource("roots", "pem")) {}

LoginViewController::~LoginViewController() = default;

QWidget &LoginViewController::view() {
  if (!m_ui) {
    m_ui = std::make_unique<Ui::LoginView>();
    m_ui->setupUi(this);
    m_ui->webView2->setTrustedRoots(m_roots);
    viewDidLoad();
  }
  return *this;
}

void LoginViewController::viewDidLoad() {
  m_ui->webView2->setFrameLoadDelegate(this);
  m_ui->webView2->setPolicyDelegate(this);
  m_ui->webView2->setFocus();
  loadLoginUrl();
}

void LoginViewController::loadLoginUrl() {
  (void)view();
  m_ui->webView2->load(loginPage(m_authenticator.loginUrl()));
}

void LoginViewController::hideEvent(QHideEvent *event) {
  QWidget::hideEvent(event);
  // Who is signed in does not come back soon, and a page takes hundreds of megabytes.
  if (m_ui && m_defaults.boolForKey(kLoggedInKey)) m_ui->webView2->unload();
}

void LoginViewController::didFailLoad(WebView &webView, const QUrl &url) {
  // Nobody needs to listen where the sign-in ends.
  if (!isLoginRedirect(url, m_loopbackPrefix)) webView.showFailure();
}

void LoginViewController::decidePolicyForNavigationAction(WebView &, WebNavigationType, const QUrl &request,
                                                          WebPolicyListener &listener) {
  const auto requestToken = [this](const QString &code) { m_authenticator.requestToken(code); };
  if (followLoginNavigation(request, m_loopbackPrefix, requestToken) != LoginNavigation::elsewhere) {
    loadLoginUrl();
  }
  listener.use();
}

}  // namespace velmora
