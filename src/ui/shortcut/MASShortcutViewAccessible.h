// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QAccessibleWidget>

namespace velmora {

class MASShortcutView;

/// A recorder view as people meet it who do not see it: a button that can be pressed.
class MASShortcutViewAccessible final : public QAccessibleWidget {
 public:
  /// Makes it what the toolkit uses for recorder views.
  static void install();
  /// Has the view's announcement read out, where anybody listens.
  static void announce(MASShortcutView &view);

  explicit MASShortcutViewAccessible(MASShortcutView &view);

  [[nodiscard]] QString text(QAccessible::Text kind) const override;
  [[nodiscard]] QAccessible::State state() const override;
  [[nodiscard]] QStringList actionNames() const override;
  void doAction(const QString &name) override;

 private:
  [[nodiscard]] MASShortcutView &view() const;
};

}  // namespace velmora
