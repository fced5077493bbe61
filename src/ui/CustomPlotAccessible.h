// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QAccessibleWidget>

namespace velmora {

class CustomPlot;

/// What a screen reader is told of a plot that is a button: its name, and that it can be pressed. Main
/// thread.
class CustomPlotAccessible : public QAccessibleWidget {
 public:
  /// From now on every such plot has one. To be called before one is looked at.
  static void install();

  explicit CustomPlotAccessible(CustomPlot &plot);

  [[nodiscard]] QStringList actionNames() const override;
  void doAction(const QString &action) override;
};

}  // namespace velmora
