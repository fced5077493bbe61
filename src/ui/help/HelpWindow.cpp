// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "ui/help/HelpWindow.h"

#include <QShortcut>

#include "platform/Workspace.h"
#include "platform/window/WindowSize.h"
#include "ui/Page.h"
#include "ui_HelpWindow.h"

namespace velmora {

HelpWindow::HelpWindow() {
  // A status-bar program goes on without a window.
  setAttribute(Qt::WA_QuitOnClose, false);
}

HelpWindow::~HelpWindow() = default;

void HelpWindow::showWindow() {
  if (!m_ui) {
    m_ui = std::make_unique<Ui::HelpWindow>();
    m_ui->setupUi(this);
    boundToScreen(*this);
    windowDidLoad();
  } else {
    show();
    raise();
    activateWindow();
  }
}

void HelpWindow::windowDidLoad() {
  setWindowFlag(Qt::WindowStaysOnTopHint);
  // A page lets no keys through to its window.
  for (const auto keys : {QKeySequence::Cancel, QKeySequence::Close}) {
    connect(new QShortcut(keys, this), &QShortcut::activated, this, &QWidget::close);
  }
  show();
  raise();
  activateWindow();
  m_ui->helpWebView->setFocus();
  m_ui->helpWebView->setPolicyDelegate(this);
  if (const QUrl page = pageNamed(QStringLiteral("Help")); page.isValid()) m_ui->helpWebView->load(page);
}

void HelpWindow::closeEvent(QCloseEvent *event) {
  QWidget::closeEvent(event);
  // Nobody reads it all the time, and a page takes hundreds of megabytes.
  m_ui->helpWebView->unload();
}

void HelpWindow::decidePolicyForNavigationAction(WebView &, WebNavigationType type, const QUrl &request,
                                                 WebPolicyListener &listener) {
  if (type == WebNavigationType::linkClicked) {
    openUrl(request);
    listener.ignore();
  } else {
    listener.use();
  }
}

}  // namespace velmora
