// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>
#include <memory>

#include "platform/ViewController.h"

namespace Ui {
class LoadingView;
}

namespace velmora {

/// What the popover shows until it is known who is signed in. Main thread.
class LoadingViewController : public ViewController {
 public:
  LoadingViewController();
  ~LoadingViewController() override;

  [[nodiscard]] QWidget &view() override;
  /// Why it takes so long; empty when all is well.
  void setProblem(const QString &problem);

 private:
  QString m_problem;
  std::unique_ptr<QWidget> m_view;  // null until it is asked for
  std::unique_ptr<Ui::LoadingView> m_ui;
};

}  // namespace velmora
