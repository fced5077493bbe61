// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
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
#include "ui/popover/popOverView.h"

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
    bool animates;
    bool opensAtOnce;
    bool zooms;
    bool closesAtOnce;
  };
  for (const Case &c : {Case{0, true, false, true, false},
                        {1, true, false, false, true},
                        {2, true, true, false, false},
                        {3, true, false, false, false},
                        {0, false, true, false, true},
                        {1, false, true, false, true}}) {
    SCOPED_TRACE(c.type * 10 + (c.animates ? 1 : 0));
    record.calls.clear();
    popover.setAnimationType(INPopoverAnimationType{c.type});
    popover.setAnimates(c.animates);
    INPopoverWindow &bubble = popover.popoverWindow();
    present();
    EXPECT_EQ(record.calls.size(), c.opensAtOnce ? 2 : 1);
    EXPECT_EQ(bubble.zoomWindow() != nullptr, c.zooms);
    EXPECT_EQ(bubble.isVisible(), !c.zooms);
    EXPECT_EQ(bubble.alphaValue(), c.opensAtOnce || c.zooms ? 1 : 0);
    if (c.zooms) {
      EXPECT_EQ(bubble.zoomWindow()->frame(), popover.popoverFrameWithSize({20, 20}, ArrowDirection::up));
      popover.closePopover();  // nothing is visible yet
      const double full = bubble.frame().width();
      EXPECT_TRUE(
          runUntil([&] { return !bubble.zoomWindow() || bubble.zoomWindow()->frame().width() > full; }));
      EXPECT_TRUE(bubble.zoomWindow()) << "never larger than the popover";
    }
    ASSERT_TRUE(runUntil([&] { return record.last("didShow"); }));
    EXPECT_THAT(record.calls, ElementsAre("willShow", "didShow visible"));
    ASSERT_TRUE(runUntil([&] { return bubble.isKeyWindow() && bubble.geometry() == below(); }));
    EXPECT_EQ(bubble.zoomWindow(), nullptr);
    EXPECT_EQ(bubble.alphaValue(), 1);
    EXPECT_EQ(bubble.parentWindow(), &window);
    EXPECT_EQ(bubble.windowHandle()->transientParent(), window.windowHandle());
    EXPECT_EQ(popover.positionView(), &button);
    EXPECT_EQ(content.view().geometry(), QRect(12, 12, 200, 100));
    EXPECT_TRUE(window.isKeyWindow() && !window.isReallyKeyWindow());
    present(ArrowDirection::down);  // already open
    EXPECT_EQ(popover.arrowDirection(), ArrowDirection::up);

    record.calls.clear();
    popover.closePopover();
    EXPECT_EQ(bubble.isVisible(), !c.closesAtOnce);
    ASSERT_TRUE(runUntil([&] { return record.last("didClose"); }));
    EXPECT_THAT(record.calls, ElementsAre("shouldClose visible", "willClose visible", "didClose"));
    EXPECT_EQ(popover.arrowDirection(), ArrowDirection::none);
    EXPECT_EQ(popover.positionView(), nullptr);
    EXPECT_EQ(bubble.parentWindow(), nullptr);
    EXPECT_TRUE(popover.popoverFrameWithSize({10, 10}, ArrowDirection::down).topLeft().isNull() ||
                popover.popoverFrameWithSize({10, 10}, ArrowDirection::down).y() == 0);
    ASSERT_TRUE(runUntil([&] { return window.isReallyKeyWindow(); }));
    popover.closePopover();
    popover.forceClosePopover();
    EXPECT_EQ(record.calls.size(), 3) << "closing what is closed does nothing";
  }
  record.calls.clear();
  popover.setAnimates(true);
  popover.setAnimationType(INPopoverAnimationType{9});
  present();
  EXPECT_THAT(record.calls, ElementsAre("willShow"));
  EXPECT_FALSE(popover.popoverIsVisible());
}

