// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Turns by voice: everything between a microphone and a loudspeaker of the test's own.
#include <gmock/gmock.h>

#include <QtGlobal>
#include <algorithm>
#include <atomic>
#include <cmath>
#include <numeric>

#include "auth/TokenStore.h"
#include "engine/API.h"
#include "engine/Capture.h"
#include "engine/InputDeviceAlert.h"
#include "engine/LocalAssistant.h"
#include "engine/ResponsePlayback.h"
#include "foundation/MainQueue.h"
#include "platform/Alert.h"
#include "platform/audio/AudioFile.h"
#include "platform/audio/Mp3Decoder.h"
#include "support/CapturedLog.h"
#include "support/EventLoop.h"
#include "support/Mp3.h"
#include "support/ScriptedServer.h"
#include "support/SoundServer.h"
#include "support/ToneFit.h"

namespace velmora {
namespace {

using Response = Google_Assistant_Embedded_V1alpha1_ConverseResponse;
using Samples = std::vector<std::int16_t>;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using tests::CapturedLog;
using tests::Inbox;
using tests::runUntil;
using tests::ScriptedServer;
using tests::SoundServer;

/// A screen without a window: does what one must, and notes what the user would see.
class Screen final : public ConversationTextDelegate, public ResponsePlaybackDelegate {
 public:
  Screen(const Deployment &deployment, const std::string &token) : playback(*this) {
    m_defaults.setObject(QString::fromStdString(token), kAuthTokenKey);
    m_api.emplace(*this, deployment, m_defaults);
    capture.setUp();
  }
  ~Screen() override {
    capture.stop();
    m_api.reset();
  }

  void startListening() override {
    MainQueue::main().async(m_alive, [this] {
      seen.put("listens");
      m_api->beginTurn(capture.volumePercentage());
      capture.start();
      playback.playStartPrompt();
    });
  }
  void stopListening() override {
    MainQueue::main().async(m_alive, [this] {
      capture.stop();
      m_api->endAudio();
      seen.put("waits");
    });
  }

  /// Runs the event loop until the newest that was seen is this, for the `times`th time.
  [[nodiscard]] bool sees(const std::string &what, std::ptrdiff_t times = 1) {
    return runUntil([&] {
      const auto all = seen.values();
      return std::count(all.begin(), all.end(), what) >= times;
    });
  }

  Inbox<std::string> seen;
  Inbox<std::string> answers;                     // MP3
  std::function<void()> beforeTheAnswer = [] {};  // off the main thread
  Capture capture{[this](const std::int16_t *samples, std::ptrdiff_t count) {
    EXPECT_EQ(count, 1600);
    m_api->sendAudioFrame(samples, count);
  }};
  ResponsePlayback playback;

 private:
  void updateRequestText(const std::string &text) override { seen.put("\"" + text + "\""); }
  void updateResponseText(const std::string & /*text*/) override {}
  void playResponse(const std::string &mp3) override {
    beforeTheAnswer();
    answers.put(mp3);
    playback.playResponse(mp3);
  }
  void speakerIcon(bool isShown) override { seen.put(isShown ? "speaks" : "silent"); }
  void continueIfFollowUp() override {
    MainQueue::main().async(m_alive, [this] { m_api->continueIfFollowUp(); });
  }

