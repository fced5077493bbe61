// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/status/StatusItem.h"

#include <gtest/gtest.h>

#include <QCursor>
#include <QDeadlineTimer>
#include <QProcess>

#include "support/Desktop.h"
#include "support/EventLoop.h"
#include "support/OtherProgram.h"

namespace velmora {
namespace {

using tests::Desktop;
using tests::runUntil;

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

struct StatusItemTest : testing::Test {
  StatusItemTest() {
    item.setAvailabilityHandler([&](bool available) { told.push_back(available); });
    item.setAction([&] { ++clicks; });
    item.setSecondaryAction([&] { ++secondary; });
    item.setImage(QStringLiteral("statusIcon"));
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
  for (const int turn : {1, 2}) {  // the second tray comes after the first has been killed
    SCOPED_TRACE(turn);
    std::optional<Tray> tray(std::in_place);
    ASSERT_TRUE(isSoon(true));
    // The tray gives it its place a little later.
    EXPECT_TRUE(runUntil([&] { return item.button()->top() < 60 && item.button()->right() < 1279; }));
    tray.reset();
    EXPECT_TRUE(isSoon(false));
  }
  EXPECT_EQ(told, (std::vector{true, false, true, false}));
}

TEST_F(StatusItemTest, IsTakenByAPanelOnTheSessionBusWheneverOneIsThere) {
  for (const int turn : {1, 2}) {
    SCOPED_TRACE(turn);
    desktop.say("appear");
    ASSERT_TRUE(desktop.hears("registered"));
    ASSERT_TRUE(isSoon(true));
    ASSERT_TRUE(tests::xdotool({"mousemove", "300", "200"}));
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

}  // namespace
}  // namespace velmora
