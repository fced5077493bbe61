// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>

#include "ui/popover/INPopoverWindowFrame.h"
#include "ui/popover/PopoverGeometry.h"

static void PrintTo(const QRectF &rect, std::ostream *stream) {
  *stream << '(' << rect.x() << ' ' << rect.y() << ' ' << rect.width() << ' ' << rect.height() << ')';
}

namespace velmora {
namespace {

using enum ArrowDirection;

TEST(PopoverGeometry, TheFrameSitsAtTheAnchorAndHalvesAreFloored) {
  struct Case {
    QSizeF size;
    QRectF anchor;
    QRectF expected[5];  // by the number of the direction
  };
  const Case cases[] = {
      // Halves of odd sizes are floored, halves of the anchor are not.
      {{225, 125},
       {500, 300, 21, 11},
       {{}, {521, 243.5, 225, 125}, {275, 243.5, 225, 125}, {398.5, 175, 225, 125}, {398.5, 311, 225, 125}}},
      {{10, 10},
       {-5.5, -2, 0, 0},
       {{}, {-5.5, -7, 10, 10}, {-15.5, -7, 10, 10}, {-10.5, -12, 10, 10}, {-10.5, -2, 10, 10}}},
  };
  for (const Case &c : cases) {
    for (int direction = 0; direction < 5; ++direction)
      EXPECT_EQ(popoverFrame(c.size, ArrowDirection{direction}, c.anchor), c.expected[direction])
          << direction;
  }
}

TEST(PopoverGeometry, TheArrowGoesWhereTheBubbleFits) {
  struct Case {
    const char *what;
    ArrowDirection preferred;
    ArrowDirection expected;
    QRectF anchor;
    QRectF screen;
  };
  constexpr QRectF kScreen(0, 0, 1000, 800);
  constexpr QRectF kUpper(0, 800, 1000, 800);
  const Case cases[] = {
      {"fits and stays though there is more room elsewhere", up, up, {480, 150, 20, 20}, kScreen},
      {"at the top, above does not fit", down, up, {480, 780, 20, 20}, kScreen},
      {"at the bottom, below does not fit", up, down, {480, 0, 20, 20}, kScreen},
      {"at the right edge", left, right, {980, 400, 20, 20}, kScreen},
      {"at the left edge", right, left, {0, 400, 20, 20}, kScreen},
      {"touches the edge exactly, which is inside", left, left, {780, 400, 20, 20}, kScreen},
      {"half a pixel too far", left, right, {780.5, 400, 20, 20}, kScreen},
      {"neither side, more room above", left, down, {100, 200, 800, 20}, kScreen},
      {"neither side, more room below", right, up, {100, 600, 800, 20}, kScreen},
      {"nowhere", up, up, {480, 20, 20, 760}, kScreen},
      {"no screen", down, down, {480, 400, 20, 20}, {}},
      // The middle of the upper screen is above the whole of its height: taken for less room above.
      {"a screen above another, where only above would do", left, left, {100, 810, 800, 20}, kUpper},
      {"the same with the room below", left, up, {100, 1500, 800, 20}, kUpper},
      {"no direction", none, none, {480, 400, 20, 20}, kScreen},
  };
  for (const Case &c : cases)
    EXPECT_EQ(chooseArrowDirection(c.preferred, {200, 100}, c.anchor, c.screen), c.expected)
        << c.what << ", preferred " << static_cast<int>(c.preferred);
}

TEST(PopoverGeometry, ABubbleBesideItsAnchorMakesWayAtTheEdgeAndItsArrowDoesNot) {
  constexpr QRectF kScreen(100, 0, 1000, 800);
  constexpr QSizeF kSize(224, 124);  // with 12 of margin on every side
  struct Case {
    QRectF anchor;
    ArrowDirection expected;
    double way;  // upward
  };
  for (const Case &c :
       {Case{{100, 0, 22, 24}, left, 38}, {{1078, 776, 22, 24}, right, -38}, {{100, 400, 22, 24}, left, 0}}) {
    EXPECT_EQ(chooseArrowDirection(left, kSize, c.anchor, kScreen, 12), c.expected);
    const QRectF frame = popoverFrame(kSize, c.expected, c.anchor);
    EXPECT_EQ(shiftedOntoScreen(frame, c.expected, kScreen, 12), frame.translated(0, c.way));
    // The arrow goes the other way, and not around the corner.
    const BubbleShape shape{.arrowDirection = c.expected, .arrowOffset = -c.way};
    const QPainterPath path = shape.path({{}, kSize});
    const double tip = std::clamp(62 - c.way, 27.5, 124 - 27.5);
    EXPECT_TRUE(path.contains(QPointF(c.expected == right ? 220 : 4, tip))) << c.way;
  }
}

TEST(PopoverGeometry, TheOutlineIsRoundAndHasTheArrowOnItsSide) {
  // The middle is (62, 41.5); what is half a pixel of the arrow is floored.
  struct Case {
    ArrowDirection direction;
    QRect bounds;
    QPointF tip, side, beside;  // within the arrow and next to it
  };
  for (const Case &c : {Case{none, {12, 12, 100, 59}, {62, 13}, {51, 13}, {62, 11}},
                        Case{down, {12, 0, 100, 71}, {62, 1}, {51, 11.5}, {50, 11}},
                        Case{right, {12, 12, 112, 59}, {123, 41}, {112.5, 31}, {113, 30}},
                        Case{up, {12, 12, 100, 71}, {62, 82}, {51, 71.5}, {50, 72}},
                        Case{left, {0, 12, 112, 59}, {1, 41}, {11.5, 31}, {11, 30}}}) {
    BubbleShape shape;
    shape.arrowDirection = c.direction;
    const QPainterPath path = shape.path({0, 0, 124, 83});
    SCOPED_TRACE(static_cast<int>(c.direction));
    EXPECT_EQ(path.boundingRect().toRect(), c.bounds);
    EXPECT_TRUE(path.contains(c.tip) && path.contains(c.side) && !path.contains(c.beside));
    for (const QPointF &corner : {QPointF(12.4, 12.4), {111.6, 12.4}, {111.6, 70.6}, {12.4, 70.6}})
      EXPECT_FALSE(path.contains(corner));
    EXPECT_TRUE(path.contains(QPointF(14, 14)));
    shape.cornerRadius = 0;
    EXPECT_TRUE(shape.path({0, 0, 124, 83}).contains(QPointF(12.4, 12.4)));
  }
}

TEST(PopoverGeometry, TheFrameDrawsASharpBorderAndNoDarkCorners) {
  INPopoverWindowFrame frame;
  frame.resize(124, 84);
  frame.setColor(QColor(0, 0, 200, 128));
  frame.setBorderColor(Qt::red);
  frame.setBorderWidth(1);
  frame.setArrowDirection(up);
  QImage image(frame.size() * 2, QImage::Format_ARGB32_Premultiplied);
  image.setDevicePixelRatio(2);
  for (const bool opaque : {false, true}) {
    frame.setOpaque(opaque);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    frame.drawRect(painter);
    EXPECT_EQ(image.pixelColor(124, 80).alpha(), opaque ? 255 : 128);
    for (const int column : {24, 25, 26}) EXPECT_EQ(image.pixelColor(column, 80) == Qt::red, column < 26);
    EXPECT_EQ(image.pixelColor(24, 24), opaque ? QColor(Qt::red) : QColor(0, 0, 0, 0)) << "under the mask";
  }
}

}  // namespace
}  // namespace velmora
