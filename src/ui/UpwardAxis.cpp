// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "ui/UpwardAxis.h"

#include <QGuiApplication>
#include <QScreen>
#include <cmath>

namespace velmora {

void turnUpward(QPainter &painter, double height) {
  painter.translate(0, height);
  painter.scale(1, -1);
}

QRectF turned(const QRectF &rect, double height) {
  return {rect.x(), height - rect.y() - rect.height(), rect.width(), rect.height()};
}

QRectF turnedOnDesktop(const QRectF &rect) {
  const QScreen *primary = QGuiApplication::primaryScreen();
  return turned(rect, primary ? QRectF(primary->geometry()).bottom() : 0);
}

QRect wholePixels(const QRectF &rect) {
  const auto whole = [](double value) { return static_cast<int>(std::floor(value + 0.5)); };
  return {whole(rect.x()), whole(rect.y()), whole(rect.width()), whole(rect.height())};
}

}  // namespace velmora