  UserDefaults m_defaults;
  std::optional<API> m_api;
  Alive m_alive;
};

Samples decoded(const std::string &mp3, int &rate) {
  Mp3Decoder decoder(std::make_shared<const std::string>(mp3));
  rate = decoder.sampleRate();
  Samples all(static_cast<std::size_t>(60 * rate));
  all.resize(decoder.decode(all));
  return all;
}

Samples question(const char *name) {
  AudioFile file(std::filesystem::path(VELMORA_QUESTIONS) / name);
  Samples all(static_cast<std::size_t>(10 * AudioSource::sampleRate));
  all.resize(file.read(all).samples);
  return all;
}

/// What comes out of the loudspeaker while `deed` lasts, from the first sound to the last.
template <typename Deed>
Samples heardDuring(const SoundServer &server, const Deed &deed) {
  const auto recording = server.record();
  deed();
  // What was played last is on its way still; a mark behind it tells when it has come.
  const auto length = recording->samples().size();
  EXPECT_TRUE(tests::eventually([&] { return recording->samples().size() > length + 44100 / 2; }));
  Samples all = recording->samples();
  const auto isSound = [](std::int16_t sample) { return sample != 0; };
  all.erase(std::find_if(all.rbegin(), all.rend(), isSound).base(), all.end());
  all.erase(all.begin(), std::find_if(all.begin(), all.end(), isSound));
  return all;
}

/// The correlation of the two in the 10 ms in which they are least alike; silence is like anything. The
/// server's resampler begins anywhere between two samples, so that one may be half a sample later than the
/// other; what is missing or comes twice makes all that follows unlike.
double leastLikeness(const Samples &one, const Samples &other) {
  constexpr std::ptrdiff_t kPart = 441;
  double best = -1.0;
  for (const std::ptrdiff_t lag : {-1, 0, 1}) {
    double least = 1.0;
    const auto end = static_cast<std::ptrdiff_t>(std::min(one.size(), other.size())) - kPart - 1;
    for (std::ptrdiff_t at = 1; at < end; at += kPart) {
      const auto begin = one.begin() + at;
      const auto begun = other.begin() + at + lag;
      const double product = std::inner_product(begin, begin + kPart, begun, 0.0);
      const double power = std::inner_product(begin, begin + kPart, begin, 0.0);
      const double otherPower = std::inner_product(begun, begun + kPart, begun, 0.0);
      if (std::max(power, otherPower) < kPart * 100.0 * 100.0) continue;  // -50 dBFS
      least = std::min(least, product / std::sqrt(std::max(1.0, power * otherPower)));
    }
    best = std::max(best, least);
  }
  return best;
}

TEST(VoiceTurn, ASpokenQuestionIsAnsweredAloudAndAFollowOnListensByItself) {
  const SoundServer server;
  const LocalAssistant assistant({.program = VELMORA_ASSISTANT});
  Screen screen(assistant.deployment(), assistant.token());
  const auto say = [&](const char *name) { server.say(question(name), "mic", AudioSource::sampleRate); };
  screen.startListening();
  ASSERT_TRUE(screen.sees("listens"));
  ASSERT_TRUE(runUntil([&] { return screen.capture.engine().state() == AudioEngine::State::running; }));
  say("09-lets-play-a-guessing-game.wav");
  ASSERT_TRUE(screen.sees("waits"));
  const Samples heard = heardDuring(server, [&] { ASSERT_TRUE(screen.sees("silent")); });
  EXPECT_THAT(screen.seen.values(), ::testing::IsSupersetOf({"\"let's play a guessing game\"", "speaks"}));

  // Whatever the sound server does to samples at the answer's rate, it does to the decoded answer as well.
  int rate = 0;
  const Samples whole = decoded(screen.answers.values().at(0), rate);
  EXPECT_GT(whole.size(), static_cast<std::size_t>(rate));

  // It asked back.
  ASSERT_TRUE(screen.sees("listens", 2));
  say("10-fifty.wav");
  ASSERT_TRUE(screen.sees("\"fifty\""));
  ASSERT_TRUE(screen.sees("speaks", 2));
  EXPECT_TRUE(screen.playback.isSpeaking());
  // Who stops the answer is not asked.
  screen.playback.stopSpeaking();
  EXPECT_FALSE(screen.playback.isSpeaking());
  ASSERT_TRUE(screen.sees("silent", 2));

  const Samples wanted = heardDuring(server, [&] { server.play(whole, rate); });
  ASSERT_GT(wanted.size(), whole.size() / 2);
  EXPECT_NEAR(static_cast<double>(heard.size()), static_cast<double>(wanted.size()), 4.0);
  EXPECT_GT(leastLikeness(heard, wanted), 0.7);
  EXPECT_EQ(screen.answers.values().size(), 2U);
  EXPECT_FALSE(screen.capture.isListening());
}

/// A service that hears a second of audio, or all until it ends, and answers with a tone.
class ToneService {
 public:
  ToneService() {
    (void)m_folder.write("roots.pem", m_server.roots());
    m_deployment.folder = m_folder.path();
    m_deployment.host = "127.0.0.1";
    m_deployment.port = m_server.port();
  }
  [[nodiscard]] const Deployment &deployment() const { return m_deployment; }

