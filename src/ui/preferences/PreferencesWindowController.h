// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>
#include <functional>
#include <memory>

#include "foundation/MainQueue.h"
#include "foundation/UserDefaults.h"
#include "platform/LoginItem.h"
#include "ui/preferences/ApplicationInformation.h"

class QUrl;

namespace Ui {
class PreferencesWindow;
}

namespace velmora {

class MASShortcutView;

/// The window of the preferences: what the user may set, and what the application is. There may be several,
/// which show the same settings at any time. Main thread.
class PreferencesWindowController : public QWidget {
  Q_OBJECT

 public:
  /// Makes what registers the shortcut that the recorder records; it is kept as long as the window.
  using ShortcutMaker = std::function<std::shared_ptr<void>(MASShortcutView &recorder)>;

  /// `defaults` outlives the window. Without a maker the recorder keeps the user's shortcut in the standard
  /// settings, for someone else to register.
  PreferencesWindowController(ApplicationInformation information, UserDefaults &defaults,
                              ShortcutMaker makeShortcut = {});
  ~PreferencesWindowController() override;

  /// Opens the window, or brings it to the front.
  void showWindow();

  /// The recorder, which is there before the rest of the window is needed.
  [[nodiscard]] MASShortcutView &shortcutView();

  void GeneralTabClick();
  void AboutTabClick();
  /// Stores what the check box says and enables the login item accordingly.
  void runAtLaunchStateChanged();
  void FAQClick();
  void FanPageClick();
  void TwitterClick();
  void TessalyClick();

 protected:
  void keyPressEvent(QKeyEvent *event) override;

 private:
  void loadWindow();
  void windowDidLoad();
  void placeRecorder();
  void layOutNotes();
  void fillLanguages();
  void connectControls();
  void watchSettings();
  void showShortcutNote();
  void showInformation();
  void showAccount(bool signedIn);

  ApplicationInformation m_information;
  UserDefaults &m_defaults;
  ShortcutMaker m_makeShortcut;
  LoginItem m_loginItem;
  bool m_isShowing = false;                     // a setting, which is none of the user's doing
  MASShortcutView *m_recorder = nullptr;        // the window's; null until it is needed
  std::unique_ptr<Ui::PreferencesWindow> m_ui;  // null until the window is shown
  std::shared_ptr<void> m_shortcut;
  std::vector<UserDefaults::Observation> m_observations;
  Alive m_alive;
};

}  // namespace velmora
