// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "app/AppDelegate.h"

#include <QApplication>
#include <QPointer>
#include <chrono>
#include <utility>

#include "app/CrashReports.h"
#include "auth/TokenStore.h"
#include "engine/InputDeviceAlert.h"
#include "engine/InputDeviceChoice.h"
#include "foundation/Heaps.h"
#include "foundation/Log.h"
#include "foundation/fatal.h"
#include "platform/Alert.h"
#include "platform/LoginItem.h"
#include "platform/Notification.h"
#include "platform/hotkeys/HotKeyCenter.h"
#include "ui/preferences/PreferenceKeys.h"

namespace velmora {
namespace {

using namespace std::chrono_literals;
using Notify = UserDefaults::Notify;

const QString kIsFirstTimeKey = QStringLiteral("isFirstTime");
const QString kCrashOnExceptionsKey = QStringLiteral("NSApplicationCrashOnExceptions");

constexpr auto kLoginCheckInterval = 600s;
constexpr auto kBeforeListening = 200ms;
// What it reads as it starts would keep the icon waiting.
constexpr auto kBeforeLocalAssistant = 50ms;
constexpr auto kHintTime = 5s;
// A desktop puts the item in its place a moment after it has taken it.
constexpr auto kPlacing = 300ms;
// A panel may start later than what the desktop starts with it.
constexpr auto kTrayPatience = 3s;
// A question back, or a second thought, comes sooner.
constexpr auto kBeforeTrimming = 2s;

}  // namespace

AppDelegate::AppDelegate(UserDefaults &userDefaults, std::optional<Deployment> deployment)
    : m_userDefaults(userDefaults),
      m_isLocal(!deployment.has_value()),
      m_deployment(std::move(deployment)),
      m_prefWindow(information(), userDefaults,
                   [this](MASShortcutView &recorder) {
                     m_shortCut = std::make_shared<AAShortCut>(recorder);
                     return m_shortCut;
                   }),
      m_assistantWindow(*this, userDefaults) {
  makeLoginMenu();
  m_idle.setSingleShot(true);
  m_idle.callOnTimeout([] { trimHeaps(); });
  if (m_deployment) m_authenticator = std::make_unique<Authenticator>(*m_deployment, m_userDefaults);
}

AppDelegate::~AppDelegate() = default;

// Launching.

void AppDelegate::applicationWillFinishLaunching() {
  if (m_isLocal) {
    MainQueue::main().after(kBeforeLocalAssistant, m_alive, [this] {
      const auto changed = [this](const LocalAssistantKeeper::State &state) { useDeployment(state); };
      m_localAssistant = std::make_unique<LocalAssistantKeeper>(LocalAssistant::Settings(), changed);
    });
  }
  m_popover.setContentViewController(&m_loadingViewController);
  m_loggedIn = m_userDefaults.addObserver(kLoggedInKey, Notify::newOnly,
                                          [this](const QVariant &value) { loggedInChanged(value); });
  m_reach = Reachability::reachabilityForInternetConnection();
  if (m_reach) {
    m_reach->setReachableOnWWAN(false);
    m_reachability = NotificationCenter::defaultCenter().addObserver(
        QString::fromUtf16(kReachabilityChangedNotification),
        [this](const Notification &) { reachabilityChanged(); });
    m_reach->startNotifier();
  }
  m_loginCheck.callOnTimeout([this] { checkLogin(); });
  m_loginCheck.setTimerType(Qt::VeryCoarseTimer);
  m_loginCheck.start(kLoginCheckInterval);
  checkLogin();
}

void AppDelegate::applicationDidFinishLaunching() {
  m_userDefaults.registerDefaults({{kCrashOnExceptionsKey, true}});
  // False where nothing was ever chosen.
  LoginItem(kLoginHelperIdentifier).setEnabled(m_userDefaults.boolForKey(kRunAtLaunchEnableKey));
  setUpStatusItem();
  registerHotkey();
  if (m_userDefaults.boolForKey(kIsFirstTimeKey)) {
    log("Not First Time");
  } else {
    m_hintIsWanted = true;
    showFirstRunHint();
  }
  m_hotword =
      m_userDefaults.addObserver(kHotwordEnableKey, Notify::initialAndNew, [this](const QVariant &value) {
        setupHotword(value.toBool());
        // Who switches it off is not listened to any more.
        if (!value.toBool()) m_recognizer.reset();
      });
  m_inputDevice = m_userDefaults.addObserver(kInputDeviceKey, Notify::newOnly, [this](const QVariant &) {
    if (m_recognizer) selectChosenInputDevice(m_userDefaults, m_recognizer->engine());
  });
  MainQueue::main().async([] { askAboutCrashReports(); });
  watchForTray();
}

void AppDelegate::applicationWillTerminate() { HotKeyCenter::shared().unregisterAll(); }

void AppDelegate::setUpStatusItem() {
  m_statusItem.setImage(QStringLiteral("statusIcon"));
  m_statusItem.setTemplate(true);
  m_statusItem.setToolTip(QStringLiteral("Velmora"));
  m_statusItem.setAction([this] { statusIconClicked(); });
  m_statusItem.setSecondaryAction([this] { showContextMenu(); });
  m_statusItem.setAvailabilityHandler([this](bool available) {
    if (available) showFirstRunHint();
  });
}

/// Without a status bar the program is still to be found: it says so once, and shows itself.
void AppDelegate::watchForTray() {
  MainQueue::main().after(kTrayPatience, m_alive, [this] {
    if (m_statusItem.isAvailable() || std::exchange(m_wasTold, true)) return;
    showNotification(QStringLiteral("Velmora"),
                     tr("This desktop has no status bar for the icon. Start Velmora again, or press your "
                        "shortcut, to open the assistant."));
    openAssistant(false);
  });
}

void AppDelegate::registerHotkey() {
  (void)m_prefWindow.shortcutView();
  if (!m_shortCut) fatal("The shortcut cannot be registered");
  log("Shortcut ", m_shortCut.get());
  m_shortCutPress = NotificationCenter::defaultCenter().addObserver(
      QString::fromUtf16(AAShortCut::kShortCutPress), [this](const Notification &) { hotkeyPressed(); });
}

void AppDelegate::showFirstRunHint() {
  if (!m_hintIsWanted || !m_statusItem.isAvailable()) return;
  m_hintIsWanted = false;
  MainQueue::main().after(kPlacing, m_alive, [this] {
    const auto button = m_statusItem.button();
    if (!button) {
      m_hintIsWanted = true;
      return;
    }
    m_hint = std::make_unique<popOverView>();
    m_popOverController = std::make_unique<INPopoverController>(m_hint.get());
    m_popOverController->setStaysOnScreen(true);
    m_popOverController->presentPopoverFromRect(QRectF(*button), nullptr, ArrowDirection::up, true);
    m_userDefaults.setObject(true, kIsFirstTimeKey);
    m_userDefaults.synchronize();
    MainQueue::main().after(kHintTime, m_alive, [this] { m_popOverController->closePopover(); });
  });
}

// The service and who is signed in.

const Deployment *AppDelegate::deployment() const {
  if (!m_deployment) return nullptr;
  // The local assistant takes its files along when it ends, a moment before that is known here.
  if (m_isLocal && !std::filesystem::exists(m_deployment->resource("roots", "pem"))) return nullptr;
  return &*m_deployment;
}

void AppDelegate::useDeployment(const LocalAssistantKeeper::State &state) {
  m_deployment = state.deployment;
  m_authenticator.reset();
  m_loadingViewController.setProblem(QString::fromStdString(state.problem));
  m_assistantWindow.deploymentChanged();
  if (m_assistantViewController) m_assistantViewController->deploymentChanged();
  if (!deployment()) return;
  m_authenticator = std::make_unique<Authenticator>(*m_deployment, m_userDefaults);
  // Those of before lead to a service that is gone.
  if (m_loginViewController && m_popover.contentViewController() == m_loginViewController.get())
    m_popover.setContentViewController(&m_loadingViewController);
  m_loginViewController.reset();
  if (m_loginWindow && m_loginWindow->isVisible()) m_loginIsWanted = true;
  checkLogin();
  if (std::exchange(m_loginIsWanted, false)) loginClick();
}

void AppDelegate::checkLogin() {
  log("About to check refresh");
  if (!m_authenticator) return;
  m_authenticator->checkLoginStatus(
      [this](bool signedIn) { setAppropriateViewControllerForLoginStatus(signedIn); });
}

void AppDelegate::loggedInChanged(const QVariant &value) {
  if (value.typeId() != QMetaType::Bool) return;
  const bool signedIn = value.toBool();
  setAppropriateViewControllerForLoginStatus(signedIn);
  m_idle.start(kBeforeTrimming);  // the pages of a sign-in are large
  if (signedIn) return;
  for (const QLatin1String key : {kAuthTokenKey, kRefreshTokenKey, kExpiresInKey})
    m_userDefaults.removeObjectForKey(key);
  m_userDefaults.synchronize();
  // The next one to sign in may be somebody else.
  if (m_assistantViewController) m_assistantViewController->forgetConversation();
  m_assistantWindow.forgetConversation();
  m_isAssisViewOpen = false;
  m_assistantWindow.close();
}

void AppDelegate::setAppropriateViewControllerForLoginStatus(bool loggedIn) {
  if (loggedIn) {
    m_popover.setContentViewController(&assistantViewController());
  } else if (deployment() != nullptr) {
    if (!m_loginViewController)
      m_loginViewController = std::make_unique<LoginViewController>(*m_deployment, m_userDefaults);
    m_popover.setContentViewController(m_loginViewController.get());
  }
}

bool AppDelegate::isLoggedIn() const { return m_userDefaults.boolForKey(kLoggedInKey); }

AssistantViewController &AppDelegate::assistantViewController() {
  if (!m_assistantViewController)
    m_assistantViewController = std::make_unique<AssistantViewController>(*this, m_userDefaults);
  return *m_assistantViewController;
}

void AppDelegate::loginClick() {
  if (deployment() == nullptr) {
    m_loginIsWanted = true;
    return;
  }
  m_loginWindow = std::make_unique<LoginWindowController>(*m_deployment, m_userDefaults);
  m_loginWindow->close();
  m_loginWindow->showWindow();
}

// Opening and closing.

void AppDelegate::statusIconClicked() {
  if (raiseAlert()) return;
  if (!hasInputDevice()) return;
  toggleAssistant();
}

void AppDelegate::hotkeyPressed() {
  if (raiseAlert()) return;
  if (!hasInputDevice()) return;
  if (!m_reach) fatal("The network cannot be watched");
  if (!m_reach->isReachable()) {
    showAlert({.messageText = tr("Google Assistant Alert"),
               .informativeText = tr("You are not connected to internet, Please connect to use Assistant."),
               .style = AlertStyle::warning,
               .buttons = {tr("OK")}});
    return;
  }
  toggleAssistant();
}

bool AppDelegate::hasInputDevice() const {
  if (Capture::hasInputDevice()) return true;
  alertWithoutInputDevice();
  return false;
}

void AppDelegate::toggleAssistant() {
  if (m_popover.isShown()) closePopover();
  if (!isLoggedIn()) {
    if (!m_statusItem.isAvailable()) {
      loginClick();
      return;
    }
    m_statusItem.setMenu(&m_loginMenu);
    m_statusItem.popUpMenu(m_loginMenu);
    m_statusItem.setMenu(nullptr);
    return;
  }
  m_assistantWindow.showWindow(anchor());
  if (std::exchange(m_isAssisViewOpen, !m_isAssisViewOpen)) {
    m_assistantWindow.close();
    return;
  }
  m_assistantWindow.showWindow(anchor());
  MainQueue::main().after(kBeforeListening, m_alive, [this] {
    // Not when it was closed meanwhile: nobody would see that the microphone is open.
    if (m_isAssisViewOpen && m_assistantWindow.isVisible()) m_assistantWindow.startListening();
  });
}

void AppDelegate::openAssistant(bool listens) {
  if (!isLoggedIn()) {
    loginClick();
    return;
  }
  if (m_popover.isShown()) closePopover();
  m_isAssisViewOpen = true;
  m_assistantWindow.showWindow(anchor());
  if (listens && !m_assistantWindow.isListening()) m_assistantWindow.startListening();
}

void AppDelegate::perform(const QString &command) {
  if (command == QLatin1String("quit")) {
    quitClick();
  } else if (command == QLatin1String("preferences")) {
    m_prefWindow.showWindow();
  } else {
    openAssistant(command == QLatin1String("listen"));
  }
}

void AppDelegate::showPopover() {
  if (const auto button = m_statusItem.button()) m_popover.show(QRectF(*button), nullptr, RectEdge::minY);
}

void AppDelegate::closePopover() {
  if (m_assistantViewController && m_popover.contentViewController() == m_assistantViewController.get())
    m_assistantViewController->stopListening();
  m_popover.performClose();
}

void AppDelegate::togglePopover() { m_popover.isShown() ? closePopover() : showPopover(); }

QRect AppDelegate::anchor() const { return m_statusItem.button().value_or(QRect()); }

void AppDelegate::quitClick() {
  // Not by closing one window after the other: whatever is open has nothing to say about it.
  QCoreApplication::exit(0);
}

// The spoken command.

void AppDelegate::setupHotword(bool enabled) {
  if (!enabled) return;
  auto recognizer = SpeechRecognizer::make();
  if (!recognizer) return;
  recognizer->setCommands({"okay mac"});
  recognizer->setBlocksOtherRecognizers(true);
  recognizer->setListensInForegroundOnly(false);
  selectChosenInputDevice(m_userDefaults, recognizer->engine());
  recognizer->setDelegate([this](const std::string &command) { didRecognizeCommand(command); });
  m_recognizer = std::move(recognizer);
  screenBusyChanged();
  m_recognizer->startListening();
}

void AppDelegate::didRecognizeCommand(const std::string & /*command*/) {
  if (!m_popover.isShown()) showPopover();
  if (!isLoggedIn()) return;
  if (m_assistantViewController == nullptr ||
      m_popover.contentViewController() != m_assistantViewController.get())
    return;
  if (!m_assistantViewController->isListening()) m_assistantViewController->startListening();
}

void AppDelegate::screenBusyChanged() {
  const bool isBusy =
      m_assistantWindow.isBusy() || (m_assistantViewController && m_assistantViewController->isBusy());
  // It would hear the answer, and what the user says to the assistant.
  if (m_recognizer) m_recognizer->setPaused(isBusy);
  isBusy ? m_idle.stop() : m_idle.start(kBeforeTrimming);
}

// The network.

bool AppDelegate::isReachable() const {
  if (!m_reach) fatal("The network cannot be watched");
  return m_reach->isReachable();
}

void AppDelegate::reachabilityChanged() {
  if (!m_reach) fatal("The network cannot be watched");
  if (m_reach->isReachableViaWiFi() || m_reach->isReachableViaWWAN()) return;
  showAlert({.messageText = tr("Network is not available."),
             .informativeText = tr("Please check your internet connection and make sure internet connection "
                                   "is working properly.")});
}

// Menus.

void AppDelegate::makeLoginMenu() {
  m_loginMenu.addAction(tr("&Sign in…"), [this] { loginClick(); });
  m_loginMenu.addAction(tr("S&ettings…"), [this] { m_prefWindow.showWindow(); });
  m_loginMenu.addAction(tr("&Help"), [this] { m_helpWindow.showWindow(); });
  m_loginMenu.addSeparator();
  m_loginMenu.addAction(tr("&Quit Velmora"), [this] { quitClick(); });
}

void AppDelegate::showContextMenu() {
  if (!isLoggedIn()) {
    m_statusItem.popUpMenu(m_loginMenu);
    return;
  }
  QMenu menu;
  menu.addAction(tr("&Talk"), [this] { openAssistant(true); });
  menu.addAction(tr("S&ettings…"), [this] { m_prefWindow.showWindow(); });
  menu.addAction(tr("&Help"), [this] { m_helpWindow.showWindow(); });
  menu.addSeparator();
  menu.addAction(tr("&Log out"), [this] { m_userDefaults.setObject(false, kLoggedInKey); });
  menu.addAction(tr("&Quit Velmora"), [this] { quitClick(); });
  m_statusItem.popUpMenu(menu);
}

ApplicationInformation AppDelegate::information() const {
  return ApplicationInformation::ofThisBuild(m_deployment ? m_deployment->links : DeploymentLinks());
}

}  // namespace velmora
