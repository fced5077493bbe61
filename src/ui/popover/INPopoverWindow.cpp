// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "ui/popover/INPopoverWindow.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QWindow>

#include "platform/window/Compositor.h"
#include "ui/UpwardAxis.h"
#include "ui/popover/INPopoverController.h"

namespace velmora {

namespace {
constexpr int kFadeMilliseconds = 200;
constexpr int kPopMilliseconds = 250;
constexpr int kResizeMilliseconds = 200;
constexpr QSizeF kPopStart(20, 20);
constexpr double kPopOvershoot = 1.2;
}  // namespace

INPopoverWindow::INPopoverWindow(INPopoverController &popoverController, const QRectF &contentRect)
    : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::NoDropShadowWindowHint),
      m_popoverController(popoverController),
      m_frameView(this) {
  setAttribute(Qt::WA_TranslucentBackground);
  setAttribute(Qt::WA_QuitOnClose, false);
  connect(&m_frameView, &INPopoverWindowFrame::shapeChanged, this, &INPopoverWindow::layOut);
  connect(&m_alphaAnimation, &QVariantAnimation::valueChanged, this,
          [this](const QVariant &value) { setAlphaValue(value.toDouble()); });
  connect(&m_alphaAnimation, &QVariantAnimation::finished, this, [this] {
    setAlphaValue(m_alphaAnimation.endValue().toDouble());
    if (m_alphaAnimationDidStop) m_alphaAnimationDidStop();
  });
  connect(&m_frameAnimation, &QVariantAnimation::valueChanged, this, [this](const QVariant &value) {
    m_frame = value.toRectF();
    place();
  });
  setFrame(contentRect);
}

INPopoverWindow::~INPopoverWindow() { setPopoverContentView(nullptr); }

QRectF INPopoverWindow::contentRectForFrameRect(const QRectF &frame) const {
  const double margin = m_frameView.arrowSize().height();
  return frame.adjusted(margin, margin, -margin, -margin);
}

QRectF INPopoverWindow::frameRectForContentRect(const QRectF &content) const {
  const double margin = m_frameView.arrowSize().height();
  return content.adjusted(-margin, -margin, margin, margin);
}

void INPopoverWindow::setFrame(const QRectF &frame, bool animated) {
  m_frameAnimation.stop();
  if (animated && isVisible() && !m_frame.isEmpty() && !frame.isEmpty() && frame != m_frame) {
    m_frameAnimation.setStartValue(m_frame);
    m_frameAnimation.setEndValue(frame);
    m_frameAnimation.setDuration(kResizeMilliseconds);
    m_frameAnimation.start();
    return;
  }
  m_frame = frame;
  place();
}

void INPopoverWindow::place() {
  if (m_frame.isEmpty()) return;
  setGeometry(wholePixels(turnedOnDesktop(m_frame)));
  layOut();
}

void INPopoverWindow::setPopoverContentView(QWidget *view) {
  if (m_popoverContentView == view) return;
  if (m_popoverContentView) {
    m_popoverContentView->hide();
    m_popoverContentView->setParent(nullptr);
  }
  m_popoverContentView = view;
  if (!view) return;
  view->setParent(&m_frameView);
  layOut();
  view->show();
}

void INPopoverWindow::layOut() {
  m_frameView.setGeometry(rect());
  if (m_popoverContentView && !m_frame.isEmpty())
    m_popoverContentView->setGeometry(contentRectForFrameRect(rect()).toRect());
  if (isVisible()) fitShape();
}

void INPopoverWindow::fitShape() {
  m_frameView.setOpaque(!m_composited);
  if (m_composited) {
    clearMask();
  } else {
    setMask(m_frameView.coveredPixels());
  }
}

void INPopoverWindow::screenChanged() {
  // The same mask means other pixels on a screen with another scale, but would be taken for no change.
  clearMask();
  if (isVisible()) fitShape();
}

void INPopoverWindow::setAlphaValue(double alpha) {
  m_alphaValue = alpha;
  setWindowOpacity(alpha);
}

void INPopoverWindow::setAlphaAnimationDelegate(std::function<void()> animationDidStop) {
  m_alphaAnimationDidStop = std::move(animationDidStop);
}

