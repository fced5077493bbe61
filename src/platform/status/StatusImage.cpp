// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/status/StatusImage.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>
#include <algorithm>

#include "foundation/Log.h"

namespace velmora {
namespace {

constexpr int kSizes[] = {16, 22, 24, 32, 44, 48, 64};  // pixels
constexpr QSize kGrid(22, 22);
constexpr int kMiddle = 16;  // of the grid

/// Where the whole image goes in a picture of `side` pixels; what lies outside is cut off.
QRectF placeOf(const QSize &image, int side) {
  if (image != kGrid) {
    const QSizeF size = QSizeF(image).scaled(side, side, Qt::KeepAspectRatio);
    return {QPointF(side - size.width(), side - size.height()) / 2, size};
  }
  const int scale = std::max(1, side / kMiddle);
  const int whole = kGrid.width() * scale;
  const int margin = (side - whole) / 2;  // whole pixels
  return QRectF(margin, margin, whole, whole);
}

}  // namespace

QIcon statusImage(const QString &name, const std::optional<QColor> &color) {
  QSvgRenderer renderer(QStringLiteral(":/icons/%1.svg").arg(name));
  if (!renderer.isValid()) {
    log("Status item error: there is no image ", name.toStdString());
    return QGuiApplication::windowIcon();
  }
  QIcon icon;
  for (const int side : kSizes) {
    QPixmap picture(side, side);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    renderer.render(&painter, placeOf(renderer.defaultSize(), side));
    if (color) {
      painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
      painter.fillRect(picture.rect(), *color);
    }
    painter.end();
    icon.addPixmap(picture);
  }
  return icon;
}

}  // namespace velmora
