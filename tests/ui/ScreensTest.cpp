// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// What depends on the screen, where there is more than one; run with several scale factors.
#include <gtest/gtest.h>

#include <QApplication>
#include <QScreen>
#include <memory>
#include <set>

#include "platform/window/WindowSize.h"
#include "support/EventLoop.h"
#include "ui/popover/INPopoverController.h"

namespace velmora {
namespace {

using tests::runUntil;

constexpr QRgb kGround = qRgb(0, 120, 0);
constexpr QRgb kBubble = qRgb(200, 0, 0);

struct Content : ViewController {
  Content() { widget.resize(200, 100); }
  QWidget &view() override { return widget; }
  QWidget widget;
};

/// The colours of `area` as the user sees it, in the pixels of the screen.
std::set<QRgb> seen(QScreen &screen, const QRect &area) {
  const QImage all = screen.grabWindow(0).toImage();
  const double scale = screen.devicePixelRatio();
  // The last pixel of a screen may be a part of one.
  const QRect whole = area.intersected(screen.geometry().adjusted(0, 0, -1, -1));
  const QRectF inside = QRectF(whole).translated(-screen.geometry().topLeft());
  const QImage part = all.copy(QRectF(inside.topLeft() * scale, inside.size() * scale).toRect());
  std::set<QRgb> colors;
  for (int y = 0; y < part.height(); ++y) {
    for (int x = 0; x < part.width(); ++x) colors.insert(part.pixel(x, y) | 0xff000000);
  }
  return colors;
}

TEST(Screens, APopoverStaysOnTheScreenOfItsAnchorWithoutGapsOrBlackCorners) {
  ASSERT_EQ(QGuiApplication::screens().size(), 2);
  std::vector<std::unique_ptr<QWidget>> grounds;
  for (const QScreen *screen : QGuiApplication::screens()) {
    auto &ground = *grounds.emplace_back(std::make_unique<QWidget>(nullptr, Qt::FramelessWindowHint));
    ground.setAttribute(Qt::WA_X11NetWmWindowTypeDesktop);
    ground.setPalette(QColor(kGround));
    ground.setGeometry(screen->geometry());
    ground.show();
  }
  Content content;
  INPopoverController popover(&content);
  popover.setAnimates(false);
  popover.setStaysOnScreen(true);
  popover.setColor(QColor(kBubble));
  for (QScreen *screen : QGuiApplication::screens()) {
    const QRect all = screen->geometry();
    const QRect inner = all.adjusted(0, 0, -22, -24);
    for (const QPoint &corner :
         {all.center(), inner.topLeft(), inner.topRight(), inner.bottomLeft(), inner.bottomRight()}) {
      const QRect anchor(corner, QSize(22, 24));
      SCOPED_TRACE(testing::Message()
                   << screen->name().toStdString() << ' ' << anchor.x() << ' ' << anchor.y());
      popover.presentPopoverFromRect(anchor, nullptr, ArrowDirection::up, false);
      const QWidget &window = popover.popoverWindow();
      const bool below = popover.arrowDirection() == ArrowDirection::up;
      EXPECT_EQ(below, all.bottom() - anchor.bottom() >= 112);
      const int edge = below ? anchor.bottom() + 1 : anchor.top();
      EXPECT_TRUE(
          runUntil([&] { return below ? window.y() == edge : window.geometry().bottom() + 1 == edge; }));
      EXPECT_EQ(window.screen(), screen);
      const QRect frame = window.geometry();
      const QRect bubble = frame.adjusted(12, 12, -12, -12);
      EXPECT_TRUE(all.contains(bubble));
      // The bubble is whole, its arrow begins at the anchor, and all around is what was there before.
      const QRect tip(anchor.left(), below ? edge : edge - 3, anchor.width(), 3);
      EXPECT_TRUE(runUntil([&] {
        return seen(*screen, bubble.adjusted(4, 1, -4, -1)) == std::set{kBubble} &&
               seen(*screen, tip).contains(kBubble) && seen(*screen, frame) == std::set{kBubble, kGround};
      }));
      popover.forceClosePopover();
    }
  }
}

TEST(Screens, AWindowIsNoLargerThanItsScreenHasRoomFor) {
  QWidget window;
  window.resize(520, 9000);
  boundToScreen(window);
  EXPECT_EQ(window.width(), 520);
  window.show();
  ASSERT_TRUE(
      runUntil([&] { return window.isActiveWindow() && window.frameGeometry() != window.geometry(); }));
  const QRect frame = window.frameGeometry();
  const int room = window.screen()->availableGeometry().height();
  EXPECT_LE(frame.height(), room);
  EXPECT_GT(frame.height(), room * 3 / 4);
}

}  // namespace
}  // namespace velmora
