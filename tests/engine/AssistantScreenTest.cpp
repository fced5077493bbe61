// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The assistant screen with everything behind it, as far as a microphone and a loudspeaker of the test's own.
#include <gmock/gmock.h>

#include <QLabel>
#include <QTest>
#include <QToolButton>
#include <algorithm>
#include <atomic>
#include <cmath>

#include "auth/TokenStore.h"
#include "engine/AssistantViewController.h"
#include "engine/AssistantWindowController.h"
#include "foundation/Deployment.h"
#include "platform/Alert.h"
#include "protocol/ConverseRequest.h"
#include "protocol/Responses.h"
#include "support/CapturedLog.h"
#include "support/EventLoop.h"
#include "support/Mp3.h"
#include "support/ScriptedServer.h"
#include "support/SoundServer.h"
#include "support/TemporaryFolder.h"
#include "support/ToneFit.h"
#include "ui/NodeOutputPlot.h"
#include "ui/preferences/PreferenceKeys.h"

namespace velmora {
namespace {

using Request = Google_Assistant_Embedded_V1alpha1_ConverseRequest;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using tests::CapturedLog;
using tests::Inbox;
using tests::Response;
using tests::Result;
using tests::runUntil;
using tests::ScriptedServer;
using tests::SoundServer;

/// Hears a few frames and answers with a tone.
class Service {
 public:
  Service() {
    (void)m_folder.write("roots.pem", m_server.roots());
    deployment = {
        .folder = m_folder.path(), .host = "127.0.0.1", .port = static_cast<std::uint16_t>(m_server.port())};
  }

  Deployment deployment;
  Inbox<std::string> tokens;    // of the calls
  Inbox<int> volumes;           // that they ask for
  Inbox<std::string> frames;    // of all that was heard
  std::atomic<int> length = 3;  // of an utterance, in frames; 0: the user ends it
  std::atomic<int> newVolume = 0;
  std::atomic<StatusCode> refusal = StatusCode::ok;
  std::atomic<bool> asksBack = false;
  std::atomic<double> seconds = 0.5;  // of the answer

 private:
  ScriptedServer::End converse(ScriptedServer::Call &call) {
    tokens.put(call.metadata().find("authorization")->second);
    if (refusal != StatusCode::ok) return {.code = refusal};
    volumes.put(Request::parse(call.read().value_or("")).config().audioOutConfig().volumePercentage());
    for (int heard = 0; const auto request = call.read();) {
      frames.put(Request::parse(*request).audioIn());
      if (++heard == length) call.write(tests::endOfUtterance().serialize());
    }
    const std::vector<std::int16_t> quiet(static_cast<std::size_t>(44100 * seconds), 100);
    Result last;
    last.setSpokenResponseText("It is noon.");
    last.setVolumePercentage(newVolume);
    if (asksBack) last.setMicrophoneMode(Result::MicrophoneMode::dialogFollowOn);
    Response end;
    end.setResult(last);
    for (const Response &each :
         {tests::resultOf("what time is it"), tests::soundOf(tests::encodeMp3(quiet)), end})
      call.write(each.serialize());
    return {};
  }

  tests::TemporaryFolder m_folder;
  ScriptedServer m_server{[this](ScriptedServer::Call &call) { return converse(call); }};
};

class Host final : public AssistantHost {
 public:
  bool isReachable() const override { return reachable; }
  const Deployment *deployment() const override { return service; }
  ApplicationInformation information() const override { return {}; }
  void closeShownPopover() override {}
  void terminate() override {}
  void screenBusyChanged() override { ++busyChanges; }

  bool reachable = true;
  const Deployment *service = nullptr;
  int busyChanges = 0;
};

class AssistantScreenTest : public ::testing::Test {
 protected:
  AssistantScreenTest() {
    setAlertAnswer([this](const Alert &alert) {
      alerts.push_back(alert.messageText.toStdString());
      return 0;
    });
    defaults.setObject(QStringLiteral("first"), kAuthTokenKey);
    host.service = &service.deployment;
    window.emplace(host, defaults);
    window->showWindow();
  }
  void TearDown() override { setAlertAnswer({}); }

