// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "ui/preferences/PreferencesWindowController.h"

#include <QApplication>
#include <QIcon>
#include <QKeyEvent>
#include <QLocale>
#include <QPushButton>
#include <QStyle>
#include <QTabBar>
#include <algorithm>
#include <utility>

#include "platform/Workspace.h"
#include "ui/Translations.h"
#include "ui/preferences/PreferenceKeys.h"
#include "ui/shortcut/MASShortcutBinder.h"
#include "ui/shortcut/MASShortcutMonitor.h"
#include "ui/shortcut/MASShortcutView.h"
#include "ui_PreferencesWindow.h"

namespace velmora {
namespace {

constexpr int kFullVolume = 100;                    // percent
constexpr int kIconSize = 96;                       // logical pixels
constexpr int kButtonPadding = 12;                  // where a style has less
constexpr double kNameScale = 1.5;                  // against the other letters
constexpr QLatin1String kLoggedInKey("logged_in");  // false signs the user out, whoever writes it
const QString kCustomShortcut = QStringLiteral("customShortcut");

QIcon applicationIcon() {
  const QIcon icon = QApplication::windowIcon();
  return icon.isNull() ? QIcon(QStringLiteral(":/icons/velmora.png")) : icon;
}

void setTextIfAny(QLabel &label, const QString &text) {
  if (!text.isEmpty()) label.setText(text);
}

}  // namespace

PreferencesWindowController::PreferencesWindowController(ApplicationInformation information,
                                                         UserDefaults &defaults, ShortcutMaker makeShortcut)
    : m_information(std::move(information)),
      m_defaults(defaults),
      m_makeShortcut(std::move(makeShortcut)),
      m_loginItem(kLoginHelperIdentifier) {
  // A status-bar program goes on without a window.
  setAttribute(Qt::WA_QuitOnClose, false);
}

PreferencesWindowController::~PreferencesWindowController() = default;

void PreferencesWindowController::showWindow() {
  loadWindow();
  show();
  raise();
  activateWindow();
}

MASShortcutView &PreferencesWindowController::shortcutView() {
  if (m_recorder != nullptr) return *m_recorder;
  m_recorder = new MASShortcutView(this);
  m_recorder->setObjectName(QStringLiteral("shortcutView"));
  m_recorder->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
  if (m_makeShortcut) {
    m_shortcut = m_makeShortcut(*m_recorder);
  } else {
    m_recorder->setAssociatedUserDefaultsKey(kCustomShortcut);
  }
  return *m_recorder;
}

void PreferencesWindowController::loadWindow() {
  if (m_ui) return;
  m_ui = std::make_unique<Ui::PreferencesWindow>();
  m_ui->setupUi(this);
  windowDidLoad();
}

void PreferencesWindowController::windowDidLoad() {
  placeRecorder();
  layOutNotes();
  fillLanguages();
  QFont nameFont = m_ui->appName->font();
  nameFont.setPointSizeF(nameFont.pointSizeF() * kNameScale);
  nameFont.setBold(true);
  m_ui->appName->setFont(nameFont);
  m_ui->runAtLaunchCheckBox->setEnabled(LoginItem::canAutostart());
  if (!m_ui->runAtLaunchCheckBox->isEnabled()) {
    m_ui->runAtLaunchCheckBox->setToolTip(
        tr("The folder of programs that start at log-in cannot be written."));
  }
  showInformation();
  const std::pair<QPushButton *, const QUrl &> links[] = {{m_ui->faqButton, m_information.forum},
                                                          {m_ui->fanPageButton, m_information.fanPage},
                                                          {m_ui->twitterButton, m_information.microblog},
                                                          {m_ui->tessalyButton, m_information.home}};
  for (const auto &[button, address] : links) {
    button->setMinimumWidth(button->fontMetrics().horizontalAdvance(button->text()) + 2 * kButtonPadding);
    button->setVisible(!address.isEmpty());
    button->setToolTip(address.toDisplayString());
  }
  connectControls();
  watchSettings();
  showShortcutNote();
  GeneralTabClick();
  m_recorder->setFocus();
}

/// What is registered at the start needs the recorder, and nothing else of the window.
void PreferencesWindowController::placeRecorder() {
  MASShortcutView &recorder = shortcutView();
  m_ui->shortcutLayout->insertWidget(0, &recorder);
  m_ui->shortcutLabel->setBuddy(&recorder);
  setTabOrder(m_ui->tabs->tabBar(), &recorder);
}

void PreferencesWindowController::layOutNotes() {
  m_ui->hotwordNote->ensurePolished();
  // Below the letters of the check box, not below the box.
  m_ui->hotwordNote->setIndent(style()->pixelMetric(QStyle::PM_IndicatorWidth) +
                               style()->pixelMetric(QStyle::PM_CheckBoxLabelSpacing));
  for (QLabel *const note : {m_ui->shortcutNote, m_ui->hotwordNote}) {
    note->ensurePolished();
    // The form does not ask how high a text becomes by its being broken into lines.
    note->setMinimumHeight(note->heightForWidth(note->minimumWidth()));
  }
}

/// Each in its own words, for whoever has got lost among the others.
void PreferencesWindowController::fillLanguages() {
  QComboBox &box = *m_ui->languageBox;
  box.addItem(tr("The desktop’s"), QString());
  for (const QString &code : interfaceLanguages()) {
    QString name = QLocale(code).nativeLanguageName();
    if (code == QLatin1String("en")) name = QStringLiteral("English");  // of no country
    box.addItem(name, code);
  }
}

void PreferencesWindowController::connectControls() {
  connect(m_ui->tabs, &QTabWidget::currentChanged, this, [this] {
    if (m_ui->tabs->currentWidget() == m_ui->aboutView) showInformation();
  });
  connect(m_ui->runAtLaunchCheckBox, &QCheckBox::clicked, this,
          &PreferencesWindowController::runAtLaunchStateChanged);
  connect(m_ui->hotwordCheckBox, &QCheckBox::clicked, this, [this](bool on) {
    m_defaults.setObject(on, kHotwordEnableKey);
    m_defaults.synchronize();
  });
  connect(m_ui->microphoneBox, &QComboBox::currentIndexChanged, this, [this] {
    const QString name = m_ui->microphoneBox->microphone();
    m_defaults.setObject(name.isEmpty() ? QVariant() : name, kInputDeviceKey);
    m_defaults.synchronize();
  });
  connect(m_ui->volumeSlider, &QSlider::valueChanged, this, [this](int percent) {
    m_ui->volumeSlider->setToolTip(tr("%1 %").arg(percent));
    if (m_isShowing) return;
    m_defaults.setObject(percent, kAnswerVolumeKey);
  });
  connect(m_ui->languageBox, &QComboBox::currentIndexChanged, this, [this] {
    if (m_isShowing) return;
    const QString code = m_ui->languageBox->currentData().toString();
    m_defaults.setObject(code.isEmpty() ? QVariant() : code, kLanguageKey);
    m_defaults.synchronize();
  });
  connect(m_ui->signOutButton, &QPushButton::clicked, this,
          [this] { m_defaults.setObject(false, kLoggedInKey); });
  connect(m_ui->faqButton, &QPushButton::clicked, this, &PreferencesWindowController::FAQClick);
  connect(m_ui->fanPageButton, &QPushButton::clicked, this, &PreferencesWindowController::FanPageClick);
  connect(m_ui->twitterButton, &QPushButton::clicked, this, &PreferencesWindowController::TwitterClick);
  connect(m_ui->tessalyButton, &QPushButton::clicked, this, &PreferencesWindowController::TessalyClick);
}

void PreferencesWindowController::watchSettings() {
  const auto watch = [this](const QString &key, UserDefaults::Observer observer) {
    using Notify = UserDefaults::Notify;
    m_observations.push_back(m_defaults.addObserver(key, Notify::initialAndNew, std::move(observer)));
  };
  watch(kRunAtLaunchEnableKey,
        [this](const QVariant &value) { m_ui->runAtLaunchCheckBox->setChecked(value.toBool()); });
  watch(kHotwordEnableKey,
        [this](const QVariant &value) { m_ui->hotwordCheckBox->setChecked(value.toBool()); });
  watch(kInputDeviceKey, [this](const QVariant &value) {
    const QSignalBlocker quiet(m_ui->microphoneBox);
    m_ui->microphoneBox->setMicrophone(value.toString());
  });
  // What is shown here is not chosen here.
  const auto shows = [this](const auto &show) {
    m_isShowing = true;
    show();
    m_isShowing = false;
  };
  watch(kAnswerVolumeKey, [this, shows](const QVariant &value) {
    shows([&] { m_ui->volumeSlider->setValue(value.isValid() ? value.toInt() : kFullVolume); });
  });
  watch(kLanguageKey, [this, shows](const QVariant &value) {
    shows([&] {
      m_ui->languageBox->setCurrentIndex(std::max(0, m_ui->languageBox->findData(value.toString())));
    });
  });
  watch(kLoggedInKey, [this](const QVariant &value) { showAccount(value.toBool()); });
  // Once whoever registers it has heard of it too.
  m_observations.push_back(m_defaults.addObserver(
      kCustomShortcut, UserDefaults::Notify::newOnly,
      [this](const QVariant &) { MainQueue::main().async(m_alive, [this] { showShortcutNote(); }); }));
}

/// Nothing else tells the user that a shortcut belongs to somebody else.
void PreferencesWindowController::showShortcutNote() {
  const auto &shortcut = m_recorder->shortcutValue();
  const bool isBound = MASShortcutBinder::sharedBinder().isRegisteredAction(kCustomShortcut);
  const bool works = !shortcut || MASShortcutMonitor::sharedMonitor().isShortcutRegistered(*shortcut);
  m_ui->shortcutNote->setVisible(isBound && !works);
}

void PreferencesWindowController::GeneralTabClick() { m_ui->tabs->setCurrentWidget(m_ui->generalVIew); }

void PreferencesWindowController::AboutTabClick() {
  m_ui->tabs->setCurrentWidget(m_ui->aboutView);
  showInformation();
}

void PreferencesWindowController::runAtLaunchStateChanged() {
  const bool on = m_ui->runAtLaunchCheckBox->isChecked();
  m_defaults.setObject(on, kRunAtLaunchEnableKey);
  m_defaults.synchronize();
  m_loginItem.setEnabled(on);
}

void PreferencesWindowController::FAQClick() { openUrl(m_information.forum); }
void PreferencesWindowController::FanPageClick() { openUrl(m_information.fanPage); }
void PreferencesWindowController::TwitterClick() { openUrl(m_information.microblog); }
void PreferencesWindowController::TessalyClick() { openUrl(m_information.home); }

void PreferencesWindowController::keyPressEvent(QKeyEvent *event) {
  if (event->matches(QKeySequence::Cancel) || event->matches(QKeySequence::Close)) {
    close();
  } else {
    QWidget::keyPressEvent(event);
  }
}

void PreferencesWindowController::showInformation() {
  m_ui->appIconImage->setPixmap(applicationIcon().pixmap(QSize(kIconSize, kIconSize), devicePixelRatioF()));
  setTextIfAny(*m_ui->appName, m_information.name);
  setTextIfAny(*m_ui->appVersion, m_information.version);
  setTextIfAny(*m_ui->appCopyright, m_information.copyright);
}

void PreferencesWindowController::showAccount(bool signedIn) {
  m_ui->accountState->setText(signedIn ? tr("You are signed in.") : tr("You are not signed in."));
  m_ui->signOutButton->setEnabled(signedIn);
}

}  // namespace velmora
