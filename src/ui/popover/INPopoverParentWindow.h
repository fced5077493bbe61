// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>

namespace velmora {

/// A window that counts as the one in use while a popover of its own has the focus. Main thread.
class INPopoverParentWindow : public QWidget {
  Q_OBJECT

 public:
  using QWidget::QWidget;

  /// Also while a popover is its child and the application is active.
  [[nodiscard]] bool isKeyWindow() const;
  /// Only with the focus in the window itself.
  [[nodiscard]] bool isReallyKeyWindow() const { return isActiveWindow(); }
};

}  // namespace velmora