  /// Listens until the service has heard three frames.
  void begin() {
    const auto heard = service.frames.values().size();
    ASSERT_TRUE(runUntil([] { return Capture::hasInputDevice(); }));
    window->startListening();
    ASSERT_TRUE(runUntil([&] { return service.frames.values().size() >= heard + 3; }));
  }
  void finish() {
    ASSERT_TRUE(runUntil([&] { return isSpeaking(); }));
    ASSERT_TRUE(runUntil([&] { return isIdle(); }));
  }
  template <typename Widget = QToolButton>
  [[nodiscard]] Widget &outlet(const char *name) {
    auto *const found = window->findChild<Widget *>(QLatin1String(name));
    if (found == nullptr) throw std::runtime_error(name);
    return *found;
  }
  [[nodiscard]] std::string label() { return outlet<QLabel>("spokenTextLabel").text().toStdString(); }
  [[nodiscard]] std::string answer() { return outlet<QLabel>("answer").text().toStdString(); }
  [[nodiscard]] bool isIdle() {
    return !window->isBusy() && outlet("microphoneButton").isVisible() &&
           !outlet("speakerButton").isVisible() && !outlet<QWidget>("myWebview").isVisible();
  }
  [[nodiscard]] bool isSpeaking() {
    return outlet("speakerButton").isVisible() && !outlet("microphoneButton").isVisible();
  }
  [[nodiscard]] bool listens() {
    return window->isListening() && label() == "Listening…" && outlet<QWidget>("myWebview").isVisible() &&
           !outlet("microphoneButton").isVisible();
  }

