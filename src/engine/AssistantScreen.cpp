// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "engine/AssistantScreen.h"

#include <QHideEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QThread>
#include <algorithm>
#include <utility>

#include "auth/TokenStore.h"
#include "engine/InputDeviceAlert.h"
#include "engine/InputDeviceChoice.h"
#include "foundation/Log.h"
#include "platform/Alert.h"
#include "ui/Page.h"
#include "ui/preferences/PreferenceKeys.h"
#include "ui_AssistantView.h"

namespace velmora {
namespace {

const QColor kBackground(71, 72, 72);
const QColor kQuiet(0xc3, 0xc6, 0xc6);  // for what is not the user's own words
constexpr int kFullVolume = 100;        // percent
constexpr double kRequestScale = 1.35;  // against the other letters
constexpr std::size_t kLongestConversation = 1000;

constexpr char kStyle[] =
    "QToolButton { border: 2px solid transparent; border-radius: 8px; padding: 4px; background: transparent; "
    "}"
    "QToolButton:hover { background: #5c5e5e; }"
    "QToolButton:focus { border-color: white; }"
    "QToolButton::menu-indicator { image: none; }"
    "QToolButton#microphoneButton, QToolButton#speakerButton { min-width: 68px; max-width: 68px;"
    "  min-height: 68px; max-height: 68px; padding: 0; border-radius: 36px; background: #3b5bd6; }"
    "QToolButton#microphoneButton:hover, QToolButton#speakerButton:hover { background: #4a6ae6; }"
    "QToolButton#microphoneButton:pressed, QToolButton#speakerButton:pressed { background: #2d48b3; }"
    "QToolButton#microphoneButton:focus, QToolButton#speakerButton:focus { border-color: #a9b6ff; }";

/// How loud answers are asked for, 1 being full.
double answerVolume(const UserDefaults &defaults) {
  const QVariant percent = defaults.objectForKey(kAnswerVolumeKey);
  return std::clamp(percent.isValid() ? percent.toInt() : kFullVolume, 1, kFullVolume) / 100.0;
}

/// The request with its first character, however many units that takes, as a capital.
QString capitalised(const QString &text) {
  const qsizetype first = !text.isEmpty() && text.at(0).isHighSurrogate() ? 2 : 1;
  return text.left(first).toUpper() + text.mid(first);
}

}  // namespace

AssistantScreen::AssistantScreen(AssistantHost &host, UserDefaults &defaults)
    : m_host(host),
      m_defaults(defaults),
      m_settingsWindow(host.information(), defaults),
      m_capture([this](const std::int16_t *samples, std::ptrdiff_t count) {
        // There is one: the microphone is opened after a turn was begun, and stopped before it goes.
        m_api->sendAudioFrame(samples, count);
      }) {
  m_playback.emplace(*this);
}

AssistantScreen::~AssistantScreen() = default;

void AssistantScreen::endConversation() {
  m_capture.stop();
  m_api.reset();
  m_playback.reset();
}

void AssistantScreen::viewDidLoad() {
  m_ui = std::make_unique<Ui::AssistantView>();
  m_ui->setupUi(this);
  QPalette colors = palette();
  colors.setColor(QPalette::Window, kBackground);
  colors.setColor(QPalette::WindowText, Qt::white);
  setPalette(colors);
  setAutoFillBackground(true);
  setStyleSheet(QString::fromLatin1(kStyle));
  QFont font = m_ui->spokenTextLabel->font();
  font.setPointSizeF(font.pointSizeF() * kRequestScale);
  m_ui->spokenTextLabel->setFont(font);
  makeMenu();
  connect(m_ui->gearIcon, &QToolButton::clicked, this, &AssistantScreen::gearClicked);
  connect(m_ui->closeButton, &QToolButton::clicked, this, &AssistantScreen::closeClick);
  connect(m_ui->microphoneButton, &QToolButton::clicked, this, &AssistantScreen::buttonAction);
  connect(m_ui->speakerButton, &QToolButton::clicked, this, &AssistantScreen::stopSpeaking);
  m_ui->waveformView->setClickListener([this](QMouseEvent &) {
    if (isListening()) buttonAction();
  });
  loadPages();
  m_plot = std::make_unique<MicrophonePlot>(m_capture.mic(), *m_ui->waveformView);
  display(false, true);
  showPrompt(Prompt::mind);
  if (!Capture::hasInputDevice()) alertWithoutInputDevice();
  m_capture.setUp();
}

void AssistantScreen::makeMenu() {
  m_gearMenu = new QMenu(m_ui->gearIcon);
  m_gearMenu->addAction(tr("&Settings…"), this, &AssistantScreen::settingsClicked);
  m_gearMenu->addAction(tr("&Help"), this, &AssistantScreen::helpClicked);
  m_gearMenu->addSeparator();
  m_gearMenu->addAction(tr("&Log out"), this, &AssistantScreen::logoutClicked);
  m_gearMenu->addAction(tr("&Quit Velmora"), this, &AssistantScreen::quitClicked);
}

void AssistantScreen::loadPages() {
  // Not filled by the page: as if it were clear.
  m_ui->myWebview->setPalette(palette());
  m_ui->myWebview->load(pageNamed(QStringLiteral("basic9")));
}

void AssistantScreen::setPagesHidden(bool hidden) { m_ui->myWebview->setHidden(hidden); }

void AssistantScreen::unloadPages() { m_ui->myWebview->unload(); }

// What the user does.

void AssistantScreen::buttonAction() {
  if (isListening()) {
    stopListening();
  } else if (!m_playback->isSpeaking()) {
    startListening();
  }
}

void AssistantScreen::gearClicked() {
  m_gearMenu->popup(m_ui->gearIcon->mapToGlobal(m_ui->gearIcon->rect().bottomLeft()));
}

void AssistantScreen::settingsClicked() { m_settingsWindow.showWindow(); }

void AssistantScreen::helpClicked() { m_helpWindow.showWindow(); }

void AssistantScreen::logoutClicked() {
  showPrompt(Prompt::mind);
  m_defaults.setObject(false, kLoggedInKey);
  m_defaults.synchronize();
}

void AssistantScreen::quitClicked() { m_host.terminate(); }

void AssistantScreen::closeClick() {
  if (isListening()) stopListening();
  closeScreen();
}

void AssistantScreen::stopSpeaking() {
  m_isSilenced = true;
  m_playback->stopSpeaking();
}

void AssistantScreen::keyPressEvent(QKeyEvent *event) {
  switch (event->key()) {
    case Qt::Key_Escape: closeClick(); return;
    case Qt::Key_Space:
      if (event->isAutoRepeat()) return;
      m_playback->isSpeaking() ? stopSpeaking() : buttonAction();
      return;
    default: QWidget::keyPressEvent(event);
  }
}

void AssistantScreen::showEvent(QShowEvent *event) {
  QWidget::showEvent(event);
  m_isClosed = false;
  // Who opens it is about to talk.
  if (!m_api) preloadConversations();
}

void AssistantScreen::hideEvent(QHideEvent *event) {
  QWidget::hideEvent(event);
  // Put away for a while by the desktop only.
  if (event->spontaneous()) return;
  // Whatever closed it: the next time the space bar talks again. While the button is hidden it cannot have
  // the focus; once it is shown, it takes it from here.
  if (isViewLoaded())
    (m_ui->microphoneButton->isHidden() ? this : static_cast<QWidget *>(m_ui->microphoneButton))->setFocus();
  m_isClosed = true;
  m_startsWhenReady = false;
  if (isListening()) stopListening();
  stopSpeaking();
  // They weigh as much as several programs.
  unloadPages();
}

// A turn.

Conversation *AssistantScreen::api() {
  const std::string token = m_defaults.stringForKey(kAuthTokenKey).toStdString();
  // Only between turns: what another account said is none of this one's.
  if (m_api && !isListening() && !m_isWaiting && m_apiToken != token) m_api.reset();
  if (m_api) return m_api.get();
  std::string problem;
  ConversationFactory *const factory = conversationFactory(problem);
  if (factory == nullptr) {
    log("The assistant cannot be spoken with: ", problem);
    return nullptr;
  }
  m_apiToken = token;
  m_api = factory->make(*this, *this, *m_host.deployment(), m_defaults);
  return m_api.get();
}

void AssistantScreen::startListening() {
  if (isListening()) return;
  const bool wasLoaded = isViewLoaded();
  if (!wasLoaded) viewDidLoad();
  if (!m_host.isReachable()) {
    showAlert({.messageText = tr("Alexa Alert"),
               .informativeText = tr("You are not connected to internet, Please connect to use Alexa."),
               .buttons = {tr("OK")}},
              isVisible() ? this : nullptr);
    return;
  }
  if (!Capture::hasInputDevice()) {
    if (wasLoaded) alertWithoutInputDevice();  // else it has just been said
    return;
  }
  if (m_host.deployment() == nullptr) {
    m_startsWhenReady = true;
    showPrompt(Prompt::gettingReady);
    return;
  }
  if (m_playback->isSpeaking()) m_playback->stopSpeaking();
  m_startsWhenReady = m_isSilenced = m_isClosed = m_isWaiting = false;
  Conversation *const conversation = api();
  ++m_turn;
  m_ui->history->endExchange(std::exchange(m_request, {}));
  if (conversation == nullptr) {
    m_prompt = Prompt::none;
    showLabel(tr("A part of Velmora is missing or damaged. Please install Velmora again."), Qt::white);
    return;
  }
  selectChosenInputDevice(m_defaults, m_capture.engine());
  m_capture.mic().setVolume(answerVolume(m_defaults));
  conversation->beginTurn(m_capture.volumePercentage());
  m_capture.start();
  m_playback->playStartPrompt();
  listeningStarted();
  asyncInTurn([this] {
    if (!isListening()) return;
    showPrompt(Prompt::listening);
    display(true, false);
  });
  updateBusy();
}

void AssistantScreen::stopListening() {
  if (QThread::currentThread() != thread()) {
    asyncInTurn([this] { stopListening(); });
    return;
  }
  const bool wasListening = isListening();
  m_capture.stop();
  Conversation *const conversation = m_api || m_host.deployment() != nullptr ? api() : nullptr;
  if (conversation != nullptr) conversation->endAudio();
  m_isWaiting = m_isWaiting || wasListening;
  updateBusy();
  asyncInTurn([this] {
    if (isListening()) return;
    if (m_prompt == Prompt::listening) showPrompt(Prompt::moment);
    display(false, true);
  });
}

void AssistantScreen::updateRequestText(const std::string &text) {
  log("Request text: ", text);
  asyncInTurn([this, request = capitalised(QString::fromStdString(text))] {
    m_prompt = Prompt::none;
    m_request = QLatin1Char('"') + request + QLatin1Char('"');
    showLabel(m_request, Qt::white);
  });
}

void AssistantScreen::updateResponseText(const std::string &text) {
  asyncInTurn([this, text] {
    m_conversation.push_back({.text = text, .fromUser = false});
    if (m_conversation.size() > kLongestConversation) m_conversation.pop_front();
    // That it speaks is seen already, and who has closed the window was not to be heard.
    const bool isOfInterest = !m_isClosed || !m_request.isEmpty();
    if (text != kSpokenAnswerPlaceholder && isOfInterest)
      m_ui->history->setAnswer(QString::fromStdString(text));
  });
}

void AssistantScreen::playResponse(const std::string &mp3) {
  if (!m_isClosed) m_playback->playResponse(mp3);
}

void AssistantScreen::speakerIcon(bool isShown) {
  async([this, isShown] {
    if (!isViewLoaded()) return;
    if (isShown) m_isSilenced = false;
    display(isShown, true);
    updateBusy();
  });
}

void AssistantScreen::continueIfFollowUp() {
  asyncInTurn([this] {
    if (!m_isSilenced && !m_isClosed && m_api) m_api->continueIfFollowUp();
  });
}

void AssistantScreen::volumeAsked(int percent) {
  async([this, percent] { m_defaults.setObject(percent, kAnswerVolumeKey); });
}

void AssistantScreen::turnEnded(const CallResult &result) {
  asyncInTurn([this, result] { showTurnEnded(result); });
}

void AssistantScreen::showTurnEnded(const CallResult &result) {
  m_isWaiting = false;
  if (result.succeeded()) {
    // Nothing was understood, or there was nothing to understand.
    if (m_prompt == Prompt::moment) showPrompt(Prompt::mind);
    updateBusy();
    return;
  }
  // Nobody hears what the microphone brings.
  if (isListening()) m_capture.stop();
  display(m_playback->isSpeaking(), true);
  m_prompt = Prompt::none;
  switch (static_cast<StatusCode>(result.statusCode)) {
    case StatusCode::unauthenticated:
      showLabel(tr("The assistant does not know you any more. Please log out and sign in again."), Qt::white);
      break;
    case StatusCode::resourceExhausted:
      showLabel(tr("The assistant is busy. Please try again in a moment."), Qt::white);
      break;
    case StatusCode::unavailable:
      showLabel(tr("The assistant cannot be reached. Please try again in a moment."), Qt::white);
      break;
    default: showLabel(tr("That did not work. Please try again."), Qt::white);
  }
  updateBusy();
}

// What is seen.

void AssistantScreen::display(bool microphoneHidden, bool plotHidden) {
  const bool takesFocus = !isFocusElsewhere();
  m_ui->microphoneButton->setHidden(microphoneHidden);
  m_plot->setHidden(plotHidden);
  m_ui->waveformView->setHidden(plotHidden);
  setPagesHidden(plotHidden);
  // With neither of the others it speaks.
  m_ui->speakerButton->setVisible(microphoneHidden && plotHidden);
  // The keyboard goes to what does the next thing.
  QWidget *const next = !plotHidden        ? static_cast<QWidget *>(m_ui->waveformView)
                        : microphoneHidden ? m_ui->speakerButton
                                           : m_ui->microphoneButton;
  if (takesFocus) next->setFocus();
}

/// Whether the user has moved the keyboard to something else.
bool AssistantScreen::isFocusElsewhere() const {
  const QWidget *const focus = focusWidget();
  return focus != nullptr && focus != this && !m_ui->stage->isAncestorOf(focus);
}

void AssistantScreen::showPrompt(Prompt prompt) {
  m_prompt = prompt;
  switch (prompt) {
    case Prompt::none: return;
    case Prompt::mind: showLabel(tr("What's on your mind?"), Qt::white); return;
    case Prompt::gettingReady: showLabel(tr("Velmora is getting ready…"), kQuiet); return;
    case Prompt::listening: showLabel(tr("Listening…"), kQuiet); return;
    case Prompt::moment: showLabel(tr("One moment…"), kQuiet); return;
  }
}

void AssistantScreen::showLabel(const QString &text, const QColor &color) {
  QPalette colors = m_ui->spokenTextLabel->palette();
  colors.setColor(QPalette::WindowText, color);
  m_ui->spokenTextLabel->setPalette(colors);
  m_ui->spokenTextLabel->setText(text);
}

void AssistantScreen::deploymentChanged() {
  m_capture.stop();
  m_api.reset();
  const bool wasWaiting = std::exchange(m_isWaiting, false);
  ++m_turn;
  if (!isViewLoaded()) return;
  display(m_playback->isSpeaking(), true);
  if (m_host.deployment() != nullptr && std::exchange(m_startsWhenReady, false)) {
    startListening();
  } else if (m_prompt == Prompt::listening || m_prompt == Prompt::moment || wasWaiting) {
    m_prompt = Prompt::none;
    showLabel(tr("The assistant was interrupted. Please try again."), Qt::white);
  }
  updateBusy();
}

void AssistantScreen::forgetConversation() {
  m_capture.stop();
  stopSpeaking();
  m_api.reset();
  m_isWaiting = false;
  ++m_turn;
  m_conversation.clear();
  m_request.clear();
  if (!isViewLoaded()) return;
  m_ui->history->clear();
  showPrompt(Prompt::mind);
  display(false, true);
  updateBusy();
}

void AssistantScreen::updateBusy() {
  const bool isBusy = isListening() || m_isWaiting || m_playback->isSpeaking();
  if (std::exchange(m_isBusy, isBusy) != isBusy) m_host.screenBusyChanged();
}

void AssistantScreen::asyncInTurn(MainQueue::Work work) {
  async([this, turn = m_turn.load(), work = std::move(work)] {
    if (turn == m_turn) work();
  });
}

}  // namespace velmora
