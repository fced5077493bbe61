// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QColor>
#include <QRegion>
#include <QWidget>

#include "ui/popover/PopoverGeometry.h"

namespace velmora {

/// Draws the bubble of a popover. A setter that changes something asks for a redraw. An invalid colour is
/// none. Main thread.
class INPopoverWindowFrame : public QWidget {
  Q_OBJECT

 public:
  explicit INPopoverWindowFrame(QWidget *parent = nullptr);

  [[nodiscard]] const QColor &color() const { return m_color; }
  void setColor(const QColor &color);
  [[nodiscard]] const QColor &borderColor() const { return m_borderColor; }
  void setBorderColor(const QColor &color);
  /// The colour of a line under the upper edge.
  [[nodiscard]] const QColor &topHighlightColor() const { return m_topHighlightColor; }
  void setTopHighlightColor(const QColor &color);
  [[nodiscard]] double borderWidth() const { return m_borderWidth; }
  void setBorderWidth(double width);
  [[nodiscard]] double cornerRadius() const { return m_shape.cornerRadius; }
  void setCornerRadius(double radius);
  [[nodiscard]] QSizeF arrowSize() const { return m_shape.arrowSize; }
  void setArrowSize(const QSizeF &size);
  [[nodiscard]] ArrowDirection arrowDirection() const { return m_shape.arrowDirection; }
  void setArrowDirection(ArrowDirection direction);
  /// From the middle of its side, rightward or upward.
  [[nodiscard]] double arrowOffset() const { return m_shape.arrowOffset; }
  void setArrowOffset(double offset);

  /// The outline of a bubble in `rect`, in the upward axis.
  [[nodiscard]] QPainterPath popoverBezierPathWithRect(const QRectF &rect) const;

  /// The outline of this bubble, in Qt's axis.
  [[nodiscard]] QPainterPath outline() const;
  /// The pixels that the bubble covers, for a window that cannot be translucent.
  [[nodiscard]] QRegion coveredPixels() const;

  /// Where nothing lies behind a translucent pixel the bubble is opaque up to its last one.
  void setOpaque(bool opaque);

  void drawRect(QPainter &painter) const;

 Q_SIGNALS:
  void shapeChanged();

 protected:
  void paintEvent(QPaintEvent *event) override;

 private:
  template <typename Value>
  bool change(Value &value, const Value &wanted);
  [[nodiscard]] QRectF strokedRect() const;

  QColor m_color = QColor::fromRgbF(0, 0, 0, 0.8F);
  QColor m_borderColor;
  QColor m_topHighlightColor;
  double m_borderWidth = 0.0;
  BubbleShape m_shape;
  bool m_opaque = false;
};

}  // namespace velmora