  std::vector<std::string> alerts;
  const CapturedLog log;
  SoundServer sound;
  Service service;
  Host host;
  UserDefaults defaults;
  std::optional<AssistantWindowController> window;
};

TEST_F(AssistantScreenTest, ATurnIsShownFromTheClickToTheEndOfTheAnswer) {
  EXPECT_EQ(label(), "What's on your mind?");
  ASSERT_TRUE(isIdle());
  outlet("microphoneButton").click();
  ASSERT_TRUE(runUntil([&] { return listens(); }));
  ASSERT_TRUE(runUntil([&] { return isSpeaking(); }));
  EXPECT_FALSE(window->isListening());
  EXPECT_EQ(label(), "\"What time is it\"");
  ASSERT_TRUE(runUntil([&] { return isIdle(); }));
  EXPECT_EQ(answer(), "It is noon.");
  EXPECT_EQ(window->conversation().back().text, "It is noon.");
  EXPECT_FALSE(window->conversation().back().fromUser);
  EXPECT_EQ(label(), "\"What time is it\"") << "it stays until the next one";
  EXPECT_EQ(host.busyChanges, 2);
  for (const auto &[text, shown] :
       {std::pair("über", "\"Über\""), std::pair("\xf0\x90\x90\xa8x", "\"\xf0\x90\x90\x80x\""),
        std::pair("", "\"\"")}) {
    window->updateRequestText(text);
    EXPECT_TRUE(runUntil([&, wanted = shown] { return label() == wanted; })) << label();
  }
}

TEST_F(AssistantScreenTest, TheServiceHearsEverySampleOnce) {
  std::vector<std::int16_t> tone(44100);
  for (std::size_t i = 0; i < tone.size(); ++i)
    tone[i] = static_cast<std::int16_t>(
        10'000 * std::sin(2 * std::numbers::pi * 331 * static_cast<double>(i) / 44100));
  service.length = 0;
  begin();
  sound.say(tone);
  window->buttonAction();
  finish();
  std::vector<std::int16_t> heard;
  for (const std::string &frame : service.frames.values()) {
    ASSERT_EQ(frame.size(), 3200U);
    const auto *samples = reinterpret_cast<const std::int16_t *>(frame.data());
    heard.insert(heard.end(), samples, samples + 1600);
  }
  const auto first =
      std::find_if(heard.begin(), heard.end(), [](std::int16_t sample) { return sample > 5000; });
  constexpr std::size_t kCompared = 12'000;
  ASSERT_GT(heard.end() - first, static_cast<std::ptrdiff_t>(kCompared));
  EXPECT_GT(tests::fitTone(std::span<const std::int16_t>(first, kCompared), 331, 16000).signalToNoise(), 40);
}

TEST_F(AssistantScreenTest, TheUserEndsWhatItDoesByPressingOnTheSamePlace) {
  service.length = 0;
  service.asksBack = true;
  service.seconds = 60;
  QTest::keyClick(&*window, Qt::Key_Space);
  ASSERT_TRUE(runUntil([&] { return listens(); }));
  QTest::mouseClick(window->findChild<NodeOutputPlot *>(), Qt::LeftButton);
  EXPECT_FALSE(window->isListening());
  ASSERT_TRUE(runUntil([&] { return isSpeaking(); }));
  // The button of the microphone does nothing now, wherever the press comes from.
  window->buttonAction();
  EXPECT_FALSE(window->isListening());
  QTest::keyClick(&*window, Qt::Key_Space);
  ASSERT_TRUE(runUntil([&] { return isIdle(); }));
  EXPECT_EQ(service.tokens.values().size(), 1U) << "who silences the answer is not asked";
}

TEST_F(AssistantScreenTest, ListensAgainByItselfUntilItIsClosed) {
  service.asksBack = true;
  window->startListening();
  ASSERT_TRUE(runUntil([&] { return service.tokens.values().size() == 3; }));
  // At whatever moment of a turn.
  for (const auto &moment :
       {std::function([&] { return listens(); }), std::function([&] { return isSpeaking(); })}) {
    ASSERT_TRUE(runUntil(moment));
    QTest::keyClick(&*window, Qt::Key_Escape);
    EXPECT_FALSE(window->isVisible());
    EXPECT_FALSE(window->isListening());
    ASSERT_TRUE(runUntil([&] { return !window->isBusy(); }));
    const auto turns = service.tokens.values().size();
    window->showWindow();
    EXPECT_FALSE(window->isListening());
    EXPECT_EQ(service.tokens.values().size(), turns);
    service.seconds = 60;  // an answer that does not end by itself
    window->startListening();
  }
}

TEST_F(AssistantScreenTest, WhatGoesWrongIsSaidAndTheMicrophoneIsClosed) {
  const std::pair<StatusCode, const char *> cases[] = {
      {StatusCode::unauthenticated,
       "The assistant does not know you any more. Please log out and sign in again."},
      {StatusCode::resourceExhausted, "The assistant is busy. Please try again in a moment."},
      {StatusCode::unavailable, "The assistant cannot be reached. Please try again in a moment."},
      {StatusCode::internal, "That did not work. Please try again."}};
  for (const auto &[code, said] : cases) {
    service.refusal = code;
    window->startListening();
    EXPECT_TRUE(runUntil([&, text = said] { return label() == text && isIdle(); }))
        << said << " and not " << label();
    EXPECT_FALSE(window->isListening());
  }
  EXPECT_THAT(alerts, IsEmpty());
}

TEST_F(AssistantScreenTest, BeginsWhenTheServiceComesAndSaysWhenItGoes) {
  host.service = nullptr;
  window->deploymentChanged();
  window->startListening();
  EXPECT_EQ(label(), "Velmora is getting ready…");
  host.service = &service.deployment;
  window->deploymentChanged();
  ASSERT_TRUE(runUntil([&] { return listens(); }));
  host.service = nullptr;
  window->deploymentChanged();
  EXPECT_EQ(label(), "The assistant was interrupted. Please try again.");
  ASSERT_TRUE(runUntil([&] { return isIdle(); }));
}

TEST_F(AssistantScreenTest, TheVolumeOfAnswersIsASettingThatTheAssistantMayChange) {
  defaults.setObject(57, kAnswerVolumeKey);
  service.newVolume = 40;
  window->startListening();
  ASSERT_TRUE(runUntil([&] { return defaults.objectForKey(kAnswerVolumeKey).toInt() == 40; }));
  service.newVolume = 0;
  window->startListening();
  ASSERT_TRUE(runUntil([&] { return service.volumes.values().size() == 2; }));
  ASSERT_TRUE(runUntil([&] { return isSpeaking(); }));
  EXPECT_THAT(service.volumes.values(), ElementsAre(57, 40));
  EXPECT_EQ(defaults.objectForKey(kAnswerVolumeKey).toInt(), 40);
}

TEST_F(AssistantScreenTest, AnotherAccountBeginsAnotherConversation) {
  begin();
  finish();
  window->logoutClicked();
  EXPECT_EQ(label(), "What's on your mind?");
  EXPECT_FALSE(defaults.boolForKey(kLoggedInKey));
  window->forgetConversation();
  EXPECT_EQ(answer(), "");
  EXPECT_TRUE(window->conversation().empty());
  defaults.setObject(QStringLiteral("second"), kAuthTokenKey);
  window->startListening();
  ASSERT_TRUE(runUntil([&] { return service.tokens.values().size() == 2; }));
  EXPECT_THAT(service.tokens.values(), ElementsAre("Bearer first", "Bearer second"));
}

TEST_F(AssistantScreenTest, TheSpaceBarTalksWhateverButtonWasPressedBefore) {
  QTest::mouseClick(&outlet("closeButton"), Qt::LeftButton);
  ASSERT_FALSE(window->isVisible());
  window->showWindow();
  EXPECT_EQ(window->focusWidget(), &outlet("microphoneButton"));
  outlet("closeButton").setFocus();
  QTest::keyClick(&outlet("closeButton"), Qt::Key_Space);
  ASSERT_FALSE(window->isVisible());
  window->showWindow();
  EXPECT_EQ(window->focusWidget(), &outlet("microphoneButton"));
}

TEST_F(AssistantScreenTest, WithoutNetworkOrMicrophoneNoTurnBegins) {
  host.reachable = false;
  window->startListening();
  EXPECT_THAT(alerts, ElementsAre("Alexa Alert"));
  host.reachable = true;
  sound.unplugMicrophone("mic");
  ASSERT_TRUE(runUntil([] { return !Capture::hasInputDevice(); }));
  outlet("microphoneButton").click();
  EXPECT_THAT(alerts, ElementsAre("Alexa Alert", "Google Assistant"));
  EXPECT_FALSE(window->isListening());
  EXPECT_EQ(label(), "What's on your mind?");
  // One that is asked for without being shown says it once.
  AssistantViewController screen(host, defaults);
  screen.startListening();
  EXPECT_EQ(alerts.size(), 3U);
  EXPECT_THAT(service.tokens.values(), IsEmpty());
}

TEST_F(AssistantScreenTest, SoundThatFailsWhileItListensComesBack) {
  const std::pair<std::function<void()>, std::function<void()>> accidents[] = {
      {[&] { sound.kill(); }, [&] { sound.start(); }},
      {[&] { sound.unplugMicrophone("mic"); }, [&] { sound.plugMicrophone("mic"); }}};
  service.length = 10;
  for (const auto &[fail, comeBack] : accidents) {
    begin();
    fail();
    ASSERT_TRUE(runUntil([] { return !Capture::hasInputDevice(); }));
    comeBack();
    finish();  // the turn goes on
  }
  begin();
  sound.freeze();
  window->buttonAction();  // the user has had enough
  EXPECT_FALSE(window->isListening());
  ASSERT_TRUE(runUntil([&] { return isIdle(); })) << "the answer cannot be heard, which is noticed";
  sound.thaw();
}

TEST_F(AssistantScreenTest, SoundThatFailsWhileItSpeaksEndsTheAnswer) {
  const std::pair<std::function<void()>, std::function<void()>> accidents[] = {
      {[&] { sound.kill(); }, [&] { sound.start(); }}, {[&] { sound.freeze(); }, [&] { sound.thaw(); }}};
  for (const auto &[fail, comeBack] : accidents) {
    service.seconds = 30;
    begin();
    ASSERT_TRUE(runUntil([&] { return isSpeaking(); }));
    fail();
    ASSERT_TRUE(runUntil([&] { return isIdle(); }));
    comeBack();
    service.seconds = 0.5;
    begin();
    finish();
  }
}

}  // namespace
}  // namespace velmora
