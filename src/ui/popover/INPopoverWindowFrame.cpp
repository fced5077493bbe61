// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "ui/popover/INPopoverWindowFrame.h"

#include <QBitmap>
#include <QPainter>

#include "ui/UpwardAxis.h"

namespace velmora {

INPopoverWindowFrame::INPopoverWindowFrame(QWidget *parent) : QWidget(parent) {}

template <typename Value>
bool INPopoverWindowFrame::change(Value &value, const Value &wanted) {
  if (value == wanted) return false;
  value = wanted;
  update();
  return true;
}

void INPopoverWindowFrame::setColor(const QColor &color) { change(m_color, color); }
void INPopoverWindowFrame::setBorderColor(const QColor &color) { change(m_borderColor, color); }
void INPopoverWindowFrame::setTopHighlightColor(const QColor &color) { change(m_topHighlightColor, color); }
void INPopoverWindowFrame::setBorderWidth(double width) {
  if (change(m_borderWidth, width)) Q_EMIT shapeChanged();
}
void INPopoverWindowFrame::setCornerRadius(double radius) {
  if (change(m_shape.cornerRadius, radius)) Q_EMIT shapeChanged();
}
void INPopoverWindowFrame::setArrowSize(const QSizeF &size) {
  if (change(m_shape.arrowSize, size)) Q_EMIT shapeChanged();
}
void INPopoverWindowFrame::setArrowDirection(ArrowDirection direction) {
  if (change(m_shape.arrowDirection, direction)) Q_EMIT shapeChanged();
}
void INPopoverWindowFrame::setArrowOffset(double offset) {
  if (change(m_shape.arrowOffset, offset)) Q_EMIT shapeChanged();
}
void INPopoverWindowFrame::setOpaque(bool opaque) { change(m_opaque, opaque); }

QPainterPath INPopoverWindowFrame::popoverBezierPathWithRect(const QRectF &rect) const {
  return m_shape.path(rect);
}

QRectF INPopoverWindowFrame::strokedRect() const {
  const bool odd = static_cast<int>(m_borderWidth) % 2 != 0;
  return odd ? QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5) : QRectF(rect());
}

QPainterPath INPopoverWindowFrame::outline() const {
  return QTransform(1, 0, 0, -1, 0, height()).map(popoverBezierPathWithRect(strokedRect()));
}

QRegion INPopoverWindowFrame::coveredPixels() const {
  QBitmap pixels(size());
  pixels.clear();
  QPainter painter(&pixels);
  painter.setBrush(Qt::color1);
  painter.setPen(m_borderWidth > 0
                     ? QPen(Qt::color1, m_borderWidth, Qt::SolidLine, Qt::FlatCap, Qt::RoundJoin)
                     : QPen(Qt::NoPen));
  painter.drawPath(outline());
  painter.end();
  return QRegion(pixels);
}

void INPopoverWindowFrame::drawRect(QPainter &painter) const {
  painter.setRenderHint(QPainter::Antialiasing);
  if (m_opaque) {
    // The mask cuts the edge: a soft one would fade into black.
    const QColor &edge = m_borderWidth > 0 && m_borderColor.isValid() ? m_borderColor : m_color;
    if (edge.isValid()) painter.fillRect(rect(), edge.rgb());
  }
  turnUpward(painter, height());
  const QPainterPath path = popoverBezierPathWithRect(strokedRect());
  if (m_color.isValid()) painter.fillPath(path, m_opaque ? QColor(m_color.rgb()) : m_color);
  if (m_borderWidth > 0 && m_borderColor.isValid()) {
    painter.strokePath(path, QPen(m_borderColor, m_borderWidth, Qt::SolidLine, Qt::FlatCap, Qt::RoundJoin));
  }
  if (m_topHighlightColor.isValid()) {
    for (const QRectF &piece : m_shape.topHighlight(rect(), m_borderWidth))
      painter.fillRect(piece, m_topHighlightColor);
  }
}

void INPopoverWindowFrame::paintEvent(QPaintEvent *) {
  QPainter painter(this);
  drawRect(painter);
}

}  // namespace velmora
