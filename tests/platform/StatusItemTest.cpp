// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/status/StatusItem.h"

#include <gtest/gtest.h>
#include <xcb/xcb.h>

#include <QApplication>
#include <QImage>
#include <QMenu>
#include <QProcess>
#include <QScreen>
#include <QTimer>
#include <array>
#include <cstdlib>
#include <memory>

#include "platform/status/StatusImage.h"
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
  Tray() {
    process.start(QStringLiteral("trayer"), {QStringLiteral("--edge"), QStringLiteral("top"),
                                             QStringLiteral("--tint"), QStringLiteral("0")});
  }
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

/// Has the tray ask for black symbols.
void askForBlack() {
  using Free = decltype([](void *reply) { std::free(reply); });
  xcb_connection_t *const x = qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
  const auto atom = [x](std::string_view name) {
    const auto cookie = xcb_intern_atom(x, 0, static_cast<std::uint16_t>(name.size()), name.data());
    return std::unique_ptr<xcb_intern_atom_reply_t, Free>(xcb_intern_atom_reply(x, cookie, nullptr))->atom;
  };
  const std::unique_ptr<xcb_get_selection_owner_reply_t, Free> tray(
      xcb_get_selection_owner_reply(x, xcb_get_selection_owner(x, atom("_NET_SYSTEM_TRAY_S0")), nullptr));
  const std::array<std::uint32_t, 12> black{};
  xcb_change_property(x, XCB_PROP_MODE_REPLACE, tray->owner, atom("_NET_SYSTEM_TRAY_COLORS"),
                      XCB_ATOM_CARDINAL, 32, black.size(), black.data());
  xcb_flush(x);
}

/// The brightest and the darkest of what the item shows on the screen, apart from its ground.
int extremeLightness(const StatusItem &item, bool brightest) {
  const QRect place = item.button().value();
  const QImage picture = QGuiApplication::primaryScreen()
                             ->grabWindow(0, place.x(), place.y(), place.width(), place.height())
                             .toImage();
  int found = brightest ? 0 : 255;
  for (int y = 0; y < picture.height(); ++y)
    for (int x = 0; x < picture.width(); ++x)
      found = brightest ? std::max(found, picture.pixelColor(x, y).lightness())
                        : std::min(found, picture.pixelColor(x, y).lightness());
  return found;
}

TEST(StatusItem, IsInTheTrayOfX11WheneverOneIsThere) {
  Desktop desktop;
  std::vector<bool> told;
  int clicks = 0;
  int secondary = 0;
  StatusItem item;
  item.setAvailabilityHandler([&](bool available) { told.push_back(available); });
  item.setAction([&] { ++clicks; });
  item.setSecondaryAction([&] { ++secondary; });
  item.setImage(QStringLiteral("statusIcon"));
  item.setTemplate(true);
  item.setToolTip(QStringLiteral("Velmora"));
  EXPECT_FALSE(item.isAvailable());
  EXPECT_EQ(item.button(), std::nullopt);

  for (const std::size_t turn : {1U, 2U}) {  // the second tray comes after the first has been killed
    SCOPED_TRACE(turn);
    std::optional<Tray> tray(std::in_place);
    ASSERT_TRUE(runUntil([&] { return item.isAvailable(); }));
    // The tray gives it its place a little later, and then what lies there is the item.
    ASSERT_TRUE(runUntil([&] {
      const QRect place = item.button().value();
      return place.top() < 60 && place.height() > 8 && place.right() < 1279 &&
             extremeLightness(item, true) > 200;
    })) << "the portal says that the desktop is dark";
    const int before = clicks;
    ASSERT_TRUE(clickAt(item.button()->center(), "1"));
    EXPECT_TRUE(runUntil([&] { return clicks == before + 1; }));
    ASSERT_TRUE(clickAt(item.button()->center(), "3"));
    EXPECT_TRUE(runUntil([&] { return secondary == int(turn); }));
    EXPECT_EQ(clicks, before + 1);
    if (turn == 1) {
      QMenu menu;
      menu.addAction(QStringLiteral("Quit"));
      QRect opened;
      QTimer::singleShot(0, &menu, [&] { opened = menu.geometry(), menu.close(); });
      item.popUpMenu(menu);
      EXPECT_EQ(opened.top(), item.button()->bottom() + 1);
      // What the tray itself asks for comes before the desktop's wishes.
      askForBlack();
      EXPECT_TRUE(runUntil([&] { return extremeLightness(item, false) == 0; }));
    }
    tray.reset();
    EXPECT_TRUE(runUntil([&] { return !item.isAvailable(); }));
  }
  EXPECT_EQ(told, (std::vector{true, false, true, false}));
}

TEST(StatusItem, IsTakenByAPanelOnTheSessionBusWheneverOneIsThere) {
  Desktop desktop;
  std::vector<bool> told;
  int clicks = 0;
  int secondary = 0;
  StatusItem item;
  item.setAvailabilityHandler([&](bool available) { told.push_back(available); });
  item.setAction([&] { ++clicks; });
  item.setSecondaryAction([&] { ++secondary; });
  item.setImage(QStringLiteral("statusIcon"));
  const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
  for (const int turn : {1, 2}) {
    SCOPED_TRACE(turn);
    desktop.say("appear");
    ASSERT_TRUE(desktop.hears("registered"));
    ASSERT_TRUE(runUntil([&] { return item.isAvailable(); }));
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
    EXPECT_TRUE(runUntil([&] { return !item.isAvailable(); }));
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
  bool isAsked = false;
  QTimer::singleShot(200, [&] { isAsked = true; });
  ASSERT_TRUE(runUntil([&] { return isAsked; }));
  EXPECT_FALSE(item.isAvailable());
  desktop.say("disappear");
  EXPECT_TRUE(runUntil([&] { return item.isAvailable(); })) << "the tray of X11 stands in";
}

TEST(StatusImage, IsDrawnOnWholePixels) {
  const QIcon icon = statusImage(QStringLiteral("statusIcon"), QColor(Qt::white));
  for (const int side : {16, 22, 24, 32, 44}) {
    SCOPED_TRACE(side);
    const QImage picture = icon.pixmap(QSize(side, side)).toImage();
    ASSERT_EQ(picture.size(), QSize(side, side));
    // A row through the three longer bars has no half-covered pixel.
    const int scale = std::max(1, side / 16);
    int inked = 0;
    for (int x = 0; x < side; ++x) {
      const QColor pixel = picture.pixelColor(x, side / 2);
      EXPECT_TRUE(pixel.alpha() == 0 || pixel == QColor(Qt::white)) << x;
      inked += pixel.alpha() != 0;
    }
    EXPECT_EQ(inked, 6 * scale);
  }
  const tests::CapturedLog log;
  (void)statusImage(QStringLiteral("nothing"), {});
  EXPECT_EQ(log.count("Status item error: there is no image nothing"), 1);
}

}  // namespace
}  // namespace velmora
