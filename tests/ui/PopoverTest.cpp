// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QScreen>
#include <QWindow>
#include <chrono>
#include <optional>

#include "foundation/MainQueue.h"
#include "platform/window/Compositor.h"
#include "support/EventLoop.h"
#include "support/OtherProgram.h"
#include "ui/UpwardAxis.h"
#include "ui/popover/INPopoverController.h"
#include "ui/popover/INPopoverParentWindow.h"
#include "ui/popover/Popover.h"

namespace velmora {
namespace {

using testing::ElementsAre;
using tests::runUntil;

class Content : public ViewController {
 public:
  explicit Content(const QSize &size = {200, 100}) : m_edit(&m_view) { m_view.resize(size); }
  QWidget &view() override { return m_view; }

 private:
  QWidget m_view;
  QLineEdit m_edit;
};

class Record : public INPopoverControllerDelegate {
 public:
  std::vector<std::string> calls;
  bool mayClose = true;

  void popoverWillShow(INPopoverController &popover) override { note("willShow", popover); }
  void popoverDidShow(INPopoverController &popover) override { note("didShow", popover); }
  bool popoverShouldClose(INPopoverController &popover) override {
    note("shouldClose", popover);
    return mayClose;
  }
  void popoverWillClose(INPopoverController &popover) override { note("willClose", popover); }
  void popoverDidClose(INPopoverController &popover) override { note("didClose", popover); }

  [[nodiscard]] bool last(const char *call) const { return !calls.empty() && calls.back().starts_with(call); }

 private:
  void note(const char *call, const INPopoverController &popover) {
    calls.emplace_back(std::string(call) + (popover.popoverIsVisible() ? " visible" : ""));
  }
};

class PopoverTest : public testing::Test {
 protected:
  PopoverTest() : button(&window), popover(&content) {
    window.setGeometry(300, 200, 400, 300);
    button.setGeometry(150, 100, 100, 30);
    popover.setDelegate(&record);
    window.show();
    window.activateWindow();
    EXPECT_TRUE(runUntil([&] { return window.isActiveWindow(); }));
  }

  void present(ArrowDirection direction = ArrowDirection::up, bool anchors = true) {
    popover.presentPopoverFromRect(button.rect(), &button, direction, anchors);
  }
  void open() {
    present();
    ASSERT_TRUE(runUntil([&] { return record.last("didShow") && popover.popoverWindow().isKeyWindow(); }));
    record.calls.clear();
  }
  /// Lets everything happen that has been caused so far: nothing that an absence is to be seen in has a
  /// delay.
  static void settle() {
    for (int turn = 0; turn < 3; ++turn) {
      bool done = false;
      const Alive alive;
      MainQueue::main().after(std::chrono::milliseconds(50), alive, [&] { done = true; });
      ASSERT_TRUE(runUntil([&] { return done; }));
    }
  }
  /// Where the bubble's window should be on the screen, in Qt's axis.
  [[nodiscard]] QRect below() const {
    const QPoint middle = button.mapToGlobal(QPoint(50, 30));
    return {middle.x() - 112, middle.y(), 224, 124};
  }

