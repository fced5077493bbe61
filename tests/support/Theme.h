// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QApplication>
#include <QPalette>
#include <QStyleFactory>

namespace velmora::tests {

inline QPalette darkPalette() {
  QPalette palette;
  const QColor text(238, 238, 236);
  const QColor window(48, 48, 50);
  const QColor faint(140, 140, 140);
  palette.setColor(QPalette::Window, window);
  palette.setColor(QPalette::Button, QColor(68, 68, 70));
  palette.setColor(QPalette::Base, QColor(34, 34, 36));
  palette.setColor(QPalette::AlternateBase, window);
  palette.setColor(QPalette::Light, QColor(84, 84, 86));
  palette.setColor(QPalette::Highlight, QColor(42, 130, 218));
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::BrightText}) {
    palette.setColor(role, text);
    palette.setColor(QPalette::Disabled, role, faint);
  }
  palette.setColor(QPalette::PlaceholderText, QColor(170, 170, 170));
  return palette;
}

/// The same looks on every machine.
inline void setTheme(bool dark) {
  QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
  if (dark) QApplication::setPalette(darkPalette());
}

}  // namespace velmora::tests
