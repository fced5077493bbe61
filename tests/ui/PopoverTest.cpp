// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include <QApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QWindow>
#include <memory>

#include "foundation/MainQueue.h"
#include "support/EventLoop.h"
#include "support/OtherProgram.h"
#include "ui/popover/INPopoverController.h"
#include "ui/popover/INPopoverParentWindow.h"
#include "ui/popover/Popover.h"

namespace velmora {
namespace {

using testing::ElementsAre;
using tests::runUntil;

struct Content : ViewController {
  explicit Content(const QSize &size = {200, 100}) { widget.resize(size); }
  QWidget &view() override { return widget; }
  QWidget widget;
  QLineEdit edit{&widget};
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

  void present(ArrowDirection direction = ArrowDirection::up) {
    popover.presentPopoverFromRect(button.rect(), &button, direction, true);
  }

  INPopoverParentWindow window;
  QPushButton button;
  Content content;
  Record record;
  INPopoverController popover;
};

TEST_F(PopoverTest, OpensAndClosesInOrder) {
  using enum INPopoverAnimationType;
  for (const auto &[type, animates] : {std::pair(pop, true), {fadeInAndOut, true}, {pop, false}}) {
    SCOPED_TRACE(static_cast<int>(type) * 10 + (animates ? 1 : 0));
    record.calls.clear();
    popover.setAnimationType(type);
    popover.setAnimates(animates);
    const INPopoverWindow &bubble = popover.popoverWindow();
    present();
    const bool zooms = animates && type == pop;
    EXPECT_EQ(bubble.isVisible(), !zooms);
    if (zooms) popover.closePopover();  // nothing is visible yet
    ASSERT_TRUE(runUntil([&] { return record.last("didShow"); }));
    EXPECT_THAT(record.calls, ElementsAre("willShow", "didShow visible"));
    const QPoint anchor = button.mapToGlobal(QPoint(50, 30));
    const QRect below(anchor.x() - 112, anchor.y(), 224, 124);
    ASSERT_TRUE(runUntil([&] { return bubble.isKeyWindow() && bubble.geometry() == below; }));
    EXPECT_EQ(bubble.zoomWindow(), nullptr);
    EXPECT_EQ(bubble.alphaValue(), 1);
    EXPECT_TRUE(window.isKeyWindow() && !window.isReallyKeyWindow());
    present(ArrowDirection::down);  // already open
    EXPECT_EQ(popover.arrowDirection(), ArrowDirection::up);

    record.calls.clear();
    ASSERT_TRUE(tests::xdotool({"key", "Escape"}));
    ASSERT_TRUE(runUntil([&] { return record.last("didClose"); }));
    EXPECT_THAT(record.calls, ElementsAre("shouldClose visible", "willClose visible", "didClose"));
    ASSERT_TRUE(runUntil([&] { return window.isReallyKeyWindow(); }));
    popover.closePopover();
    EXPECT_EQ(record.calls.size(), 3) << "closing what is closed does nothing";
  }
}

TEST_F(PopoverTest, GoesWhileItZoomsAndDoesNotHoldUpTheEndOfTheProgram) {
  auto second = std::make_unique<INPopoverController>(&content);
  second->presentPopoverFromRect(button.rect(), &button, ArrowDirection::up, true);
  ASSERT_TRUE(second->popoverWindow().zoomWindow());
  second.reset();
  EXPECT_EQ(content.view().parent(), nullptr) << "the content is handed back";
  popover.setAnimates(false);
  present();
  record.calls.clear();
  record.mayClose = false;
  popover.closePopover();
  EXPECT_TRUE(popover.popoverIsVisible());
  // The end of the program closes every window, and waits for none that objects.
  EXPECT_TRUE(popover.popoverWindow().windowHandle()->close());
  EXPECT_THAT(record.calls, ElementsAre("shouldClose visible", "willClose visible", "didClose"));
}

TEST_F(PopoverTest, TheStatusItemsPopoverHangsBelowARectangleOfTheDesktop) {
  Popover status;
  Content other({300, 150});
  status.setDelegate(&record);
  status.setContentViewController(&content);
  status.show(QRectF(600, 0, 22, 24), nullptr);
  EXPECT_TRUE(status.isShown());
  const QWidget &bubble = status.controller().popoverWindow();
  EXPECT_TRUE(runUntil([&] { return bubble.geometry() == QRect(611 - 112, 24, 224, 124); }));
  status.setContentViewController(&other);
  EXPECT_TRUE(runUntil([&] { return bubble.geometry() == QRect(611 - 162, 24, 324, 174); }));
  EXPECT_EQ(content.view().parent(), nullptr);
  EXPECT_TRUE(runUntil([&] { return bubble.isActiveWindow() && record.last("didShow"); }));
  window.activateWindow();
  ASSERT_TRUE(runUntil([&] { return window.isActiveWindow(); }));
  // It would close on the turn after it has lost the focus.
  bool isLater = false;
  MainQueue::main().async([&] { isLater = true; });
  ASSERT_TRUE(runUntil([&] { return isLater; }));
  EXPECT_TRUE(record.last("didShow")) << "stays until it is closed";
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
