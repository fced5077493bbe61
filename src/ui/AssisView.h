// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>

namespace velmora {

/// The plain white backdrop of the assistant's window. Main thread.
class AssisView : public QWidget {
  Q_OBJECT

 public:
  using QWidget::QWidget;

 protected:
  void paintEvent(QPaintEvent *event) override;
};

}  // namespace velmora