TEST_F(PopoverTest, ClosesByTheRules) {
  enum class Cause { escape, ownWindow, otherApplication, delegateObjects };
  struct Case {
    const char *what;
    Cause cause;
    bool escape;
    bool resignsKey;
    bool inactive;
    bool closes;
  };
  const Case cases[] = {
      {"escape", Cause::escape, true, true, false, true},
      {"escape does nothing", Cause::escape, false, true, false, false},
      {"another window of ours", Cause::ownWindow, true, true, false, true},
      {"another window of ours, and it stays", Cause::ownWindow, true, false, false, false},
      {"the window's focus only counts with the application", Cause::ownWindow, true, false, true, false},
      {"another application, and it waits", Cause::otherApplication, true, true, false, false},
      {"another application closes it too", Cause::otherApplication, true, true, true, true},
      {"only another application closes it", Cause::otherApplication, true, false, true, true},
      {"nothing closes it", Cause::otherApplication, true, false, false, false},
      {"the delegate objects", Cause::delegateObjects, true, true, false, false},
  };
  popover.setAnimates(false);
  for (const Case &c : cases) {
    SCOPED_TRACE(c.what);
    record.calls.clear();
    record.mayClose = c.cause != Cause::delegateObjects;
    popover.setClosesWhenEscapeKeyPressed(c.escape);
    popover.setClosesWhenPopoverResignsKey(c.resignsKey);
    popover.setClosesWhenApplicationBecomesInactive(c.inactive);
    ASSERT_NO_FATAL_FAILURE(open());
    QWidget other;
    std::optional<tests::OtherProgram> application;
    switch (c.cause) {
      case Cause::escape: {
        QKeyEvent press(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
        QApplication::sendEvent(content.view().findChild<QLineEdit *>(), &press);
        break;
      }
      case Cause::ownWindow:
        other.setGeometry(900, 100, 100, 100);
        other.show();
        other.activateWindow();
        ASSERT_TRUE(runUntil([&] { return other.isActiveWindow() || !popover.popoverIsVisible(); }));
        break;
      case Cause::otherApplication:
        application.emplace();
        ASSERT_TRUE(runUntil([&] {
          return (application->hasFocus() && QGuiApplication::applicationState() != Qt::ApplicationActive) ||
                 !popover.popoverIsVisible();
        }));
        break;
      case Cause::delegateObjects: popover.closePopover(); break;
    }
    settle();
    EXPECT_EQ(!popover.popoverIsVisible(), c.closes);
    if (c.cause == Cause::otherApplication && c.resignsKey && !c.closes) {
      // While the other application is there: when it goes, the window manager gives the focus to the popover
      // by itself, which loses it to the window again and closes, as it should.
      window.activateWindow();
      EXPECT_TRUE(runUntil([&] { return popover.popoverWindow().isKeyWindow(); })) << "the focus comes back";
    }
    record.calls.clear();
    popover.forceClosePopover();
    EXPECT_EQ(record.calls.empty(), c.closes) << "by force without asking";
    EXPECT_THAT(record.calls, testing::Not(testing::Contains("shouldClose visible")));
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
    record.calls.clear();
    present(ArrowDirection::up, anchors);
    INPopoverWindow &bubble = popover.popoverWindow();
    const auto isAt = [&](const QRect &place) {
      return runUntil([&] { return bubble.geometry() == place && bubble.frame() == turnedOnDesktop(place); });
    };
    ASSERT_TRUE(isAt(below()));
    button.move(170, 90);
    EXPECT_TRUE(isAt(anchors ? below() : below().translated(-20, 10)));
    window.move(window.pos() + QPoint(40, 30));
    EXPECT_TRUE(isAt(anchors ? below() : below().translated(-20, 10)));
    popover.setContentSize({100, 50});
    EXPECT_EQ(bubble.frame().size(), QSizeF(124, 74));
    popover.setContentSize({200, 100});
    button.move(390, 100);  // out of the window
    EXPECT_EQ(popover.popoverIsVisible(), !anchors);
    popover.forceClosePopover();
    button.move(10, 10);
    EXPECT_EQ(popover.arrowDirection(), ArrowDirection::none) << "nothing is followed any more";
  }
  button.move(150, 100);
  open();
  window.hide();
  EXPECT_FALSE(popover.popoverIsVisible()) << "goes with its window";
}

TEST_F(PopoverTest, ChoosesTheSideWithRoom) {
  popover.setAnimates(false);
  button.setGeometry(150, 0, 100, 30);
  window.move(300, 0);
  ASSERT_TRUE(runUntil([&] { return button.mapToGlobal(QPoint()).y() < 60; }));
  present(ArrowDirection::down);
  EXPECT_EQ(popover.arrowDirection(), ArrowDirection::up);
  window.move(300, 480);
  ASSERT_TRUE(runUntil([&] { return button.mapToGlobal(QPoint()).y() > 400; }));
  popover.setContentSize({200, 350});
  popover.recalculateAndResetArrowDirection();
  EXPECT_EQ(popover.arrowDirection(), ArrowDirection::down);
  EXPECT_EQ(turnedOnDesktop(popover.popoverWindow().frame()).bottom(), button.mapToGlobal(QPoint()).y());
}

TEST_F(PopoverTest, SurvivesWhatGoesInTheMiddle) {
  auto anchor = std::make_unique<QPushButton>(&window);
  anchor->setGeometry(10, 10, 50, 20);
  auto second = std::make_unique<INPopoverController>();
  auto view = std::make_unique<Content>();
  second->setContentViewController(view.get());
  second->presentPopoverFromRect(anchor->rect(), anchor.get(), ArrowDirection::up, true);
  ASSERT_TRUE(second->popoverWindow().zoomWindow());
  second->presentPopoverFromRect(anchor->rect(), anchor.get(), ArrowDirection::up, true);  // once more
  ASSERT_TRUE(runUntil([&] { return second->popoverIsVisible(); }));
  anchor.reset();
  EXPECT_TRUE(runUntil([&] { return !second->popoverIsVisible(); }));
  anchor = std::make_unique<QPushButton>(&window);
  second->presentPopoverFromRect(anchor->rect(), anchor.get(), ArrowDirection::up, true);
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
  EXPECT_TRUE(popover.popoverWindow().windowHandle()->close());
  EXPECT_THAT(record.calls, ElementsAre("willClose visible", "didClose"));
}

/// The pixel of the screen, as a user sees it.
QColor seen(const QPoint &place) {
  QScreen *screen = QGuiApplication::primaryScreen();
  return screen->grabWindow(0, place.x(), place.y(), 1, 1).toImage().pixelColor(0, 0);
}

int whitePixels(const QRect &area) {
  const QImage image = QGuiApplication::primaryScreen()
                           ->grabWindow(0, area.x(), area.y(), area.width(), area.height())
                           .toImage();
  int count = 0;
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) count += qGray(image.pixel(x, y)) > 200 ? 1 : 0;
  }
  return count;
}

