// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "ui/popover/PopoverGeometry.h"

#include <algorithm>
#include <cmath>

namespace velmora {

ArrowDirection oppositeDirection(ArrowDirection direction) {
  switch (direction) {
    case ArrowDirection::left: return ArrowDirection::right;
    case ArrowDirection::right: return ArrowDirection::left;
    case ArrowDirection::up: return ArrowDirection::down;
    case ArrowDirection::down: return ArrowDirection::up;
    default: return ArrowDirection::none;
  }
}

QRectF popoverFrame(const QSizeF &size, ArrowDirection direction, const QRectF &anchor) {
  const double besideY = anchor.y() + anchor.height() * 0.5 - std::floor(size.height() * 0.5);
  const double amidX = anchor.x() + anchor.width() * 0.5 - std::floor(size.width() * 0.5);
  switch (direction) {
    case ArrowDirection::left: return {{anchor.x() + anchor.width(), besideY}, size};
    case ArrowDirection::right: return {{anchor.x() - size.width(), besideY}, size};
    case ArrowDirection::up: return {{amidX, anchor.y() - size.height()}, size};
    case ArrowDirection::down: return {{amidX, anchor.y() + anchor.height()}, size};
    default: return {};
  }
}

QRectF shiftedOntoScreen(const QRectF &frame, ArrowDirection direction, const QRectF &screen, double height) {
  if (screen.isEmpty()) return frame;
  const bool sideways = direction == ArrowDirection::up || direction == ArrowDirection::down;
  const double begin = (sideways ? screen.left() : screen.top()) - height;
  const double end = (sideways ? screen.right() : screen.bottom()) + height;
  const double extent = sideways ? frame.width() : frame.height();
  const double place = sideways ? frame.x() : frame.y();
  // What is too large for the screen shows its beginning, which is its upper end.
  const double shifted = sideways ? std::max(begin, std::min(place, end - extent))
                                  : std::min(end - extent, std::max(place, begin));
  return sideways ? frame.translated(shifted - place, 0) : frame.translated(0, shifted - place);
}

ArrowDirection chooseArrowDirection(ArrowDirection preferred, const QSizeF &size, const QRectF &anchor,
                                    const QRectF &screen, std::optional<double> shiftHeight) {
  const auto fits = [&](ArrowDirection direction) {
    const QRectF frame = popoverFrame(size, direction, anchor);
    if (!shiftHeight) return screen.contains(frame);
    const double margin = *shiftHeight;
    const QRectF bubble =
        shiftedOntoScreen(frame, direction, screen, margin).adjusted(margin, margin, -margin, -margin);
    return screen.contains(bubble);
  };
  if (fits(preferred)) return preferred;
  const ArrowDirection opposite = oppositeDirection(preferred);
  if (fits(opposite)) return opposite;
  ArrowDirection other = ArrowDirection::none;
  if (opposite != ArrowDirection::none) {
    const bool roomAbove = anchor.y() <= screen.height() - (anchor.height() + anchor.y());
    other = roomAbove ? ArrowDirection::down : ArrowDirection::up;
  }
  return fits(other) ? other : preferred;
}

namespace {

/// Adds a quarter of a circle, counter-clockwise from `start` degrees. Where the radius is zero this is the
/// corner itself, for which QPainterPath has no arc.
void addCorner(QPainterPath &path, const QPointF &center, double radius, double start) {
  const double radians = start * M_PI / 180;
  const QPointF begin = center + QPointF(std::cos(radians), std::sin(radians)) * radius;
  if (path.elementCount() == 0) {
    path.moveTo(begin);
  } else {
    path.lineTo(begin);
  }
  // Its angles take y for growing downward.
  if (radius > 0) {
    path.arcTo(QRectF(center.x() - radius, center.y() - radius, 2 * radius, 2 * radius), -start, -90);
  }
}

}  // namespace

/// The offset that leaves an arrow on a straight `side` of this length.
double BubbleShape::offsetWithin(double side) const {
  const double most = std::max(0.0, (side - arrowSize.width()) / 2);
  return std::clamp(arrowOffset, -most, most);
}

QPainterPath BubbleShape::path(const QRectF &rect) const {
  const double r = cornerRadius;
  const double half = arrowSize.width() / 2;
  const double height = arrowSize.height();
  const QRectF inner = rect.adjusted(height + r, height + r, -height - r, -height - r);
  const double minX = inner.left();
  const double maxX = inner.right();
  const double minY = inner.top();  // the lower edge: y grows upward
  const double maxY = inner.bottom();
  const double arrowX = inner.center().x() + offsetWithin(inner.width());
  const double arrowY = inner.center().y() + offsetWithin(inner.height());

  QPainterPath path;
  addCorner(path, {minX, minY}, r, 180);
  if (arrowDirection == ArrowDirection::down) {
    path.lineTo(std::floor(arrowX - half), minY - r);
    path.lineTo(std::floor(arrowX), minY - r - height);
    path.lineTo(std::floor(arrowX + half), minY - r);
  }
  addCorner(path, {maxX, minY}, r, 270);
  if (arrowDirection == ArrowDirection::right) {
    path.lineTo(maxX + r, std::floor(arrowY - half));
    path.lineTo(maxX + r + height, std::floor(arrowY));
    path.lineTo(maxX + r, std::floor(arrowY + half));
  }
  addCorner(path, {maxX, maxY}, r, 0);
  if (arrowDirection == ArrowDirection::up) {
    path.lineTo(std::floor(arrowX + half), maxY + r);
    path.lineTo(std::floor(arrowX), maxY + r + height);
    path.lineTo(std::floor(arrowX - half), maxY + r);
  }
  addCorner(path, {minX, maxY}, r, 90);
  if (arrowDirection == ArrowDirection::left) {
    path.lineTo(minX - r, std::floor(arrowY + half));
    path.lineTo(minX - r - height, std::floor(arrowY));
    path.lineTo(minX - r, std::floor(arrowY - half));
  }
  path.closeSubpath();
  return path;
}

QList<QRectF> BubbleShape::topHighlight(const QRectF &bounds, double borderWidth) const {
  const double height = arrowSize.height();
  const QRectF body = bounds.adjusted(height, height, -height, -height);
  const double left = std::floor(cornerRadius * 0.5 + body.x());
  const double y = body.y() + body.height() - borderWidth - 1.0;
  const double width = body.width() - cornerRadius;
  if (arrowDirection != ArrowDirection::up) return {{left, y, width, 1}};
  const double offset = offsetWithin(body.width() - 2 * cornerRadius);
  const double half = width * 0.5 - arrowSize.width() * 0.5;
  const double second = std::floor(width * 0.5 + left + arrowSize.width() * 0.5 + offset);
  return {{left, y, std::floor(half + offset), 1}, {second, y, std::floor(half - offset), 1}};
}

}  // namespace velmora
