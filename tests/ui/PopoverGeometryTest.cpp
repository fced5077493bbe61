// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include <QImage>
#include <QPainter>

#include "ui/UpwardAxis.h"
#include "ui/popover/INPopoverWindowFrame.h"
#include "ui/popover/PopoverGeometry.h"

static void PrintTo(const QRectF &rect, std::ostream *stream) {
  *stream << '(' << rect.x() << ' ' << rect.y() << ' ' << rect.width() << ' ' << rect.height() << ')';
}

namespace velmora {
namespace {

using enum ArrowDirection;
using testing::ElementsAre;

TEST(PopoverGeometry, TheFrameSitsAtTheAnchorAndHalvesAreFloored) {
  struct Case {
    QSizeF size;
    QRectF anchor;
    QRectF expected[5];  // by the number of the direction
  };
  const Case cases[] = {
      {{224, 124},
       {500, 300, 20, 10},
       {{}, {520, 243, 224, 124}, {276, 243, 224, 124}, {398, 176, 224, 124}, {398, 310, 224, 124}}},
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
    EXPECT_EQ(popoverFrame(c.size, ArrowDirection{9}, c.anchor), QRectF());
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
  constexpr ArrowDirection kStrange{7};
  const Case cases[] = {
      {"fits and stays though there is more room elsewhere", up, up, {480, 150, 20, 20}, kScreen},
      {"fits", down, down, {480, 150, 20, 20}, kScreen},
      {"fits", left, left, {480, 400, 20, 20}, kScreen},
      {"fits", right, right, {480, 400, 20, 20}, kScreen},
      {"at the top, above does not fit", down, up, {480, 780, 20, 20}, kScreen},
      {"at the bottom, below does not fit", up, down, {480, 0, 20, 20}, kScreen},
      {"at the right edge", left, right, {980, 400, 20, 20}, kScreen},
      {"at the left edge", right, left, {0, 400, 20, 20}, kScreen},
      {"touches the edge exactly, which is inside", left, left, {780, 400, 20, 20}, kScreen},
      {"half a pixel too far", left, right, {780.5, 400, 20, 20}, kScreen},
      {"neither side, more room above", left, down, {100, 200, 800, 20}, kScreen},
      {"neither side, more room below", right, up, {100, 600, 800, 20}, kScreen},
      {"neither side, as much room on both", left, down, {100, 390, 800, 20}, kScreen},
      {"nowhere", up, up, {480, 20, 20, 760}, kScreen},
      {"nowhere", right, right, {0, 0, 1000, 800}, kScreen},
      {"no screen", down, down, {480, 400, 20, 20}, {}},
      // The middle of the upper screen is above the whole of its height: taken for less room above.
      {"a screen above another, where only above would do", left, left, {100, 810, 800, 20}, kUpper},
      {"the same with the room below", left, up, {100, 1500, 800, 20}, kUpper},
      {"no direction", none, none, {480, 400, 20, 20}, kScreen},
      {"a strange one", kStrange, kStrange, {480, 400, 20, 20}, kScreen},
  };
  for (const Case &c : cases)
    EXPECT_EQ(chooseArrowDirection(c.preferred, {200, 100}, c.anchor, c.screen), c.expected)
        << c.what << ", preferred " << static_cast<int>(c.preferred);
  EXPECT_EQ(oppositeDirection(kStrange), none);
}

TEST(PopoverGeometry, ABubbleThatMustNotLeaveTheScreenMakesWayAndItsArrowDoesNot) {
  constexpr QRectF kScreen(100, 0, 1000, 800);
  constexpr QSizeF kSize(224, 124);  // with 12 of margin on every side
  struct Case {
    const char *what;
    QRectF anchor;
    ArrowDirection preferred;
    ArrowDirection expected;
    double way;  // rightward or upward
  };
  for (const Case &c : {Case{"room enough", {500, 776, 22, 24}, up, up, 0},
                        Case{"upper right corner", {1078, 776, 22, 24}, up, up, -89},
                        Case{"upper left corner", {100, 776, 22, 24}, up, up, 89},
                        Case{"lower right corner", {1078, 0, 22, 24}, up, down, -89},
                        Case{"beside, at the lower edge", {100, 0, 22, 24}, left, left, 38},
                        Case{"beside, at the upper edge", {1078, 776, 22, 24}, left, right, -38}}) {
    EXPECT_EQ(chooseArrowDirection(c.preferred, kSize, c.anchor, kScreen, 12), c.expected) << c.what;
    const QRectF frame = popoverFrame(kSize, c.expected, c.anchor);
    const bool sideways = c.expected == up || c.expected == down;
    EXPECT_EQ(shiftedOntoScreen(frame, c.expected, kScreen, 12),
              frame.translated(sideways ? c.way : 0, sideways ? 0 : c.way))
        << c.what;
    EXPECT_EQ(shiftedOntoScreen(frame, c.expected, {}, 12), frame);
    // The arrow goes the other way, and not around the corner.
    BubbleShape shape{.arrowDirection = c.expected, .arrowOffset = -c.way};
    const QPainterPath path = shape.path({{}, kSize});
    EXPECT_TRUE(QRectF(QPointF(), kSize).contains(path.boundingRect())) << c.what;
    const double amid = sideways ? 112 : 62;
    const double tip = std::clamp(amid - c.way, 27.5, 2 * amid - 27.5);
    const bool far = c.expected == up || c.expected == right;
    EXPECT_TRUE(path.contains(sideways ? QPointF(tip, far ? 120 : 4) : QPointF(far ? 220 : 4, tip)))
        << c.what;
  }
}

/// The end points of the path's pieces, curves without their control points.
QList<QPointF> corners(const QPainterPath &path) {
  QList<QPointF> points;
  for (int i = 0; i < path.elementCount(); ++i) {
    const QPainterPath::Element element = path.elementAt(i);
    if (element.isCurveTo()) i += 2;
    const QPointF point = path.elementAt(i);
    const QPointF rounded(std::round(point.x() * 1e6) / 1e6, std::round(point.y() * 1e6) / 1e6);
    if (points.isEmpty() || points.last() != rounded) points.append(rounded);
  }
  return points;
}

TEST(PopoverGeometry, TheOutlineRunsCounterClockwiseWithTheArrowOnItsSide) {
  const QPointF box[] = {{12, 16}, {16, 12}, {108, 12}, {112, 16}, {112, 67}, {108, 71}, {16, 71}, {12, 67}};
  // The rectangle's middle is (62, 41.5): 62 - 11.5, 62, 62 + 11.5 and 41.5 - 11.5, 41.5, 53 are floored.
  struct Case {
    ArrowDirection direction;
    int after;  // the corners of the box before the arrow
    QList<QPointF> arrow;
  };
  const Case cases[] = {
      {none, 8, {}},
      {down, 2, {{50, 12}, {62, 0}, {73, 12}}},
      {right, 4, {{112, 30}, {124, 41}, {112, 53}}},
      {up, 6, {{73, 71}, {62, 83}, {50, 71}}},
      {left, 8, {{12, 53}, {0, 41}, {12, 30}}},
  };
  for (const Case &c : cases) {
    QList<QPointF> expected(std::begin(box), std::begin(box) + c.after);
    expected += c.arrow;
    expected.append(QList<QPointF>(std::begin(box) + c.after, std::end(box)));
    expected.append(box[0]);
    BubbleShape shape;
    shape.arrowDirection = c.direction;
    const QPainterPath path = shape.path({0, 0, 124, 83});
    EXPECT_EQ(corners(path), expected) << static_cast<int>(c.direction);
    EXPECT_FALSE(path.contains(QPointF(12.4, 12.4))) << "a corner is round";
    EXPECT_TRUE(path.contains(QPointF(14, 14)));
  }
  BubbleShape square;
  square.cornerRadius = 0;
  square.arrowDirection = none;
  EXPECT_EQ(corners(square.path({0, 0, 100, 50})).size(), 5);
  EXPECT_TRUE(square.path({0, 0, 100, 50}).contains(QPointF(12.1, 12.1)));
}

TEST(PopoverGeometry, TheHighlightLeavesOutTheArrow) {
  BubbleShape shape;
  EXPECT_THAT(shape.topHighlight({0, 0, 125, 84}, 1), ElementsAre(QRectF(14, 70, 97, 1)));
  shape.arrowDirection = up;
  // 97 / 2 - 11.5 and 97 / 2 + 14 + 11.5
  EXPECT_THAT(shape.topHighlight({0, 0, 125, 84}, 1),
              ElementsAre(QRectF(14, 70, 37, 1), QRectF(74, 70, 37, 1)));
}

TEST(PopoverGeometry, OneAxisTurnsIntoTheOtherAndBack) {
  EXPECT_EQ(turned({10, 20, 30, 40}, 100), QRectF(10, 40, 30, 40));
  EXPECT_EQ(turnedOnDesktop(turnedOnDesktop({10, -20, 30, 40.5})), QRectF(10, -20, 30, 40.5));
  struct Case {
    QRectF rect;
    QRect expected;
  };
  for (const Case &c :
       {Case{{10.5, 20.5, 225, 125}, {11, 21, 225, 125}}, Case{{-10.5, -0.5, 225, 125}, {-10, 0, 225, 125}},
        Case{{-10.75, 0.25, 1, 2}, {-11, 0, 1, 2}}})
    EXPECT_EQ(wholePixels(c.rect), c.expected);
}

TEST(PopoverGeometry, TheFrameDrawsBubbleBorderAndHighlight) {
  INPopoverWindowFrame frame;
  frame.resize(124, 84);
  frame.setColor(QColor(0, 0, 200, 128));
  frame.setBorderColor(Qt::red);
  frame.setBorderWidth(1);
  frame.setTopHighlightColor(Qt::green);
  frame.setArrowDirection(up);
  QImage image(frame.size() * 2, QImage::Format_ARGB32_Premultiplied);
  image.setDevicePixelRatio(2);
  for (const bool opaque : {false, true}) {
    frame.setOpaque(opaque);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    frame.drawRect(painter);
    painter.end();
    EXPECT_EQ(image.pixelColor(124, 80).alpha(), opaque ? 255 : 128);
    EXPECT_EQ(image.pixelColor(24, 80), Qt::red) << "the left border lies on whole pixels";
    EXPECT_EQ(image.pixelColor(25, 80), Qt::red);
    EXPECT_NE(image.pixelColor(26, 80), Qt::red);
    EXPECT_EQ(image.pixelColor(40, 27), Qt::green);
    EXPECT_NE(image.pixelColor(124, 27), Qt::green) << "under the arrow";
    EXPECT_EQ(image.pixelColor(24, 24), opaque ? QColor(Qt::red) : QColor(0, 0, 0, 0))
        << "no dark corner under the mask";
  }
}

}  // namespace
}  // namespace velmora
