// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "ui/popover/INPopoverParentWindow.h"

#include <QApplication>
#include <algorithm>

#include "ui/popover/INPopoverWindow.h"

namespace velmora {

bool INPopoverParentWindow::isKeyWindow() const {
  if (isReallyKeyWindow()) return true;
  if (QGuiApplication::applicationState() != Qt::ApplicationActive) return false;
  const QWidgetList windows = QApplication::topLevelWidgets();
  return std::any_of(windows.begin(), windows.end(), [this](const QWidget *window) {
    const auto *popover = qobject_cast<const INPopoverWindow *>(window);
    return popover && popover->parentWindow() == this;
  });
}

}  // namespace velmora