  Inbox<std::size_t> frames;  // the bytes of each
  std::atomic<double> seconds = 0.3;

 private:
  ScriptedServer::End converse(ScriptedServer::Call &call) {
    (void)call.read();
    int heard = 0;
    while (const auto request = call.read()) {
      frames.put(Google_Assistant_Embedded_V1alpha1_ConverseRequest::parse(*request).audioIn().size());
      if (++heard != 10) continue;
      Response event;
      event.setEventType(Response::EventType::endOfUtterance);
      call.write(event.serialize());
    }
    Samples tone(static_cast<std::size_t>(44100 * seconds));
    for (std::size_t i = 0; i < tone.size(); ++i) tone[i] = i / 50 % 2 == 0 ? 5000 : -5000;
    Google_Assistant_Embedded_V1alpha1_AudioOut out;
    out.setAudioData(tests::encodeMp3(tone));
    Response response;
    response.setAudioOut(out);
    call.write(response.serialize());
    return {};
  }

  tests::TemporaryFolder m_folder;
  Deployment m_deployment;
  ScriptedServer m_server{[this](ScriptedServer::Call &call) { return converse(call); }};
};

class VoiceAccidents : public ::testing::Test {
 protected:
  /// The whole of a turn that nothing happens in.
  void expectATurn() {
    const auto before = m_screen.answers.values().size();
    begin();
    finish();
    EXPECT_EQ(m_screen.answers.values().size(), before + 1);
    const auto all = m_service.frames.values();
    EXPECT_THAT(all, ::testing::Each(3200U));
  }
  /// Listens until the service has heard three frames.
  void begin() {
    const auto heard = m_service.frames.values().size();
    ++m_turns;
    m_screen.startListening();
    ASSERT_TRUE(runUntil([&] { return m_service.frames.values().size() >= heard + 3; }));
  }
  void finish() {
    ASSERT_TRUE(m_screen.sees("waits", m_turns));
    ASSERT_TRUE(m_screen.sees("silent", m_turns));
  }
  bool comesToBe(AudioEngine::State state) {
    return runUntil([this, state] { return m_screen.capture.engine().state() == state; });
  }

