// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/status/StatusItem.h"

#include <gtest/gtest.h>

#include <QDeadlineTimer>
#include <QGuiApplication>
#include <QImage>
#include <QMenu>
#include <QProcess>
#include <QScreen>
#include <QTimer>

#include "platform/Notification.h"
#include "support/CapturedLog.h"
#include "support/Desktop.h"
#include "support/EventLoop.h"
#include "support/OtherProgram.h"

namespace velmora {
namespace {

using tests::Desktop;
using tests::runUntil;
using tests::xdotool;

struct Tray {
  Tray() { process.startCommand(QStringLiteral("trayer --edge top --tint 0")); }
  ~Tray() {
    process.kill();
    process.waitForFinished();
  }
  Tray(const Tray &) = delete;
  Tray &operator=(const Tray &) = delete;
  QProcess process;
};

bool clickAt(const QPoint &point, const char *button) {
  return xdotool({"mousemove", std::to_string(point.x()), std::to_string(point.y()), "click", button});
}

/// Whether something bright is to be seen where the item is.
bool isBright(const QRect &place) {
  const QImage picture = QGuiApplication::primaryScreen()
                             ->grabWindow(0, place.x(), place.y(), place.width(), place.height())
                             .toImage();
  for (int y = 0; y < picture.height(); ++y)
    for (int x = 0; x < picture.width(); ++x)
      if (picture.pixelColor(x, y).lightness() > 200) return true;
  return false;
}

struct StatusItemTest : testing::Test {
  StatusItemTest() {
    item.setAvailabilityHandler([&](bool available) { told.push_back(available); });
    item.setAction([&] { ++clicks; });
    item.setSecondaryAction([&] { ++secondary; });
    item.setImage(QStringLiteral("statusIcon"));
    item.setTemplate(true);
  }
  bool isSoon(bool available) {
    return runUntil([&] { return item.isAvailable() == available; });
  }

  Desktop desktop;
  StatusItem item;
  std::vector<bool> told;
  int clicks = 0;
  int secondary = 0;
};

TEST_F(StatusItemTest, IsInTheTrayOfX11WheneverOneIsThere) {
  EXPECT_FALSE(item.isAvailable());
  EXPECT_EQ(item.button(), std::nullopt);
  for (const int turn : {1, 2}) {  // the second tray comes after the first has been killed
    SCOPED_TRACE(turn);
    std::optional<Tray> tray(std::in_place);
    ASSERT_TRUE(isSoon(true));
    // The tray gives it its place a little later, and then what lies there is the item.
    ASSERT_TRUE(runUntil([&] {
      const QRect place = item.button().value();
      return place.top() < 60 && place.height() > 8 && place.right() < 1279 && isBright(place);
    })) << "the portal says that the desktop is dark";
    ASSERT_TRUE(clickAt(item.button()->center(), "1"));
    EXPECT_TRUE(runUntil([&] { return clicks == turn; }));
    ASSERT_TRUE(clickAt(item.button()->center(), "3"));
    EXPECT_TRUE(runUntil([&] { return secondary == turn; }));
    EXPECT_EQ(clicks, turn);
    QMenu menu;
    menu.addAction(QStringLiteral("Quit"));
    QRect opened;
    QTimer::singleShot(0, &menu, [&] { opened = menu.geometry(), menu.close(); });
    item.popUpMenu(menu);
    EXPECT_EQ(opened.top(), item.button()->bottom() + 1);
    tray.reset();
    EXPECT_TRUE(isSoon(false));
  }
  EXPECT_EQ(told, (std::vector{true, false, true, false}));
}

TEST_F(StatusItemTest, IsTakenByAPanelOnTheSessionBusWheneverOneIsThere) {
  const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
  for (const int turn : {1, 2}) {
    SCOPED_TRACE(turn);
    desktop.say("appear");
    ASSERT_TRUE(desktop.hears("registered"));
    ASSERT_TRUE(isSoon(true));
    if (turn == 1) {
      EXPECT_EQ(item.button()->topRight(), screen.topRight());
    }
    ASSERT_TRUE(xdotool({"mousemove", "300", "200"}));
    ASSERT_TRUE(runUntil([&] { return QCursor::pos() == QPoint(300, 200); }));
    desktop.say("Activate");
    EXPECT_TRUE(runUntil([&] { return clicks == turn; }));
    EXPECT_TRUE(item.button()->contains(QPoint(300, 200)));
    desktop.say("ContextMenu");
    EXPECT_TRUE(runUntil([&] { return secondary == turn; }));
    desktop.say("disappear");
    EXPECT_TRUE(isSoon(false));
  }
  EXPECT_EQ(told, (std::vector{true, false, true, false}));
}

TEST(StatusItem, DoesNotWaitForAPanelThatDoesNotAnswer) {
  Desktop desktop;
  desktop.say("silent");
  ASSERT_TRUE(desktop.hears("silent"));
  StatusItem item;
  item.setImage(QStringLiteral("statusIcon"));
  const Tray tray;
  const QDeadlineTimer isAsked(200);
  ASSERT_TRUE(runUntil([&] { return isAsked.hasExpired(); }));
  EXPECT_FALSE(item.isAvailable());
  desktop.say("disappear");
  EXPECT_TRUE(runUntil([&] { return item.isAvailable(); })) << "the tray of X11 stands in";
}

TEST(Notification, IsShownAsPlainTextOrLogged) {
  const tests::CapturedLog log;
  Desktop desktop;
  showNotification(QStringLiteral("Lost"), QStringLiteral("nobody is there"));
  EXPECT_TRUE(runUntil([&] { return log.count("Notification error: ") == 1; }));
  desktop.say("show");
  ASSERT_TRUE(desktop.hears("show"));
  showNotification(QStringLiteral("Velmora"), QStringLiteral("<b>1 & 2"));
  EXPECT_TRUE(desktop.hears("Velmora: &lt;b&gt;1 &amp; 2"));
  EXPECT_EQ(log.lines().size(), 1U);
}

}  // namespace
}  // namespace velmora
