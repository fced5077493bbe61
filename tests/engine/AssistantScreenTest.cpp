// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The assistant screen with everything behind it, as far as a microphone and a loudspeaker of the test's own.
#include <gmock/gmock.h>

#include <QLabel>
#include <QTest>
#include <QToolButton>
#include <atomic>

#include "auth/TokenStore.h"
#include "engine/AssistantWindowController.h"
#include "protocol/ConverseRequest.h"
#include "support/EventLoop.h"
#include "support/Mp3.h"
#include "support/Responses.h"
#include "support/ScriptedServer.h"
#include "support/SoundServer.h"
#include "support/ToneFit.h"
#include "ui/NodeOutputPlot.h"
#include "ui/preferences/PreferenceKeys.h"

namespace velmora {
namespace {

using Request = Google_Assistant_Embedded_V1alpha1_ConverseRequest;
using ::testing::ElementsAre;
using tests::Inbox;
using tests::Response;
using tests::Result;
using tests::runUntil;
using tests::ScriptedServer;

/// Hears a few frames and answers with a tone.
class Service {
 public:
  [[nodiscard]] const Deployment &deployment() const { return m_server.deployment(); }

  Inbox<std::string> tokens;    // of the calls
  Inbox<int> volumes;           // that they ask for
  Inbox<std::string> frames;    // of all that was heard
  std::atomic<int> length = 3;  // of an utterance, in frames; 0: the user ends it
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
    last.setVolumePercentage(40);
    if (asksBack) last.setMicrophoneMode(Result::MicrophoneMode::dialogFollowOn);
    Response end;
    end.setResult(last);
    for (const Response &each :
         {tests::resultOf("what time is it"), tests::soundOf(tests::encodeMp3(quiet)), end})
      call.write(each.serialize());
    return {};
  }

  ScriptedServer m_server{[this](ScriptedServer::Call &call) { return converse(call); }};
};

class Host final : public AssistantHost {
 public:
  bool isReachable() const override { return true; }
  const Deployment *deployment() const override { return service; }
  ApplicationInformation information() const override { return {}; }
  void closeShownPopover() override {}
  void terminate() override {}
  void screenBusyChanged() override { ++busyChanges; }

  const Deployment *service = nullptr;
  int busyChanges = 0;
};

class AssistantScreenTest : public ::testing::Test {
 protected:
  AssistantScreenTest() {
    defaults.setObject(QStringLiteral("first"), kAuthTokenKey);
    host.service = &service.deployment();
    window.emplace(host, defaults);
    window->showWindow();
  }

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
    return *window->findChild<Widget *>(QLatin1String(name));
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