TEST_F(PopoverTest, ShowsNoBlackCornersWithACompositorAndWithout) {
  window.setStyleSheet(QStringLiteral("background: rgb(0, 120, 0)"));
  button.hide();
  popover.setAnimates(false);
  popover.setColor(QColor(200, 0, 0));
  QProcess compositor;
  for (const bool composited : {false, true}) {
    SCOPED_TRACE(composited);
    if (composited) {
      compositor.start(QStringLiteral("picom"), {QStringLiteral("--backend"), QStringLiteral("xrender"),
                                                 QStringLiteral("--config"), QStringLiteral("/dev/null")});
      ASSERT_TRUE(runUntil([] { return desktopIsComposited(); }));
    }
    EXPECT_EQ(desktopIsComposited(), composited);
    popover.presentPopoverFromRect(QRect(200, 20, 0, 0), &window, ArrowDirection::up, true);
    EXPECT_EQ(popover.popoverWindow().mask().isEmpty(), composited);
    const QRect frame = popover.popoverWindow().geometry();
    EXPECT_TRUE(runUntil([&] { return seen(frame.center()) == QColor(200, 0, 0); }));
    EXPECT_TRUE(runUntil([&] { return seen(frame.topLeft() + QPoint(112, 6)) == QColor(200, 0, 0); }))
        << "the arrow";
    for (const QPoint &corner : {frame.topLeft(), frame.bottomLeft() + QPoint(12, -12)}) {
      EXPECT_TRUE(runUntil([&] { return seen(corner).green() > 70; })) << "what is behind, or a shadow on it";
    }
    popover.forceClosePopover();

    // The first run's hint, in the look that it comes with: all its letters, white, on a black bubble.
    popOverView hint;
    INPopoverController first(&hint);
    first.setAnimates(false);
    first.presentPopoverFromRect(QRect(200, 20, 0, 0), &window, ArrowDirection::up, true);
    const QRect all = first.popoverWindow().geometry();
    for (const QLabel *label : hint.view().findChildren<QLabel *>()) {
      EXPECT_GE(label->height(), label->heightForWidth(label->width()));
      const QRect place(label->mapToGlobal(QPoint()), label->size());
      EXPECT_TRUE(runUntil([&] { return seen(place.topLeft() - QPoint(2, 2)) == QColor(Qt::black); }));
      EXPECT_TRUE(runUntil([&] { return whitePixels(place) > label->text().size() * 5; }));
    }
    EXPECT_TRUE(runUntil([&] { return seen(all.topLeft()).green() > 70; }));
  }
  compositor.terminate();
  EXPECT_TRUE(compositor.waitForFinished());
}

TEST_F(PopoverTest, TheStatusItemsPopoverHangsBelowARectangleOfTheDesktop) {
  Popover status;
  Content other({300, 150});
  status.setContentViewController(&content);
  EXPECT_FALSE(status.isShown());
  status.performClose();
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
  const ArrowDirection directions[] = {ArrowDirection::right, ArrowDirection::up, ArrowDirection::left,
                                       ArrowDirection::down};
  for (const int edge : {0, 1, 2, 3}) {
    status.setTransient(true);
    status.show(button.rect(), &button, RectEdge{edge});
    EXPECT_EQ(status.controller().arrowDirection(), directions[edge]);
    ASSERT_TRUE(runUntil([&] { return bubble.isActiveWindow(); }));
    QWidget elsewhere;
    elsewhere.show();
    elsewhere.activateWindow();
    ASSERT_TRUE(runUntil([&] { return !status.isShown(); }));
  }
}

}  // namespace
}  // namespace velmora
