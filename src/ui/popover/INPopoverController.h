// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Opens a popover at a rectangle of a view and closes it again.
//
//   INPopoverController popover(&hint);
//   popover.presentPopoverFromRect(button.rect(), &button, ArrowDirection::up, true);
//   popover.closePopover();
#pragma once

#include <QPointer>
#include <QRectF>
#include <QWidget>
#include <memory>

#include "foundation/MainQueue.h"
#include "foundation/NotificationCenter.h"
#include "platform/ViewController.h"
#include "ui/popover/INPopoverControllerDelegate.h"
#include "ui/popover/INPopoverWindow.h"

namespace velmora {

/// What a popover does when it opens, and when it closes. Other numbers do not open at all while animated.
enum class INPopoverAnimationType : int { pop = 0, fadeIn = 1, fadeOut = 2, fadeInAndOut = 3 };

/// The name of the notification with which a popover that has lost the focus closes itself.
inline const QString kWindowDidResignKeyNotification = QStringLiteral("NSWindowDidResignKeyNotification");
/// The same for an application that has lost it.
inline const QString kApplicationDidResignActiveNotification =
    QStringLiteral("NSApplicationDidResignActiveNotification");

/// Sizes are logical pixels; frames are of the desktop in the upward axis. Main thread.
class INPopoverController {
 public:
  explicit INPopoverController(ViewController *contentViewController = nullptr);
  /// An open popover goes without a word to the delegate.
  ~INPopoverController();
  INPopoverController(const INPopoverController &) = delete;
  INPopoverController &operator=(const INPopoverController &) = delete;

  /// Opens the popover at `rect` of `positionView`, in that view's own (Qt's) coordinates. Without a view the
  /// rectangle is one of the desktop in Qt's coordinates, as a status item has it, and nothing is followed or
  /// gets the focus back. With `anchorsToPositionView` the popover follows the view. Nothing when visible.
  /// Not in an event of the popover's window, as by the delegate when Escape has closed it.
  void presentPopoverFromRect(const QRectF &rect, QWidget *positionView,
                              ArrowDirection preferredArrowDirection, bool anchorsToPositionView);

  /// Closes unless the delegate objects, or the focus went to another application and the popover is to stay
  /// then. `sender` is the notification that causes it, if one does. Nothing when not visible.
  void closePopover(const Notification *sender = nullptr);
  /// Closes without asking. Nothing when not visible.
  void forceClosePopover();

  /// Closes at once: the desktop is about to close the window. Nothing when not visible.
  void popoverWindowWillClose();

  /// Chooses the arrow's side anew, the present one preferred.
  void recalculateAndResetArrowDirection();

  /// Gives the popover the focus if the window that it belongs to has it.
  void checkPopoverKeyWindowStatus();

  [[nodiscard]] bool popoverIsVisible() const { return m_popoverWindow->isVisible(); }
  [[nodiscard]] INPopoverWindow &popoverWindow() const { return *m_popoverWindow; }
  /// The frame of the window for a content of `size`; empty without a direction.
  [[nodiscard]] QRectF popoverFrameWithSize(const QSizeF &size, ArrowDirection direction) const;

  /// Outlives the popover, or is taken back.
  [[nodiscard]] INPopoverControllerDelegate *delegate() const { return m_delegate; }
  void setDelegate(INPopoverControllerDelegate *delegate) { m_delegate = delegate; }

  /// Outlives the popover, or is taken back. The content takes the size of the view.
  [[nodiscard]] ViewController *contentViewController() const { return m_contentViewController; }
  void setContentViewController(ViewController *controller);
  [[nodiscard]] QWidget *contentView() const;
  [[nodiscard]] QSizeF contentSize() const { return m_contentSize; }
  void setContentSize(const QSizeF &size);
  /// The view that the popover is open at, else null.
  [[nodiscard]] QWidget *positionView() const { return m_positionView.data(); }