  tests::SoundServer sound;
  Service service;
  Host host;
  UserDefaults defaults;
  std::optional<AssistantWindowController> window;
};

TEST_F(AssistantScreenTest, ATurnIsShownFromTheClickToTheEndOfTheAnswer) {
  EXPECT_EQ(label(), "What's on your mind?");
  defaults.setObject(57, kAnswerVolumeKey);
  outlet("microphoneButton").click();
  ASSERT_TRUE(runUntil([&] { return listens(); }));
  ASSERT_TRUE(runUntil([&] { return isSpeaking(); }));
  EXPECT_FALSE(window->isListening());
  EXPECT_EQ(label(), "\"What time is it\"");
  ASSERT_TRUE(runUntil([&] { return isIdle(); }));
  EXPECT_EQ(answer(), "It is noon.");
  EXPECT_EQ(window->conversation().back().text, "It is noon.");
  EXPECT_EQ(host.busyChanges, 2);
  EXPECT_THAT(service.volumes.values(), ElementsAre(57));
  EXPECT_EQ(defaults.objectForKey(kAnswerVolumeKey).toInt(), 40) << "as the answer asks for";
  QTest::keyClick(&*window, Qt::Key_Escape);
  ASSERT_FALSE(window->isVisible());
  window->showWindow();
  EXPECT_EQ(window->focusWidget(), &outlet("microphoneButton"));
}

TEST_F(AssistantScreenTest, TheServiceHearsEverySampleOfTheChosenMicrophoneOnce) {
  sound.plugHum("other");
  ASSERT_TRUE(runUntil([] { return AudioEngine::inputDevices().value().size() == 2; }));
  defaults.setObject(QStringLiteral("other"), kInputDeviceKey);
  service.length = 0;
  begin();
  ASSERT_TRUE(runUntil([&] { return service.frames.values().size() >= 12; }));
  window->buttonAction();
  finish();
  std::vector<std::int16_t> heard;
  for (const std::string &frame : service.frames.values()) {
    ASSERT_EQ(frame.size(), 3200U);
    const auto *samples = reinterpret_cast<const std::int16_t *>(frame.data());
    heard.insert(heard.end(), samples, samples + 1600);
  }
  const std::span<const std::int16_t> hum(heard.begin() + 3200, 12'800);  // the microphone is open by then
  EXPECT_GT(tests::fitTone(hum, 440, 16000).signalToNoise(), 40);
}

TEST_F(AssistantScreenTest, TheUserEndsWhatItDoesByPressingOnTheSamePlace) {
  service.length = 0;
  service.asksBack = true;
  service.seconds = 60;
  for (const bool byKey : {false, true}) {
    QTest::keyClick(&*window, Qt::Key_Space);
    ASSERT_TRUE(runUntil([&] { return listens(); }));
    if (byKey) {
      QTest::keyClick(&*window, Qt::Key_Space);
    } else {
      QTest::mouseClick(window->findChild<NodeOutputPlot *>(), Qt::LeftButton);
    }
    EXPECT_FALSE(window->isListening());
    ASSERT_TRUE(runUntil([&] { return isSpeaking(); }));
    // The button of the microphone does nothing now, wherever the press comes from.
    window->buttonAction();
    EXPECT_FALSE(window->isListening());
    QTest::keyClick(&*window, Qt::Key_Space);
    ASSERT_TRUE(runUntil([&] { return isIdle(); }));
  }
  EXPECT_EQ(service.tokens.values().size(), 2U) << "who silences the answer is not asked";
}

TEST_F(AssistantScreenTest, ListensAgainByItselfUntilItIsClosed) {
  service.asksBack = true;
  window->startListening();
  ASSERT_TRUE(runUntil([&] { return service.tokens.values().size() == 3; }));
  // At whatever moment of a turn.
  for (const auto &moment :
       {std::function([&] { return listens(); }), std::function([&] { return isSpeaking(); })}) {
    ASSERT_TRUE(runUntil(moment));
    outlet("closeButton").setFocus();
    QTest::keyClick(&outlet("closeButton"), Qt::Key_Space);
    EXPECT_FALSE(window->isVisible());
    EXPECT_FALSE(window->isListening());
    ASSERT_TRUE(runUntil([&] { return !window->isBusy(); }));
    const auto turns = service.tokens.values().size();
    window->showWindow();
    EXPECT_TRUE(runUntil([&] { return window->focusWidget() == &outlet("microphoneButton"); }))
        << "the next time the space bar talks again";
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
      {StatusCode::unavailable, "The assistant cannot be reached. Please try again in a moment."}};
  for (const auto &[code, said] : cases) {
    service.refusal = code;
    window->startListening();
    EXPECT_TRUE(runUntil([&, text = said] { return label() == text && isIdle(); }))
        << said << " and not " << label();
    EXPECT_FALSE(window->isListening());
  }
}

TEST_F(AssistantScreenTest, BeginsWhenTheServiceComes) {
  host.service = nullptr;
  window->deploymentChanged();
  window->startListening();
  EXPECT_EQ(label(), "Velmora is getting ready…");
  host.service = &service.deployment();
  window->deploymentChanged();
  ASSERT_TRUE(runUntil([&] { return listens(); }));
}

TEST_F(AssistantScreenTest, AnotherAccountBeginsAnotherConversation) {
  begin();
  finish();
  window->forgetConversation();
  EXPECT_EQ(answer(), "");
  EXPECT_TRUE(window->conversation().empty());
  defaults.setObject(QStringLiteral("second"), kAuthTokenKey);
  window->startListening();
  ASSERT_TRUE(runUntil([&] { return service.tokens.values().size() == 2; }));
  EXPECT_THAT(service.tokens.values(), ElementsAre("Bearer first", "Bearer second"));
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