  INPopoverParentWindow window;
  QPushButton button;
  Content content;
  Record record;
  INPopoverController popover;
};

TEST_F(PopoverTest, EachAnimationTypeOpensAndClosesInItsOwnWay) {
  struct Case {
    int type;
    bool animates, opensAtOnce, zooms, closesAtOnce;
  };
  for (const Case &c : {Case{0, true, false, true, false},
                        {1, true, false, false, true},
                        {2, true, true, false, false},
                        {3, true, false, false, false},
                        {0, false, true, false, true}}) {
    SCOPED_TRACE(c.type * 10 + (c.animates ? 1 : 0));
    record.calls.clear();
    popover.setAnimationType(INPopoverAnimationType{c.type});
    popover.setAnimates(c.animates);
    const INPopoverWindow &bubble = popover.popoverWindow();
    present();
    EXPECT_EQ(bubble.zoomWindow() != nullptr, c.zooms);
    EXPECT_EQ(bubble.isVisible(), !c.zooms);
    EXPECT_EQ(bubble.alphaValue(), c.opensAtOnce || c.zooms ? 1 : 0);
    if (c.zooms) popover.closePopover();  // nothing is visible yet
    ASSERT_TRUE(runUntil([&] { return record.last("didShow"); }));
    EXPECT_THAT(record.calls, ElementsAre("willShow", "didShow visible"));
    ASSERT_TRUE(runUntil([&] { return bubble.isKeyWindow() && bubble.geometry() == below(); }));
    EXPECT_EQ(bubble.zoomWindow(), nullptr);
    EXPECT_EQ(bubble.alphaValue(), 1);
    EXPECT_EQ(bubble.windowHandle()->transientParent(), window.windowHandle());
    EXPECT_TRUE(window.isKeyWindow() && !window.isReallyKeyWindow());
    present(ArrowDirection::down);  // already open
    EXPECT_EQ(popover.arrowDirection(), ArrowDirection::up);

    record.calls.clear();
    popover.closePopover();
    EXPECT_EQ(bubble.isVisible(), !c.closesAtOnce);
    ASSERT_TRUE(runUntil([&] { return record.last("didClose"); }));
    EXPECT_THAT(record.calls, ElementsAre("shouldClose visible", "willClose visible", "didClose"));
    EXPECT_EQ(popover.arrowDirection(), ArrowDirection::none);
    ASSERT_TRUE(runUntil([&] { return window.isReallyKeyWindow(); }));
    popover.closePopover();
    EXPECT_EQ(record.calls.size(), 3) << "closing what is closed does nothing";
  }
}

TEST_F(PopoverTest, ClosesByTheRules) {
  enum class Cause { escape, ownWindow, otherProgram };
  using enum Cause;
  struct Case {
    const char *what;
    Cause cause;
    bool escape, resignsKey, inactive, closes;
  };
  const Case cases[] = {
      {"escape", escape, true, true, false, true},
      {"escape does nothing", escape, false, true, false, false},
      {"another window of ours", ownWindow, true, true, false, true},
      {"the window's focus only counts with the application", ownWindow, true, false, true, false},
      {"another application, and it waits", otherProgram, true, true, false, false},
      {"another application closes it too", otherProgram, true, true, true, true},
      {"only another application closes it", otherProgram, true, false, true, true},
      {"nothing closes it", otherProgram, true, false, false, false},
  };
  popover.setAnimates(false);
  for (const Case &c : cases) {
    SCOPED_TRACE(c.what);
    popover.setClosesWhenEscapeKeyPressed(c.escape);
    popover.setClosesWhenPopoverResignsKey(c.resignsKey);
    popover.setClosesWhenApplicationBecomesInactive(c.inactive);
    ASSERT_NO_FATAL_FAILURE(open());
    QWidget other;
    std::optional<tests::OtherProgram> application;
    if (c.cause == escape) {
      ASSERT_TRUE(tests::xdotool({"key", "Escape"}));
    } else if (c.cause == ownWindow) {
      other.setGeometry(900, 100, 100, 100);
      other.show();
      other.activateWindow();
      ASSERT_TRUE(runUntil([&] { return other.isActiveWindow() || !popover.popoverIsVisible(); }));
    } else {
      application.emplace();
      ASSERT_TRUE(runUntil([&] {
        return (application->hasFocus() && QGuiApplication::applicationState() != Qt::ApplicationActive) ||
               !popover.popoverIsVisible();
      }));
    }
    settle();
    EXPECT_EQ(!popover.popoverIsVisible(), c.closes);
    if (c.cause == otherProgram && c.resignsKey && !c.closes) {
      // While the other application is there: when it goes, the window manager gives the focus to the popover
      // by itself, which loses it to the window again and closes, as it should.
      window.activateWindow();
      EXPECT_TRUE(runUntil([&] { return popover.popoverWindow().isKeyWindow(); })) << "the focus comes back";
    }
    popover.forceClosePopover();
    application.reset();
    window.activateWindow();
    ASSERT_TRUE(runUntil([&] { return window.isReallyKeyWindow(); }));
  }
}

TEST_F(PopoverTest, FollowsItsAnchor) {
  popover.setAnimates(false);
  for (const bool anchors : {true, false}) {
    SCOPED_TRACE(anchors);
    button.move(150, 100);
    present(ArrowDirection::up, anchors);
    const INPopoverWindow &bubble = popover.popoverWindow();
    const auto isAt = [&](const QRect &place) {
      return runUntil([&] { return bubble.geometry() == place && bubble.frame() == turnedOnDesktop(place); });
    };
    ASSERT_TRUE(isAt(below()));
    button.move(170, 90);
    EXPECT_TRUE(isAt(anchors ? below() : below().translated(-20, 10)));
    window.move(window.pos() + QPoint(40, 30));
    EXPECT_TRUE(isAt(anchors ? below() : below().translated(-20, 10)));
    button.move(390, 100);  // out of the window
    EXPECT_EQ(popover.popoverIsVisible(), !anchors);
    popover.forceClosePopover();
    button.move(10, 10);
    EXPECT_EQ(popover.arrowDirection(), ArrowDirection::none) << "nothing is followed any more";
  }
  button.move(150, 100);
  open();
  // Where it has no more room it goes to the other side, and it goes with its window.
  window.move(300, 480);
  ASSERT_TRUE(runUntil([&] { return button.mapToGlobal(QPoint()).y() > 400; }));
  popover.setContentSize({200, 350});
  popover.recalculateAndResetArrowDirection();
  EXPECT_EQ(turnedOnDesktop(popover.popoverWindow().frame()).bottom(), button.mapToGlobal(QPoint()).y());
  window.hide();
  EXPECT_FALSE(popover.popoverIsVisible());
}

TEST_F(PopoverTest, SurvivesWhatGoesInTheMiddle) {
  auto anchor = std::make_unique<QPushButton>(&window);
  auto second = std::make_unique<INPopoverController>();
  auto view = std::make_unique<Content>();
  second->setContentViewController(view.get());
  const auto presentSecond = [&] {
    second->presentPopoverFromRect(anchor->rect(), anchor.get(), ArrowDirection::up, true);
  };
  presentSecond();
  ASSERT_TRUE(second->popoverWindow().zoomWindow());
  presentSecond();  // once more
  ASSERT_TRUE(runUntil([&] { return second->popoverIsVisible(); }));
  anchor.reset();
  EXPECT_TRUE(runUntil([&] { return !second->popoverIsVisible(); }));
  anchor = std::make_unique<QPushButton>(&window);
  presentSecond();
  second.reset();  // while it zooms
  EXPECT_EQ(view->view().parent(), nullptr) << "the content is handed back";
  // A popover that its delegate opens again as it closes shows to the end.
  class Again : public INPopoverControllerDelegate {
   public:
    explicit Again(QWidget &view) : m_view(view) {}
    void popoverDidShow(INPopoverController &popover) override {
      if (++shown == 1) popover.closePopover();
    }
    void popoverDidClose(INPopoverController &popover) override {
      MainQueue::main().async([&] { popover.presentPopoverFromRect({}, &m_view, ArrowDirection::up, true); });
    }
    int shown = 0;

   private:
    QWidget &m_view;
  } again(window);
  popover.setDelegate(&again);
  present();
  EXPECT_TRUE(runUntil([&] { return again.shown == 2; }));
  // The end of the program closes every window, and waits for none that objects.
  popover.setDelegate(&record);
  record.mayClose = false;
  popover.closePopover();
  EXPECT_TRUE(popover.popoverIsVisible());
  EXPECT_TRUE(popover.popoverWindow().windowHandle()->close());
  EXPECT_THAT(record.calls, ElementsAre("shouldClose visible", "willClose visible", "didClose"));
}

TEST_F(PopoverTest, WithACompositorItIsSoftAndNotCutOut) {
  window.setStyleSheet(QStringLiteral("background: rgb(0, 120, 0)"));
  popover.setAnimates(false);
  popover.setColor(QColor(200, 0, 0));
  QProcess compositor;
  compositor.start(QStringLiteral("picom"), {QStringLiteral("--backend"), QStringLiteral("xrender"),
                                             QStringLiteral("--config"), QStringLiteral("/dev/null")});
  ASSERT_TRUE(runUntil([] { return desktopIsComposited(); }));
  popover.presentPopoverFromRect(QRect(200, 20, 0, 0), &window, ArrowDirection::up, true);
  EXPECT_TRUE(popover.popoverWindow().mask().isEmpty());
  const QRect frame = popover.popoverWindow().geometry();
  EXPECT_TRUE(runUntil([&] {
    const QPixmap all = QGuiApplication::primaryScreen()->grabWindow(0);
    const QImage image = all.toImage();
    // The bubble, and what is behind its corner or a shadow on that.
    return image.pixelColor(frame.center()) == QColor(200, 0, 0) &&
           image.pixelColor(frame.topLeft()).green() > 70;
  }));
  compositor.terminate();
  EXPECT_TRUE(compositor.waitForFinished());
}

TEST_F(PopoverTest, TheStatusItemsPopoverHangsBelowARectangleOfTheDesktop) {
  Popover status;
  Content other({300, 150});
  status.setContentViewController(&content);
  status.show(QRectF(600, 0, 22, 24), nullptr);
  EXPECT_TRUE(status.isShown());
  const QWidget &bubble = status.controller().popoverWindow();
  EXPECT_TRUE(runUntil([&] { return bubble.geometry() == QRect(611 - 112, 24, 224, 124); }));
  status.setContentViewController(&other);
  EXPECT_TRUE(runUntil([&] { return bubble.geometry() == QRect(611 - 162, 24, 324, 174); }));
  EXPECT_EQ(content.view().parent(), nullptr);
  EXPECT_TRUE(runUntil([&] { return bubble.isActiveWindow(); }));
  window.activateWindow();
  ASSERT_TRUE(runUntil([&] { return window.isActiveWindow(); }));
  settle();
  EXPECT_TRUE(status.isShown()) << "stays until it is closed";
  status.performClose();
  EXPECT_TRUE(runUntil([&] { return !status.isShown(); }));
  status.setTransient(true);
  status.show(button.rect(), &button, RectEdge::maxX);
  EXPECT_EQ(status.controller().arrowDirection(), ArrowDirection::left);
  ASSERT_TRUE(runUntil([&] { return bubble.isActiveWindow(); }));
  ASSERT_TRUE(tests::xdotool({"mousemove", "310", "490", "click", "1"}));  // into the window
  EXPECT_TRUE(runUntil([&] { return !status.isShown(); }));
}

}  // namespace
}  // namespace velmora