  [[nodiscard]] bool closesWhenEscapeKeyPressed() const { return m_closesWhenEscapeKeyPressed; }
  void setClosesWhenEscapeKeyPressed(bool closes) { m_closesWhenEscapeKeyPressed = closes; }
  /// This and the next are looked at when the popover opens.
  [[nodiscard]] bool closesWhenPopoverResignsKey() const { return m_closesWhenPopoverResignsKey; }
  void setClosesWhenPopoverResignsKey(bool closes) { m_closesWhenPopoverResignsKey = closes; }
  [[nodiscard]] bool closesWhenApplicationBecomesInactive() const {
    return m_closesWhenApplicationBecomesInactive;
  }
  void setClosesWhenApplicationBecomesInactive(bool closes) {
    m_closesWhenApplicationBecomesInactive = closes;
  }
  /// Whether the bubble makes way along the side with the arrow, which goes on pointing at the anchor, rather
  /// than leave the screen. Looked at whenever the popover is placed.
  [[nodiscard]] bool staysOnScreen() const { return m_staysOnScreen; }
  void setStaysOnScreen(bool stays) { m_staysOnScreen = stays; }
  [[nodiscard]] bool animates() const { return m_animates; }
  void setAnimates(bool animates) { m_animates = animates; }
  [[nodiscard]] INPopoverAnimationType animationType() const { return m_animationType; }
  void setAnimationType(INPopoverAnimationType type) { m_animationType = type; }

  // The look, as the window's frame view has it.
  [[nodiscard]] const QColor &color() const { return frameView().color(); }
  void setColor(const QColor &color) { frameView().setColor(color); }
  [[nodiscard]] const QColor &borderColor() const { return frameView().borderColor(); }
  void setBorderColor(const QColor &color) { frameView().setBorderColor(color); }
  [[nodiscard]] const QColor &topHighlightColor() const { return frameView().topHighlightColor(); }
  void setTopHighlightColor(const QColor &color) { frameView().setTopHighlightColor(color); }
  [[nodiscard]] double borderWidth() const { return frameView().borderWidth(); }
  void setBorderWidth(double width) { frameView().setBorderWidth(width); }
  [[nodiscard]] double cornerRadius() const { return frameView().cornerRadius(); }
  void setCornerRadius(double radius) { frameView().setCornerRadius(radius); }
  [[nodiscard]] QSizeF arrowSize() const { return frameView().arrowSize(); }
  void setArrowSize(const QSizeF &size) { frameView().setArrowSize(size); }
  [[nodiscard]] ArrowDirection arrowDirection() const { return frameView().arrowDirection(); }
  void setArrowDirection(ArrowDirection direction) { frameView().setArrowDirection(direction); }

 private:
  [[nodiscard]] INPopoverWindowFrame &frameView() const { return m_popoverWindow->frameView(); }
  [[nodiscard]] QRectF screenRectOfAnchor() const;
  [[nodiscard]] QRectF screenFrame() const;
  [[nodiscard]] ArrowDirection arrowDirectionWithPreferred(ArrowDirection preferred) const;
  [[nodiscard]] QSizeF frameSize(const QSizeF &contentSize) const;
  void placeWindow(bool animated = false);
  void addObservers(bool anchorsToPositionView);
  void followParentWindow(QEvent &event);
  void positionViewFrameChanged();
  void applicationDidBecomeActive();
  void animationDidStop();
  void closePopoverAndResetVariables();

  INPopoverControllerDelegate *m_delegate = nullptr;
  ViewController *m_contentViewController = nullptr;
  std::unique_ptr<INPopoverWindow> m_popoverWindow;
  QSizeF m_contentSize;
  QPointer<QWidget> m_positionView;
  QRectF m_rect;                // in the view, Qt's axis
  QRectF m_screenRect;          // on the desktop, upward
  QPointF m_parentWindowPlace;  // upward
  bool m_closesWhenEscapeKeyPressed = true;
  bool m_closesWhenPopoverResignsKey = true;
  bool m_closesWhenApplicationBecomesInactive = false;
  bool m_staysOnScreen = false;
  bool m_animates = true;
  INPopoverAnimationType m_animationType = INPopoverAnimationType::pop;
  unsigned m_openings = 0;
  std::unique_ptr<QObject> m_observers;  // all that is observed ends with it
  Alive m_alive;
};

}  // namespace velmora
