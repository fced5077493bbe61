// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QPointer>
#include <QVariantAnimation>
#include <QWidget>
#include <functional>
#include <memory>

#include "foundation/MainQueue.h"
#include "ui/popover/INPopoverWindowFrame.h"
#include "ui/popover/PopoverZoomWindow.h"

namespace velmora {

class INPopoverController;

/// The window of a popover: frameless, translucent where the desktop can and cut to its shape where it
/// cannot, with a bubble as its content and the shown view in that. Rectangles are of the desktop in the
/// upward axis, and a frame is the content with the arrow's height on every side. Main thread.
class INPopoverWindow : public QWidget {
  Q_OBJECT

 public:
  /// `popoverController` outlives the window.
  INPopoverWindow(INPopoverController &popoverController, const QRectF &contentRect);
  ~INPopoverWindow() override;

  [[nodiscard]] INPopoverController &popoverController() const { return m_popoverController; }
  [[nodiscard]] INPopoverWindowFrame &frameView() { return m_frameView; }

  [[nodiscard]] QRectF contentRectForFrameRect(const QRectF &frame) const;
  [[nodiscard]] QRectF frameRectForContentRect(const QRectF &content) const;

  [[nodiscard]] QRectF frame() const { return m_frame; }
  /// An empty frame is kept and not shown. Only a visible window moves in steps.
  void setFrame(const QRectF &frame, bool animated = false);

  /// The shown view or null. A view is a child of the window from its setting to the next one's or the
  /// window's end, and without a parent afterwards.
  [[nodiscard]] QWidget *popoverContentView() const { return m_popoverContentView.data(); }
  void setPopoverContentView(QWidget *view);

  /// 0 to 1; shows under a compositor only.
  [[nodiscard]] double alphaValue() const { return m_alphaValue; }
  void setAlphaValue(double alpha);
  /// Called when an animation of `alphaValue` has come to its end; empty for nobody.
  void setAlphaAnimationDelegate(std::function<void()> animationDidStop);

  /// Shows the window as the controller's animation type says. Nothing when visible, or for a type that does
  /// not show.
  void presentAnimated();
  /// Fades out.
  void dismissAnimated();
  /// The picture that stands for the window while it pops up, else null.
  [[nodiscard]] const PopoverZoomWindow *zoomWindow() const { return m_zoomWindow.get(); }

  void makeKeyAndOrderFront();
  void orderOut();
  /// Gives a hidden window another native one. A window manager and the desktop are late at times: what they
  /// still tell of the native window, as that it has got and lost the focus, is not taken for news of the
  /// next time it is shown. Not in an event of this window.
  void renew();
  [[nodiscard]] bool isKeyWindow() const { return isActiveWindow(); }

  /// Tells the window manager what to keep the window above, before it is shown or later.
  void setTransientParent(QWidget *window);
  /// The window that this one is a child of, or null.
  [[nodiscard]] QWidget *parentWindow() const { return m_parentWindow.data(); }
  void setParentWindow(QWidget *window);

  /// Closes the popover if it is to close by Escape.
  void cancelOperation();

 Q_SIGNALS:
  /// The focus has gone elsewhere, and the application's state is up to date.
  void didResignKey();

 protected:
  bool event(QEvent *event) override;
  void closeEvent(QCloseEvent *event) override;
  void keyPressEvent(QKeyEvent *event) override;
  void paintEvent(QPaintEvent *event) override;
  void resizeEvent(QResizeEvent *event) override;

 private:
  void presentWithPop();
  void animateAlpha(double target);
  void place();
  void layOut();
  void fitShape();
  void screenChanged();

  INPopoverController &m_popoverController;
  INPopoverWindowFrame m_frameView;
  QPointer<QWidget> m_popoverContentView;
  QPointer<QWidget> m_parentWindow;
  QRectF m_frame;
  double m_alphaValue = 1.0;
  bool m_composited = true;
  bool m_hadKey = false;  // since it was shown
  std::function<void()> m_alphaAnimationDidStop;
  QVariantAnimation m_alphaAnimation;
  QVariantAnimation m_frameAnimation;
  std::unique_ptr<PopoverZoomWindow> m_zoomWindow;
  Alive m_alive;
};

}  // namespace velmora
