// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "app/LoadingViewController.h"

#include "ui_LoadingView.h"

namespace velmora {

LoadingViewController::LoadingViewController() = default;

LoadingViewController::~LoadingViewController() = default;

QWidget &LoadingViewController::view() {
  if (!m_view) {
    m_view = std::make_unique<QWidget>();
    m_ui = std::make_unique<Ui::LoadingView>();
    m_ui->setupUi(m_view.get());
    setProblem(m_problem);
  }
  return *m_view;
}

void LoadingViewController::setProblem(const QString &problem) {
  m_problem = problem;
  if (!m_ui) return;
  m_ui->progressBar->setVisible(problem.isEmpty());
  m_ui->loadingLabel->setText(
      problem.isEmpty() ? QCoreApplication::translate("LoadingView", "Velmora is getting ready…") : problem);
}

}  // namespace velmora