  SoundServer m_server;
  const CapturedLog m_log;
  ToneService m_service;
  Screen m_screen{m_service.deployment(), "token"};
  std::ptrdiff_t m_turns = 0;
};

TEST_F(VoiceAccidents, TheServerDiesWhileListeningAndWhileSpeaking) {
  expectATurn();
  begin();
  m_server.kill();
  ASSERT_TRUE(comesToBe(AudioEngine::State::waiting));
  m_server.start();
  finish();  // the turn goes on

  m_service.seconds = 30;
  begin();
  ASSERT_TRUE(m_screen.sees("speaks", m_turns));
  {
    const auto recording = m_server.record();
    EXPECT_FALSE(recording->waitForSound(4410).empty());
  }
  m_server.kill();
  finish();
  m_service.seconds = 0.3;
  m_server.start();
  expectATurn();
  EXPECT_EQ(m_log.count("Audio error: no sound server"), 2);
}

TEST_F(VoiceAccidents, TheMicrophoneIsPulledOutAndPutBack) {
  for (int i = 0; i < 2; ++i) {
    begin();
    m_server.unplugMicrophone("mic");
    ASSERT_TRUE(comesToBe(AudioEngine::State::waiting));
    EXPECT_TRUE(runUntil([] { return !Capture::hasInputDevice(); }));
    m_server.plugMicrophone("mic");
    finish();
  }
  EXPECT_TRUE(Capture::hasInputDevice());
  expectATurn();
}

TEST_F(VoiceAccidents, TheServerFreezesWhileListeningAndWhileSpeaking) {
  begin();
  m_server.freeze();
  ASSERT_TRUE(comesToBe(AudioEngine::State::waiting));
  m_screen.stopListening();  // the user has had enough
  finish();                  // the answer cannot be heard, which is noticed
  m_server.thaw();

  m_service.seconds = 30;
  begin();
  ASSERT_TRUE(m_screen.sees("speaks", m_turns));
  m_server.freeze();
  finish();
  m_screen.playback.stopSpeaking();
  m_server.thaw();
  m_service.seconds = 0.3;
  ++m_turns;  // of the silence after the stop
  const auto before = m_screen.answers.values().size();
  m_screen.startListening();
  ASSERT_TRUE(m_screen.sees("silent", m_turns + 1));
  EXPECT_EQ(m_screen.answers.values().size(), before + 1);
}

TEST(ResponsePlayback, WhatIsNoSoundOrAnEndedOneStartsNoTurn) {
  const SoundServer server;
  const CapturedLog log;
  struct Display final : ResponsePlaybackDelegate {
    void speakerIcon(bool isShown) override { seen.put(isShown ? "speaks" : "silent"); }
    void continueIfFollowUp() override { seen.put("continues"); }
    Inbox<std::string> seen;
  } display;
  const auto tone = [](double seconds) {
    return tests::encodeMp3(Samples(static_cast<std::size_t>(44100 * seconds), 3000));
  };
  {
    ResponsePlayback playback(display);
    playback.stopSpeaking();  // nothing
    playback.playResponse("no sound");
    EXPECT_THAT(log.lines(), ElementsAre(StartsWith("Audio out error error:the data is not MP3")));
    std::string damaged = tone(1);
    damaged.replace(damaged.size() / 2, std::string::npos, std::string(20'000, 'x'));
    playback.playResponse(damaged);
    EXPECT_THAT(display.seen.waitFor(4), ElementsAre("silent", "silent", "speaks", "silent"));
    playback.playResponse(tone(30));
    playback.playResponse(tone(0.1));  // in its place
    EXPECT_THAT(display.seen.waitFor(8), ElementsAre("silent", "silent", "speaks", "silent", "speaks",
                                                     "speaks", "silent", "continues"));
    playback.playStartPrompt();
    playback.playResponse(tone(30));
    EXPECT_TRUE(playback.isSpeaking());
  }
  EXPECT_EQ(display.seen.values().size(), 9U);
}

TEST(Capture, AlertsWhereThereIsNothingToHearWithAndAsksForTheVolumeOfTheMicrophone) {
  SoundServer server;
  EXPECT_TRUE(Capture::hasInputDevice());
  server.unplugMicrophone("mic");
  EXPECT_TRUE(tests::eventually([] { return !Capture::hasInputDevice(); }));
  std::vector<Alert> alerts;
  setAlertAnswer([&](const Alert &alert) {
    alerts.push_back(alert);
    return 0;
  });
  alertWithoutInputDevice();
  setAlertAnswer({});
  ASSERT_EQ(alerts.size(), 1U);
  EXPECT_EQ(alerts[0].messageText, QStringLiteral("Google Assistant"));
  EXPECT_EQ(alerts[0].style, AlertStyle::critical);
  EXPECT_THAT(alerts[0].buttons, IsEmpty());

  Capture capture([](const std::int16_t *, std::ptrdiff_t) {});
  EXPECT_EQ(capture.volumePercentage(), 100);
  capture.mic().setVolume(0.5);
  EXPECT_EQ(capture.volumePercentage(), 50);
  capture.mic().setVolume(1e9);
  EXPECT_DEATH((void)capture.volumePercentage(), "volume");
}

}  // namespace
}  // namespace velmora
