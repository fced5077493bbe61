// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "ui/CustomPlotAccessible.h"

#include "ui/CustomPlot.h"

namespace velmora {

void CustomPlotAccessible::install() {
  static const bool installed = [] {
    QAccessible::installFactory([](const QString &, QObject *object) -> QAccessibleInterface * {
      auto *plot = qobject_cast<CustomPlot *>(object);
      return plot != nullptr ? new CustomPlotAccessible(*plot) : nullptr;
    });
    return true;
  }();
  Q_UNUSED(installed)
}

CustomPlotAccessible::CustomPlotAccessible(CustomPlot &plot)
    : QAccessibleWidget(&plot, QAccessible::Button) {}

QStringList CustomPlotAccessible::actionNames() const {
  QStringList names = QAccessibleWidget::actionNames();
  names.prepend(pressAction());
  return names;
}

void CustomPlotAccessible::doAction(const QString &action) {
  if (action != pressAction()) return QAccessibleWidget::doAction(action);
  static_cast<CustomPlot *>(widget())->click();
}

}  // namespace velmora
