// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The item in the status bar.
//
//   StatusItem item;
//   item.setImage(QStringLiteral("statusIcon"));
//   item.setTemplate(true);
//   item.setAction([&] { popover.toggle(item.button()); });
#pragma once

#include <QPoint>
#include <QRect>
#include <QString>
#include <functional>
#include <memory>
#include <optional>

class QMenu;
class QSystemTrayIcon;

namespace velmora {

class ColorScheme;
class NotifierHost;
class XcbTray;

/// An item wherever the desktop shows such: by way of the session bus, else in a tray of X11. It is there as
/// soon as a tray is, and again when the tray was started anew; nothing here waits for either. A program that
/// once was in a tray of one kind keeps to that kind. Without a tray everything may be called and shows
/// nothing. Main thread only.
class StatusItem {
 public:
  StatusItem();
  ~StatusItem();
  StatusItem(const StatusItem &) = delete;
  StatusItem &operator=(const StatusItem &) = delete;

  /// Shows the resource ":/icons/<name>.svg". One without a picture is one line in the log.
  void setImage(const QString &name);
  /// Whether only the shape of the image counts, and its colour is the panel's: light on a dark panel, dark
  /// on a light one, also when that changes.
  void setTemplate(bool isTemplate);
  /// Also the name that is read out.
  void setToolTip(const QString &toolTip);

  /// Called for each click of the primary button, the second one of a double click as well.
  void setAction(std::function<void()> action) { m_action = std::move(action); }
  /// Called for a click that asks for a menu, when none is set.
  void setSecondaryAction(std::function<void()> action) { m_secondaryAction = std::move(action); }

  /// What a click that asks for a menu opens; null for none. The menu outlives the item or is taken away.
  void setMenu(QMenu *menu);
  [[nodiscard]] QMenu *menu() const { return m_menu; }
  /// Opens `menu` at the item, or at the pointer when there is no tray, and returns when it is closed. The
  /// event loop goes on meanwhile.
  void popUpMenu(QMenu &menu);

  /// Where a window that belongs to the item points to, in Qt's desktop coordinates: the item where the tray
  /// tells its place, else where it was clicked last, else the top right corner of the primary screen's
  /// available area. Absent when there is no tray.
  [[nodiscard]] std::optional<QRect> button() const;

  /// Whether a tray shows the item now.
  [[nodiscard]] bool isAvailable() const { return m_icon != nullptr; }
  /// Called when that has changed, never inside a call of ours. The item must not be destroyed inside it.
  void setAvailabilityHandler(std::function<void(bool available)> handler) {
    m_availabilityHandler = std::move(handler);
  }

 private:
  enum class Kind { undecided, notifier, embedded };
  class PaletteWatch;

  void followTray();
  void makeIcon();
  void draw();
  [[nodiscard]] bool panelIsDark() const;
  void clicked(int reason);

  Kind m_kind = Kind::undecided;  // of the tray, as it was when the toolkit first looked
  unsigned m_tray = 0;            // the number of the one of X11
  QString m_image;
  QString m_toolTip;
  bool m_isTemplate = false;
  std::function<void()> m_action;
  std::function<void()> m_secondaryAction;
  std::function<void(bool)> m_availabilityHandler;
  QMenu *m_menu = nullptr;
  std::optional<QPoint> m_lastClick;
  std::unique_ptr<NotifierHost> m_notifierHost;  // null: this desktop has none
  std::unique_ptr<XcbTray> m_xcbTray;            // the same
  std::unique_ptr<ColorScheme> m_colorScheme;    // the same
  std::unique_ptr<PaletteWatch> m_paletteWatch;
  std::unique_ptr<QSystemTrayIcon> m_icon;
};

}  // namespace velmora
