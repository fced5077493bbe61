// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The application: what it owns, and who is shown when.
//
//   AppDelegate application(UserDefaults::standard(), deployment);
//   application.applicationWillFinishLaunching();
//   application.applicationDidFinishLaunching();
//   QApplication::exec();
//   application.applicationWillTerminate();
#pragma once

#include <QCoreApplication>
#include <QMenu>
#include <QTimer>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "app/AAShortCut.h"
#include "app/LoadingViewController.h"
#include "app/Reachability.h"
#include "auth/Authenticator.h"
#include "auth/LoginViewController.h"
#include "auth/LoginWindowController.h"
#include "engine/AssistantHost.h"
#include "engine/AssistantViewController.h"
#include "engine/AssistantWindowController.h"
#include "engine/LocalAssistantKeeper.h"
#include "foundation/Deployment.h"
#include "foundation/MainQueue.h"
#include "foundation/NotificationCenter.h"
#include "foundation/UserDefaults.h"
#include "platform/speech/SpeechRecognizer.h"
#include "platform/status/StatusItem.h"
#include "ui/popover/INPopoverController.h"
#include "ui/popover/Popover.h"
#include "ui/popover/popOverView.h"
#include "ui/preferences/PreferencesWindowController.h"

namespace velmora {

/// What the application does with its status item, its popover and its windows. It has one service: the
/// configured one, or the local assistant, which it runs itself. Main thread.
class AppDelegate final : public AssistantHost {
  Q_DECLARE_TR_FUNCTIONS(velmora::AppDelegate)

 public:
  /// Without a deployment the local assistant is it. The settings outlive the object.
  AppDelegate(UserDefaults &userDefaults, std::optional<Deployment> deployment);
  ~AppDelegate();
  AppDelegate(const AppDelegate &) = delete;
  AppDelegate &operator=(const AppDelegate &) = delete;

  void applicationWillFinishLaunching();
  void applicationDidFinishLaunching();
  void applicationWillTerminate();

  /// A click on the status item: opens the assistant, which then listens, or closes it; who is not signed in
  /// gets the menu for that.
  void statusIconClicked();
  /// The same for the shortcut, which tells first when there is no network.
  void hotkeyPressed();
  /// The spoken command: the popover listens.
  void didRecognizeCommand(const std::string &command);
  void reachabilityChanged();
  void loginClick();
  void quitClick();

  /// Nothing without a status bar.
  void showPopover();
  void closePopover();
  void togglePopover();

  [[nodiscard]] bool isLoggedIn() const;
  /// The popover shows the assistant, or the sign-in while nobody is signed in.
  void setAppropriateViewControllerForLoginStatus(bool loggedIn);
  /// True: "okay mac" is listened for from now on.
  void setupHotword(bool enabled);

  /// What another start of the program asks this one for: "", "listen", "preferences" or "quit".
  void perform(const QString &command);

  [[nodiscard]] QMenu &loginMenu() { return m_loginMenu; }
  [[nodiscard]] PreferencesWindowController &prefWindow() { return m_prefWindow; }
  /// Made on first use, as the other two screens are.
  [[nodiscard]] AssistantViewController &assistantViewController();
  [[nodiscard]] AssistantWindowController &assistantWindow() { return m_assistantWindow; }
  [[nodiscard]] const std::shared_ptr<Reachability> &reach() const { return m_reach; }
  [[nodiscard]] StatusItem &statusItem() { return m_statusItem; }
  [[nodiscard]] Popover &popover() { return m_popover; }
  /// Whether the assistant's window was opened by a click or the shortcut, and not closed by one since.
  [[nodiscard]] bool isAssisViewOpen() const { return m_isAssisViewOpen; }
  /// That of the hint of the first run.
  [[nodiscard]] INPopoverController &popOverController() { return *m_popOverController; }

 private:
  // As the screens see the application.
  [[nodiscard]] bool isReachable() const override;
  [[nodiscard]] const Deployment *deployment() const override;
  [[nodiscard]] ApplicationInformation information() const override;
  void closeShownPopover() override { closePopover(); }
  void terminate() override { quitClick(); }
  void screenBusyChanged() override;

  void useDeployment(const LocalAssistantKeeper::State &state);
  void checkLogin();
  void loggedInChanged(const QVariant &value);
  void registerHotkey();
  void setUpStatusItem();
  void watchForTray();
  void showFirstRunHint();
  [[nodiscard]] bool hasInputDevice() const;
  void toggleAssistant();
  void openAssistant(bool listens);
  void makeLoginMenu();
  void showContextMenu();
  [[nodiscard]] QRect anchor() const;

  UserDefaults &m_userDefaults;
  const bool m_isLocal;
  std::optional<Deployment> m_deployment;                  // absent while the local assistant does not serve
  std::unique_ptr<LocalAssistantKeeper> m_localAssistant;  // goes after all that talks to it

  QTimer m_idle;  // runs out when no turn has been for a moment
  QMenu m_loginMenu;
  std::shared_ptr<AAShortCut> m_shortCut;
  PreferencesWindowController m_prefWindow;
  LoadingViewController m_loadingViewController;
  std::unique_ptr<AssistantViewController> m_assistantViewController;
  AssistantWindowController m_assistantWindow;
  std::unique_ptr<LoginViewController> m_loginViewController;
  std::unique_ptr<LoginWindowController> m_loginWindow;
  HelpWindow m_helpWindow;
  std::shared_ptr<Reachability> m_reach;
  StatusItem m_statusItem;
  Popover m_popover;
  std::unique_ptr<Authenticator> m_authenticator;  // null without a deployment
  bool m_isAssisViewOpen = false;
  std::unique_ptr<popOverView> m_hint;  // null until it is shown
  std::unique_ptr<INPopoverController> m_popOverController = std::make_unique<INPopoverController>();
  std::unique_ptr<SpeechRecognizer> m_recognizer;

  bool m_loginIsWanted = false;  // as soon as there is a deployment
  bool m_hintIsWanted = false;   // as soon as there is a status item to hang it under
  bool m_wasTold = false;        // that there is no status bar
  QTimer m_loginCheck;
  UserDefaults::Observation m_loggedIn;
  UserDefaults::Observation m_hotword;
  UserDefaults::Observation m_inputDevice;
  NotificationCenter::Observation m_reachability;
  NotificationCenter::Observation m_shortCutPress;
  Alive m_alive;
};

}  // namespace velmora
