// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// What the two assistant screens have in common: all of a conversation by voice, as the user sees it.
#pragma once

#include <QWidget>
#include <atomic>
#include <cstddef>
#include <deque>
#include <memory>
#include <optional>
#include <string>

#include "engine/AssistantHost.h"
#include "engine/Capture.h"
#include "engine/Conversation.h"
#include "engine/MicrophonePlot.h"
#include "engine/ResponsePlayback.h"
#include "foundation/MainQueue.h"
#include "foundation/UserDefaults.h"
#include "ui/help/HelpWindow.h"
#include "ui/preferences/PreferencesWindowController.h"

class QMenu;

namespace Ui {
class AssistantView;
}

namespace velmora {

/// What was said in a conversation, one piece of it.
struct ConversationEntry {
  std::string text;
  bool fromUser = false;
};

/// A screen with a microphone: idle, listening, waiting for the answer, or speaking it. Main thread, but for
/// what the conversation and the player call, which may come on any; what those bring is shown from the main
/// queue, and dropped when the turn that it belongs to is not the present one any more.
///
/// A screen that is hidden, which is how it is closed, hears and says nothing more.
class AssistantScreen : public QWidget,
                        public ConversationTextDelegate,
                        public ResponsePlaybackDelegate,
                        private ConversationObserver {
  Q_OBJECT

 public:
  /// The host and the settings outlive the screen.
  AssistantScreen(AssistantHost &host, UserDefaults &defaults);
  ~AssistantScreen() override;

  /// Whether the microphone is open.
  [[nodiscard]] bool isListening() const { return m_capture.isListening(); }
  /// Whether it listens, waits for an answer or speaks it.
  [[nodiscard]] bool isBusy() const { return m_isBusy; }

  /// The microphone button, and a click into the plot: stops listening, or starts it unless an answer is
  /// being spoken.
  void buttonAction();
  /// Begins a turn. With no network it says so instead; with no service yet, the turn begins when that is
  /// there, if the screen is still open.
  void startListening() override;
  /// Ends what the user says; the answer comes. Any thread.
  void stopListening() override;
  /// The speaker button: silences the answer.
  void stopSpeaking();
  void gearClicked();
  void settingsClicked();
  void helpClicked();
  /// Signs the user out, which whoever watches the settings carries out.
  void logoutClicked();
  void quitClicked();
  /// Stops listening, and closes.
  void closeClick();

  /// The request as recognised. Any thread.
  void updateRequestText(const std::string &text) override;
  /// The answer's text. Any thread.
  void updateResponseText(const std::string &text) override;
  /// The spoken answer. Any thread.
  void playResponse(const std::string &mp3) override;
  /// The display for an answer that begins to be spoken, or is over. Any thread.
  void speakerIcon(bool isShown) override;
  /// The answer has been spoken. Any thread.
  void continueIfFollowUp() override;

  /// The answers so far, the oldest of a very long conversation excepted.
  [[nodiscard]] const std::deque<ConversationEntry> &conversation() const { return m_conversation; }

  /// The host's service has come, gone or changed.
  void deploymentChanged();
  /// The user is somebody else from now on: all that was said is forgotten.
  void forgetConversation();

 protected:
  /// Sets up what is seen; to be called once, by the last constructor or before the screen is first shown.
  void viewDidLoad();
  /// Loads the pages that are shown while it listens.
  virtual void loadPages();
  /// Shows or hides those.
  virtual void setPagesHidden(bool hidden);
  /// Frees what they take, until they are shown again.
  virtual void unloadPages();
  /// Called when the microphone is open.
  virtual void listeningStarted() {}
  /// Makes the screen go away.
  virtual void closeScreen() = 0;
  /// Falls silent for good: nothing of a conversation or a player calls the screen any more. To be called by
  /// each final class's destructor, while it is still one of that class to those who call.
  void endConversation();

  [[nodiscard]] AssistantHost &host() const { return m_host; }
  [[nodiscard]] Ui::AssistantView &outlets() const { return *m_ui; }
  [[nodiscard]] QMenu *gearMenu() const { return m_gearMenu; }
  [[nodiscard]] bool isViewLoaded() const { return m_ui != nullptr; }

  void keyPressEvent(QKeyEvent *event) override;
  void showEvent(QShowEvent *event) override;
  void hideEvent(QHideEvent *event) override;

 private:
  /// What the label says beside requests.
  enum class Prompt { none, mind, gettingReady, listening, moment };

  void volumeAsked(int percent) override;
  void turnEnded(const CallResult &result) override;

  void makeMenu();
  /// The present account's, made when it is needed. Null, which is in the log, when it cannot be had.
  Conversation *api();
  void display(bool microphoneHidden, bool plotHidden);
  void showPrompt(Prompt prompt);
  void showLabel(const QString &text, const QColor &color);
  void showTurnEnded(const CallResult &result);
  [[nodiscard]] bool isFocusElsewhere() const;
  void updateBusy();
  void async(MainQueue::Work work) { MainQueue::main().async(m_alive, std::move(work)); }
  /// The same, unless another turn has begun or the screen has been closed by then.
  void asyncInTurn(MainQueue::Work work);

  AssistantHost &m_host;
  UserDefaults &m_defaults;
  std::unique_ptr<Ui::AssistantView> m_ui;  // null until it is loaded
  QMenu *m_gearMenu = nullptr;              // the gear's
  PreferencesWindowController m_settingsWindow;
  HelpWindow m_helpWindow;
  std::deque<ConversationEntry> m_conversation;

  Prompt m_prompt = Prompt::mind;
  QString m_request;  // of the present turn, as shown
  bool m_startsWhenReady = false;
  bool m_isWaiting = false;   // for the answer of a turn
  bool m_isSilenced = false;  // the answer was ended by the user: no follow-on
  bool m_isBusy = false;
  std::atomic<std::uint64_t> m_turn = 0;
  std::atomic<bool> m_isClosed = false;

  // What sounds goes before what it tells of it; the capture is stopped before the conversation goes.
  Alive m_alive;                        // asked by what sounds and by the conversation, on their threads
  std::string m_apiToken;               // that the conversation was begun with
  std::unique_ptr<Conversation> m_api;  // null until it is needed
  Capture m_capture;
  std::unique_ptr<MicrophonePlot> m_plot;
  std::optional<ResponsePlayback> m_playback;
};

}  // namespace velmora
