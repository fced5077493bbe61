// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Where a popover goes and what it looks like, as plain functions: logical pixels, y upward.
#pragma once

#include <QList>
#include <QPainterPath>
#include <QRectF>
#include <QSizeF>
#include <optional>

namespace velmora {

/// The side of the bubble that bears the arrow: with `up` the bubble hangs below what it belongs to. Other
/// numbers are taken too, and have no place on the screen.
enum class ArrowDirection : int { none = 0, left = 1, right = 2, up = 3, down = 4 };

[[nodiscard]] ArrowDirection oppositeDirection(ArrowDirection direction);

/// The frame of a popover of `size` at `anchor`, both with the arrow's margin; empty without a direction.
[[nodiscard]] QRectF popoverFrame(const QSizeF &size, ArrowDirection direction, const QRectF &anchor);

/// `frame` shifted along the side with the arrow, as far as it must be for the bubble in it, without the
/// margin of the arrow's `height`, to lie between the edges of `screen`; as it is when there is no screen.
[[nodiscard]] QRectF shiftedOntoScreen(const QRectF &frame, ArrowDirection direction, const QRectF &screen,
                                       double height);

/// `preferred` when its frame lies wholly on `screen`, else the opposite, else above or below where there is
/// more room, else `preferred` all the same. The room is measured from the desktop's origin and not the
/// screen's. With the arrow's `shiftHeight`, each frame is first shifted onto the screen.
[[nodiscard]] ArrowDirection chooseArrowDirection(ArrowDirection preferred, const QSizeF &size,
                                                  const QRectF &anchor, const QRectF &screen,
                                                  std::optional<double> shiftHeight = {});

/// The look of a bubble in `rect`, which holds the arrow's height as a margin on every side.
struct BubbleShape {
  double cornerRadius = 4.0;
  QSizeF arrowSize{23.0, 12.0};  ///< the width along the side, the height away from it
  ArrowDirection arrowDirection = ArrowDirection::left;
  /// How far the arrow is from the middle of its side, rightward or upward; it stays off the corners.
  double arrowOffset = 0;

  /// The outline, counter-clockwise.
  [[nodiscard]] QPainterPath path(const QRectF &rect) const;
  /// The pieces of a line one pixel high under the upper edge, which leave out the arrow.
  [[nodiscard]] QList<QRectF> topHighlight(const QRectF &bounds, double borderWidth) const;

 private:
  [[nodiscard]] double offsetWithin(double side) const;
};

}  // namespace velmora