void INPopoverWindow::animateAlpha(double target) {
  m_alphaAnimation.stop();
  m_alphaAnimation.setStartValue(m_alphaValue);
  m_alphaAnimation.setEndValue(target);
  m_alphaAnimation.setDuration(kFadeMilliseconds);
  m_alphaAnimation.start();
}

void INPopoverWindow::presentAnimated() {
  if (isVisible()) return;
  switch (m_popoverController.animationType()) {
    case INPopoverAnimationType::pop: presentWithPop(); break;
    case INPopoverAnimationType::fadeIn:
    case INPopoverAnimationType::fadeInAndOut:
      setAlphaValue(0);
      makeKeyAndOrderFront();
      animateAlpha(1);
      break;
    default: break;
  }
}

void INPopoverWindow::presentWithPop() {
  const auto at = [this](const QSizeF &size) {
    return m_popoverController.popoverFrameWithSize(size, m_frameView.arrowDirection());
  };
  const QSizeF size = m_popoverController.contentSize();
  const PopoverZoomWindow::Frames frames{at(kPopStart), at(size * kPopOvershoot), at(size)};
  m_composited = desktopIsComposited();
  m_frameView.setOpaque(!m_composited);
  m_zoomWindow = std::make_unique<PopoverZoomWindow>(grab(), m_frameView.coveredPixels(), frames);
  m_zoomWindow->zoom(kPopMilliseconds, [this] {
    setAlphaValue(1);
    makeKeyAndOrderFront();
    m_zoomWindow->hide();
    m_zoomWindow.release()->deleteLater();
    if (m_alphaAnimationDidStop) m_alphaAnimationDidStop();
  });
}

void INPopoverWindow::dismissAnimated() { animateAlpha(0); }

void INPopoverWindow::makeKeyAndOrderFront() {
  m_composited = desktopIsComposited();
  fitShape();
  winId();  // makes the handle
  connect(windowHandle(), &QWindow::screenChanged, this, &INPopoverWindow::screenChanged,
          Qt::UniqueConnection);
  show();
  raise();
  activateWindow();
}

void INPopoverWindow::orderOut() {
  m_alphaAnimation.stop();
  hide();
  m_hadKey = false;  // what it loses by this is not what it may have when it is shown again
}

void INPopoverWindow::renew() { destroy(); }

void INPopoverWindow::setTransientParent(QWidget *window) {
  winId();  // makes the handle
  windowHandle()->setTransientParent(window ? window->windowHandle() : nullptr);
}

void INPopoverWindow::setParentWindow(QWidget *window) {
  m_parentWindow = window;
  setTransientParent(window);
}

void INPopoverWindow::cancelOperation() {
  if (m_popoverController.closesWhenEscapeKeyPressed()) m_popoverController.closePopover();
}

bool INPopoverWindow::event(QEvent *event) {
  const bool handled = QWidget::event(event);
  if (event->type() == QEvent::WindowActivate) {
    m_hadKey = true;
    // A window manager's word about the place may have come after ours.
    place();
  } else if (event->type() == QEvent::WindowDeactivate) {
    // On the next turn, when it is known whether another application has the focus.
    MainQueue::main().async(m_alive, [this] {
      if (isVisible() && m_hadKey && !isKeyWindow()) Q_EMIT didResignKey();
    });
  }
  return handled;
}

void INPopoverWindow::closeEvent(QCloseEvent *event) {
  // The window manager or the end of the program, which an ignored event would hold up.
  event->accept();
  m_popoverController.popoverWindowWillClose();
}

void INPopoverWindow::keyPressEvent(QKeyEvent *event) {
  if (event->matches(QKeySequence::Cancel)) {
    cancelOperation();
  } else {
    QWidget::keyPressEvent(event);
  }
}

void INPopoverWindow::paintEvent(QPaintEvent *) {
  if (!m_composited) return;
  // A soft shadow in the margin: strokes that grow wider and add up towards the bubble.
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.translate(0, 1);
  const QPainterPath outline = m_frameView.outline();
  for (int width = 1; width <= 14; ++width) {
    painter.strokePath(outline, QPen(QColor(0, 0, 0, 5), width, Qt::SolidLine, Qt::FlatCap, Qt::RoundJoin));
  }
}

void INPopoverWindow::resizeEvent(QResizeEvent *event) {
  QWidget::resizeEvent(event);
  layOut();
}

}  // namespace velmora
