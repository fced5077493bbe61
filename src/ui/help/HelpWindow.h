// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>
#include <memory>

#include "platform/web/WebView.h"

namespace Ui {
class HelpWindow;
}

namespace velmora {

/// The help, above all other windows; its links open in the user's browser. Main thread.
class HelpWindow : public QWidget, private WebPolicyDelegate {
  Q_OBJECT

 public:
  HelpWindow();
  ~HelpWindow() override;

  /// Opens the window, or brings it to the front.
  void showWindow();

 protected:
  void closeEvent(QCloseEvent *event) override;

 private:
  void windowDidLoad();
  void decidePolicyForNavigationAction(WebView &webView, WebNavigationType type, const QUrl &request,
                                       WebPolicyListener &listener) override;

  std::unique_ptr<Ui::HelpWindow> m_ui;  // null until the window is first shown
};

}  // namespace velmora
