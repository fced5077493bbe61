// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/status/StatusItem.h"

#include <QApplication>
#include <QCursor>
#include <QDBusConnection>
#include <QEvent>
#include <QMenu>
#include <QPalette>
#include <QScreen>
#include <QSystemTrayIcon>
#include <QWidget>
#include <utility>

#include "foundation/Log.h"
#include "platform/status/ColorScheme.h"
#include "platform/status/NotifierHost.h"
#include "platform/status/StatusImage.h"
#include "platform/status/XcbTray.h"

namespace velmora {
namespace {

constexpr int kSide = 22;  // logical pixels of an item whose size nobody tells
const QColor kOnDark(0xf2, 0xf2, 0xf2);
const QColor kOnLight(0x2e, 0x2e, 0x2e);

QScreen *screenAt(const QPoint &point) {
  QScreen *const screen = QGuiApplication::screenAt(point);
  return screen ? screen : QGuiApplication::primaryScreen();
}

/// The item around a click: as deep as the panel that it lies in, so that what belongs to it does not cover
/// the panel.
QRect itemAround(const QPoint &click) {
  const QRect screen = screenAt(click)->geometry();
  const QRect available = screen & screenAt(click)->availableGeometry();
  QRect item(click - QPoint(kSide / 2, kSide / 2), QSize(kSide, kSide));
  if (click.y() < available.top()) {
    item.setTop(screen.top());
    item.setBottom(available.top() - 1);
  } else if (click.y() > available.bottom()) {
    item.setTop(available.bottom() + 1);
    item.setBottom(screen.bottom());
  }
  return item & screen;
}

}  // namespace

/// Tells when the colours of the desktop have changed, as far as the toolkit follows them.
class StatusItem::PaletteWatch final : public QObject {
 public:
  explicit PaletteWatch(std::function<void()> changed) : m_changed(std::move(changed)) {
    qApp->installEventFilter(this);
  }
  bool eventFilter(QObject *object, QEvent *event) override {
    if (object == qApp && event->type() == QEvent::ApplicationPaletteChange) m_changed();
    return false;
  }

 private:
  const std::function<void()> m_changed;
};

StatusItem::StatusItem() {
  const QString platform = QGuiApplication::platformName();
  const bool isX11 = platform == QLatin1String("xcb");
  if (!isX11 && !platform.startsWith(QLatin1String("wayland"))) return;
  m_paletteWatch = std::make_unique<PaletteWatch>([this] { draw(); });
  if (const QDBusConnection bus = QDBusConnection::sessionBus(); bus.isConnected()) {
    m_notifierHost = std::make_unique<NotifierHost>(bus);
    QObject::connect(m_notifierHost.get(), &NotifierHost::changed, [this] { followTray(); });
    m_colorScheme = std::make_unique<ColorScheme>(bus);
    QObject::connect(m_colorScheme.get(), &ColorScheme::changed, [this] { draw(); });
  }
  if (isX11) {
    m_xcbTray = std::make_unique<XcbTray>();
    QObject::connect(m_xcbTray.get(), &XcbTray::changed, [this] { followTray(); });
    QObject::connect(m_xcbTray.get(), &XcbTray::foregroundChanged, [this] { draw(); });
  }
  followTray();
}

StatusItem::~StatusItem() = default;

void StatusItem::setImage(const QString &name) {
  m_image = name;
  draw();
}

void StatusItem::setTemplate(bool isTemplate) {
  m_isTemplate = isTemplate;
  draw();
}

void StatusItem::setToolTip(const QString &toolTip) {
  m_toolTip = toolTip;
  if (!m_icon) return;
  m_icon->setToolTip(toolTip);
  // What is embedded is a widget, which the toolkit makes by itself.
  for (QWidget *const widget : QApplication::topLevelWidgets()) {
    if (!widget->inherits("QSystemTrayIconSys")) continue;
    widget->setAccessibleName(toolTip);
    widget->setWindowTitle(toolTip);
  }
}

void StatusItem::setMenu(QMenu *menu) {
  m_menu = menu;
  if (m_icon) m_icon->setContextMenu(menu);
}

void StatusItem::popUpMenu(QMenu &menu) {
  const QRect item = button().value_or(QRect(QCursor::pos(), QSize(1, 1)));
  const bool isInUpperHalf = item.center().y() < screenAt(item.center())->geometry().center().y();
  menu.exec(isInUpperHalf ? item.bottomLeft() + QPoint(0, 1)
                          : item.topLeft() - QPoint(0, menu.sizeHint().height()));
}

std::optional<QRect> StatusItem::button() const {
  if (!m_icon) return std::nullopt;
  if (const QRect geometry = m_icon->geometry(); !geometry.isEmpty()) return geometry;
  if (m_lastClick) return itemAround(*m_lastClick);
  const QRect available = QGuiApplication::primaryScreen()->availableGeometry();
  return QRect(available.right() - kSide + 1, available.top(), kSide, kSide);
}

void StatusItem::followTray() {
  // The toolkit would ask by itself, and wait for the answer.
  if (m_notifierHost && !m_notifierHost->isKnown()) return;
  const bool hasHost = m_notifierHost && m_notifierHost->isThere();
  const unsigned tray = m_xcbTray ? m_xcbTray->number() : 0;
  // The toolkit looks once, and keeps to what it has found.
  if (m_kind == Kind::undecided && (hasHost || tray != 0)) m_kind = hasHost ? Kind::notifier : Kind::embedded;
  const bool isThere = m_kind == Kind::notifier ? hasHost : m_kind == Kind::embedded && tray != 0;
  const bool isSame = m_kind == Kind::notifier || tray == m_tray;
  const bool wasThere = isAvailable();
  if (isThere == wasThere && isSame) return;
  m_icon.reset();
  m_tray = tray;
  if (isThere) makeIcon();
  if (isThere != wasThere && m_availabilityHandler) m_availabilityHandler(isThere);
}

void StatusItem::makeIcon() {
  m_icon = std::make_unique<QSystemTrayIcon>();
  QObject::connect(m_icon.get(), &QSystemTrayIcon::activated,
                   [this](QSystemTrayIcon::ActivationReason reason) { clicked(reason); });
  draw();
  m_icon->setContextMenu(m_menu);
  m_icon->show();
  setToolTip(m_toolTip);
}

void StatusItem::draw() {
  if (!m_icon || m_image.isEmpty()) return;
  std::optional<QColor> color;
  if (m_isTemplate) {
    if (m_kind == Kind::embedded) color = m_xcbTray->foreground();
    if (!color) color = panelIsDark() ? kOnDark : kOnLight;
  }
  m_icon->setIcon(statusImage(m_image, color));
}

bool StatusItem::panelIsDark() const {
  constexpr int kMiddle = 128;
  const auto isDark = m_colorScheme ? m_colorScheme->isDark() : std::nullopt;
  return isDark ? *isDark : QGuiApplication::palette().color(QPalette::Window).lightness() < kMiddle;
}

void StatusItem::clicked(int reason) {
  m_lastClick = QCursor::pos();
  // What is called may set another action.
  std::function<void()> action;
  switch (reason) {
    case QSystemTrayIcon::Trigger:
    case QSystemTrayIcon::DoubleClick: action = m_action; break;
    case QSystemTrayIcon::Context:
      if (!m_menu) action = m_secondaryAction;
      break;
    default: break;
  }
  if (action) action();
}

}  // namespace velmora
