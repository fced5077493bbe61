// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "ui/popover/INPopoverController.h"

#include <QGuiApplication>
#include <QScreen>

#include "ui/UpwardAxis.h"
#include "ui/popover/INPopoverParentWindow.h"

namespace velmora {

namespace {

/// Calls back for each event of what it is installed on. The call may delete it.
class EventObserver : public QObject {
 public:
  using Callback = std::function<void(QEvent &)>;
  EventObserver(QObject &watched, Callback callback, QObject *parent)
      : QObject(parent), m_callback(std::move(callback)) {
    watched.installEventFilter(this);
  }
  bool eventFilter(QObject * /*watched*/, QEvent *event) override {
    const Callback callback = m_callback;
    callback(*event);
    return false;
  }

 private:
  Callback m_callback;
};

bool applicationIsActive() { return QGuiApplication::applicationState() == Qt::ApplicationActive; }

QPointF placeOnDesktop(const QWidget &window) {
  return turnedOnDesktop(QRectF(window.mapToGlobal(QPoint(0, 0)), QSizeF(0, 0))).topLeft();
}

}  // namespace

INPopoverController::INPopoverController(ViewController *contentViewController)
    : m_popoverWindow(std::make_unique<INPopoverWindow>(*this, QRectF())) {
  setColor(Qt::black);
  setBorderColor(QColor::fromRgbF(1, 1, 1, 0.92F));
  setBorderWidth(0);
  setContentViewController(contentViewController);
}

INPopoverController::~INPopoverController() = default;

QWidget *INPopoverController::contentView() const {
  return m_contentViewController ? &m_contentViewController->view() : nullptr;
}

void INPopoverController::setContentViewController(ViewController *controller) {
  if (m_contentViewController == controller) return;
  m_popoverWindow->setPopoverContentView(nullptr);
  m_contentViewController = controller;
  QWidget *view = contentView();
  setContentSize(view ? QSizeF(view->size()) : QSizeF(0, 0));
  m_popoverWindow->setPopoverContentView(view);
}

void INPopoverController::setContentSize(const QSizeF &size) {
  m_contentSize = size;
  placeWindow(m_animates);
}

QRectF INPopoverController::popoverFrameWithSize(const QSizeF &size, ArrowDirection direction) const {
  const QRectF frame = popoverFrame(frameSize(size), direction, m_screenRect);
  if (!m_staysOnScreen || frame.isEmpty()) return frame;
  return shiftedOntoScreen(frame, direction, screenFrame(), arrowSize().height());
}

QSizeF INPopoverController::frameSize(const QSizeF &contentSize) const {
  return m_popoverWindow->frameRectForContentRect(QRectF(QPointF(), contentSize)).size();
}

void INPopoverController::placeWindow(bool animated) {
  const QRectF frame = popoverFrameWithSize(m_contentSize, arrowDirection());
  const QPointF way = popoverFrame(frame.size(), arrowDirection(), m_screenRect).topLeft() - frame.topLeft();
  frameView().setArrowOffset(way.x() + way.y());  // one of them is zero
  m_popoverWindow->setFrame(frame, animated);
}

QRectF INPopoverController::screenRectOfAnchor() const {
  if (!m_positionView) return turnedOnDesktop(m_rect);
  return turnedOnDesktop(QRectF(m_positionView->mapToGlobal(m_rect.topLeft()), m_rect.size()));
}

QRectF INPopoverController::screenFrame() const {
  const QScreen *screen = nullptr;
  if (m_positionView) {
    screen = m_positionView->window()->screen();
  } else {
    screen = QGuiApplication::screenAt(m_rect.center().toPoint());
    if (!screen) screen = QGuiApplication::primaryScreen();
  }
  return screen ? turnedOnDesktop(screen->geometry()) : QRectF();
}

ArrowDirection INPopoverController::arrowDirectionWithPreferred(ArrowDirection preferred) const {
  return chooseArrowDirection(preferred, frameSize(m_contentSize), m_screenRect, screenFrame(),
                              m_staysOnScreen ? std::optional(arrowSize().height()) : std::nullopt);
}

void INPopoverController::recalculateAndResetArrowDirection() {
  setArrowDirection(arrowDirectionWithPreferred(arrowDirection()));
  if (popoverIsVisible()) placeWindow();
}

void INPopoverController::presentPopoverFromRect(const QRectF &rect, QWidget *positionView,
                                                 ArrowDirection preferredArrowDirection,
                                                 bool anchorsToPositionView) {
  if (popoverIsVisible()) return;
  ++m_openings;
  m_popoverWindow->renew();
  m_positionView = positionView;
  m_rect = rect;
  m_screenRect = screenRectOfAnchor();
  QWidget *parentWindow = positionView ? positionView->window() : nullptr;
  if (parentWindow) m_parentWindowPlace = placeOnDesktop(*parentWindow);

  setArrowDirection(arrowDirectionWithPreferred(preferredArrowDirection));
  placeWindow();
  m_popoverWindow->setTransientParent(parentWindow);

  m_popoverWindow->setAlphaAnimationDelegate([this] { animationDidStop(); });
  if (m_delegate) m_delegate->popoverWillShow(*this);
  if (m_animates && m_animationType != INPopoverAnimationType::fadeOut) {
    m_popoverWindow->presentAnimated();
  } else {
    m_popoverWindow->setAlphaValue(1);
    m_popoverWindow->setParentWindow(parentWindow);
    m_popoverWindow->makeKeyAndOrderFront();
    if (m_delegate) m_delegate->popoverDidShow(*this);
  }
  addObservers(anchorsToPositionView);
}

void INPopoverController::addObservers(bool anchorsToPositionView) {
  m_observers = std::make_unique<QObject>();
  QObject *observers = m_observers.get();
  if (m_positionView) {
    if (anchorsToPositionView) {
      const auto frameChanged = [this](const QEvent &event) {
        if (event.type() == QEvent::Move || event.type() == QEvent::Resize) positionViewFrameChanged();
      };
      new EventObserver(*m_positionView, frameChanged, observers);
    }
    // A child window goes where its parent goes.
    new EventObserver(
        *m_positionView->window(), [this](QEvent &event) { followParentWindow(event); }, observers);
    QObject::connect(m_positionView, &QObject::destroyed, observers, [this] { forceClosePopover(); });
  }
  if (m_closesWhenPopoverResignsKey) {
    QObject::connect(m_popoverWindow.get(), &INPopoverWindow::didResignKey, observers, [this] {
      const Notification sender{kWindowDidResignKeyNotification, {}};
      closePopover(&sender);
    });
  }
  QObject::connect(qGuiApp, &QGuiApplication::applicationStateChanged, observers,
                   [this, resignsKey = m_closesWhenPopoverResignsKey,
                    inactive = m_closesWhenApplicationBecomesInactive](Qt::ApplicationState state) {
                     if (resignsKey) {
                       if (!inactive && state == Qt::ApplicationActive) applicationDidBecomeActive();
                     } else if (inactive && state != Qt::ApplicationActive) {
                       const Notification sender{kApplicationDidResignActiveNotification, {}};
                       closePopover(&sender);
                     }
                   });
}

void INPopoverController::followParentWindow(QEvent &event) {
  if (event.type() == QEvent::Hide && !event.spontaneous()) {
    forceClosePopover();
  } else if (event.type() == QEvent::Move && m_positionView) {
    const QPointF place = placeOnDesktop(*m_positionView->window());
    const QPointF way = place - m_parentWindowPlace;
    m_parentWindowPlace = place;
    m_screenRect.translate(way);
    placeWindow();
  }
}

void INPopoverController::positionViewFrameChanged() {
  const QWidget *parent = m_positionView->isWindow() ? nullptr : m_positionView->parentWidget();
  if (parent && !parent->rect().contains(m_positionView->geometry())) {
    forceClosePopover();
    return;
  }
  m_screenRect = screenRectOfAnchor();
  m_parentWindowPlace = placeOnDesktop(*m_positionView->window());
  placeWindow();
}

void INPopoverController::applicationDidBecomeActive() {
  if (!popoverIsVisible()) return;
  MainQueue::main().async(m_alive, [this] { checkPopoverKeyWindowStatus(); });
}

void INPopoverController::checkPopoverKeyWindowStatus() {
  if (!m_positionView || !popoverIsVisible()) return;
  const QWidget *window = m_positionView->window();
  const auto *parent = qobject_cast<const INPopoverParentWindow *>(window);
  if (parent ? parent->isReallyKeyWindow() : window->isActiveWindow()) {
    m_popoverWindow->makeKeyAndOrderFront();
  }
}

void INPopoverController::animationDidStop() {
  if (m_popoverWindow->alphaValue() == 0.0) {
    closePopoverAndResetVariables();
  } else if (m_popoverWindow->alphaValue() == 1.0) {
    m_popoverWindow->setParentWindow(m_positionView ? m_positionView->window() : nullptr);
    if (m_delegate) m_delegate->popoverDidShow(*this);
  }
}

void INPopoverController::closePopover(const Notification *sender) {
  if (!popoverIsVisible()) return;
  if (sender && sender->name == kWindowDidResignKeyNotification && !m_closesWhenApplicationBecomesInactive &&
      !applicationIsActive()) {
    return;
  }
  if (m_delegate && !m_delegate->popoverShouldClose(*this)) return;
  forceClosePopover();
}

void INPopoverController::forceClosePopover() {
  if (!popoverIsVisible()) return;
  if (m_delegate) m_delegate->popoverWillClose(*this);
  if (m_animates && m_animationType != INPopoverAnimationType::fadeIn) {
    m_popoverWindow->dismissAnimated();
  } else {
    closePopoverAndResetVariables();
  }
}

void INPopoverController::popoverWindowWillClose() {
  if (!popoverIsVisible()) return;
  if (m_delegate) m_delegate->popoverWillClose(*this);
  closePopoverAndResetVariables();
}

void INPopoverController::closePopoverAndResetVariables() {
  m_popoverWindow->orderOut();
  if (m_delegate) m_delegate->popoverDidClose(*this);
  m_popoverWindow->setParentWindow(nullptr);
  QWidget *parentWindow = m_positionView ? m_positionView->window() : nullptr;
  if (parentWindow && parentWindow->isVisible()) {
    parentWindow->raise();
    parentWindow->activateWindow();
  }
  setArrowDirection(ArrowDirection::none);
  m_observers.reset();
  m_positionView = nullptr;
  m_rect = m_screenRect = {};
  // On the next turn, as whose call this may be; a popover that has opened again by then keeps its own.
  MainQueue::main().async(m_alive, [this, opening = m_openings] {
    if (opening == m_openings) m_popoverWindow->setAlphaAnimationDelegate({});
  });
}

}  // namespace velmora
