// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/audio/AudioEngine.h"

#include <gmock/gmock.h>

#include <atomic>
#include <future>
#include <random>

#include "platform/audio/AudioSource.h"
#include "platform/audio/Microphone.h"
#include "support/CapturedLog.h"
#include "support/SoundServer.h"
#include "support/Waiting.h"

namespace velmora {
namespace {

using namespace std::chrono_literals;
using State = AudioEngine::State;
using ::testing::ElementsAre;
using tests::eventually;
using tests::Inbox;
using tests::SoundServer;

constexpr std::uint32_t kFrames = 4410;

struct Heard {
  std::vector<float> samples;
  AudioTime time;
};

AudioEngine::Tap into(const Inbox<Heard> &inbox) {
  return [inbox](const PCMBuffer &buffer, const AudioTime &time) {
    const float *const samples = buffer.floatChannelData();
    inbox.put({{samples, samples + buffer.frameLength()}, time});
  };
}

bool isSilent(const Heard &heard) {
  return std::all_of(heard.samples.begin(), heard.samples.end(), [](float sample) { return sample == 0; });
}

/// Waits for one more buffer that is silent, or is not. The default microphone of the server is.
bool nextIs(const Inbox<Heard> &inbox, bool silent) {
  const std::size_t already = inbox.values().size();
  return eventually([&] {
    const auto all = inbox.values();
    return all.size() > already && isSilent(all.back()) == silent;
  });
}

std::vector<std::string> namesOf(const std::optional<std::vector<AudioDevice>> &devices) {
  std::vector<std::string> names;
  if (!devices) return {"(no list)"};
  for (const AudioDevice &device : *devices) names.push_back(device.name);
  return names;
}

bool lists(const std::vector<std::string> &names) {
  return eventually([&] { return namesOf(AudioEngine::inputDevices()) == names; });
}

/// Runs `work`, which must not wait for a server that is frozen: that would last until the test's own end.
template <typename Work>
void expectReturns(const Work &work) {
  auto done = std::async(std::launch::async, work);
  ASSERT_EQ(done.wait_for(tests::kPatience), std::future_status::ready);
  done.get();
}

TEST(AudioEngine, WhatIsSaidComesWholeInExactBuffersInOrder) {
  SoundServer server;
  for (const std::uint32_t frames : {kFrames, 1000U}) {
    const Inbox<Heard> inbox;
    AudioEngine engine;
    Microphone microphone(engine);
    engine.installTap(frames, into(inbox));
    EXPECT_TRUE(microphone.newest().samples.empty());
    engine.start();
    ASSERT_FALSE(inbox.waitFor(1).empty());

    std::mt19937 random(7);
    std::vector<std::int16_t> said(3 * 44100);
    for (std::int16_t &sample : said) sample = static_cast<std::int16_t>(random() | 1);
    server.say(said);
    const auto soFar = inbox.values().size();
    const auto all = inbox.waitFor(soFar + 2 + 2 * kFrames / frames);
    engine.stop();
    const auto newest = microphone.newest();
    const Heard last = inbox.values().back();
    EXPECT_TRUE(
        std::equal(last.samples.begin(), last.samples.end(), newest.samples.begin(), newest.samples.end()));

    std::vector<float> stream;
    for (std::size_t i = 0; i < all.size(); ++i) {
      ASSERT_EQ(all[i].samples.size(), frames);
      ASSERT_EQ(all[i].time.sampleTime, static_cast<std::int64_t>(i) * frames);
      ASSERT_TRUE(i == 0 || all[i].time.hostTime >= all[i - 1].time.hostTime);
      stream.insert(stream.end(), all[i].samples.begin(), all[i].samples.end());
    }
    const auto first = std::find_if(stream.begin(), stream.end(), [](float sample) { return sample != 0; });
    ASSERT_GE(stream.end() - first, static_cast<std::ptrdiff_t>(said.size()));
    for (std::size_t i = 0; i < said.size(); ++i)
      ASSERT_EQ(first[static_cast<std::ptrdiff_t>(i)], static_cast<float>(said[i]) / 32768.0F) << i;
  }
}

TEST(AudioEngine, NoTapComesAfterStopHoweverOften) {
  const SoundServer server;
  AudioEngine engine;
  std::atomic<bool> stopped = true;
  std::atomic<int> late = 0;
  const Inbox<int> taps;
  engine.installTap(kFrames, [&](const PCMBuffer &, const AudioTime &) {
    if (stopped) ++late;
    taps.put(0);
    if (stopped) ++late;
  });
  for (int turn = 0; turn < 50; ++turn) {
    stopped = false;
    engine.start();
    EXPECT_TRUE(engine.isRunning());
    // In some turns a buffer is under way at the stop, in most none has come yet.
    if (turn % 10 == 0) (void)taps.waitFor(taps.values().size() + 1);
    engine.stop();
    stopped = true;
    EXPECT_FALSE(engine.isRunning());
  }
  EXPECT_GE(taps.values().size(), 5U);

  // From within the tap, and with a tap removed there.
  const Inbox<int> own;
  stopped = false;
  engine.installTap(kFrames, [&](const PCMBuffer &, const AudioTime &) {
    own.put(0);
    engine.stop();
  });
  for (std::size_t turn = 1; turn <= 5; ++turn) {
    engine.start();
    EXPECT_EQ(own.waitFor(turn).size(), turn);
    engine.stop();  // waits for the rest of the tap
    EXPECT_EQ(own.values().size(), turn);
  }
  engine.installTap(kFrames, [&](const PCMBuffer &, const AudioTime &) {
    engine.removeTap();
    own.put(0);
  });
  engine.start();
  Microphone microphone(engine);
  EXPECT_EQ(own.waitFor(6).size(), 6U);
  EXPECT_TRUE(eventually([&] { return microphone.newest().number >= 3; }));  // more buffers have come
  EXPECT_EQ(own.values().size(), 6U);
  EXPECT_EQ(late, 0);
}

TEST(AudioEngine, TheListOfMicrophonesFollowsTheWorld) {
  SoundServer server;
  const tests::CapturedLog log;
  AudioEngine engine;
  EXPECT_THAT(namesOf(AudioEngine::inputDevices()), ElementsAre("mic"))
      << "at the first look, without monitors";
  server.plugMicrophone("other");
  EXPECT_TRUE(lists({"mic", "other"}));
  EXPECT_EQ(engine.inputDevice()->name, "mic");
  server.setDefaultMicrophone("other");
  EXPECT_TRUE(eventually([&] { return engine.inputDevice()->name == "other"; }));
  // A monitor as the default is not taken for a microphone.
  server.setDefaultMicrophone("spk.monitor");
  EXPECT_TRUE(eventually([&] { return engine.inputDevice()->name == "mic"; }));
  engine.setInputDevice({"other", ""});
  EXPECT_EQ(engine.inputDevice()->name, "other");
  server.unplugMicrophone("other");
  EXPECT_TRUE(lists({"mic"}));
  EXPECT_EQ(engine.inputDevice()->name, "mic");
  EXPECT_THROW(engine.setInputDevice({"other", ""}), AudioError);
  server.unplugMicrophone("mic");
  EXPECT_TRUE(lists({}));
  EXPECT_EQ(engine.inputDevice(), std::nullopt);

  server.kill();
  EXPECT_TRUE(lists({"(no list)"}));
  EXPECT_EQ(engine.inputDevice(), std::nullopt);
  EXPECT_THROW(engine.setInputDevice({"mic", ""}), AudioError);
  server.start();
  EXPECT_TRUE(lists({"mic"}));
  EXPECT_THAT(log.lines(), ElementsAre(::testing::StartsWith("Audio error: no sound server: ")));
}

TEST(AudioEngine, HearsTheMicrophoneThatIsChosenElseTheDefault) {
  SoundServer server;
  server.plugHum("hum");
  AudioEngine engine;
  const Inbox<Heard> inbox;
  engine.installTap(kFrames, into(inbox));
  engine.start();
  EXPECT_TRUE(nextIs(inbox, true));
  server.setDefaultMicrophone("hum");
  EXPECT_TRUE(nextIs(inbox, false)) << "the default was switched";
  engine.setInputDevice({"mic", ""});
  EXPECT_TRUE(nextIs(inbox, true)) << "chosen on the way";
  server.setDefaultMicrophone("mic");
  EXPECT_TRUE(eventually([&] { return AudioEngine().inputDevice()->name == "mic"; }));
  engine.setInputDevice({"hum", ""});
  EXPECT_TRUE(nextIs(inbox, false));
  // Another default is no reason to leave it.
  server.setDefaultMicrophone("hum");
  server.setDefaultMicrophone("mic");
  server.plugMicrophone("other");
  EXPECT_TRUE(lists({"mic", "hum", "other"}));
  EXPECT_TRUE(nextIs(inbox, false));
  server.unplugMicrophone("hum");
  EXPECT_TRUE(nextIs(inbox, true)) << "the default stands in";
  server.plugHum("hum");
  EXPECT_TRUE(nextIs(inbox, false)) << "the chosen one is back";
  engine.setInputDevice({"mic", ""});
  EXPECT_TRUE(nextIs(inbox, true));
  server.setDefaultMicrophone("hum");
  EXPECT_TRUE(nextIs(inbox, false)) << "who selects the default follows it";
  EXPECT_EQ(engine.state(), State::running);
}

TEST(AudioEngine, AMicrophoneMayComeAndGo) {
  SoundServer server;
  server.unplugMicrophone("mic");
  const tests::CapturedLog log;
  AudioEngine engine;
  const Inbox<Heard> inbox;
  engine.installTap(kFrames, into(inbox));
  engine.start();
  for (int turn = 1; turn <= 3; ++turn) {
    EXPECT_TRUE(eventually([&] { return log.count("Audio input error: there is no microphone") == turn; }));
    EXPECT_EQ(engine.state(), State::waiting);
    server.plugHum("hum");
    EXPECT_TRUE(nextIs(inbox, false));
    EXPECT_EQ(engine.state(), State::running);
    if (turn < 3) server.unplugMicrophone("hum");
  }
  EXPECT_EQ(log.lines().size(), 3U);
}

TEST(AudioEngine, SurvivesTheDeathOfTheServer) {
  SoundServer server;
  const tests::CapturedLog log;
  AudioEngine engine;
  const Inbox<Heard> inbox;
  engine.installTap(kFrames, into(inbox));
  engine.start();
  for (std::ptrdiff_t turn = 1; turn <= 3; ++turn) {
    EXPECT_TRUE(nextIs(inbox, true));
    server.kill();
    EXPECT_TRUE(eventually([&] { return engine.state() == State::waiting; }));
    EXPECT_TRUE(lists({"(no list)"}));
    if (turn == 2) {  // the next start works as well as going on
      engine.stop();
      engine.start();
    }
    server.start();
    EXPECT_THAT(namesOf(AudioEngine::inputDevices()), ElementsAre("mic")) << "at the next look";
    EXPECT_TRUE(eventually([&] { return engine.state() == State::running; }));
    EXPECT_EQ(log.count("Audio error: no sound server: "), turn);
  }
  engine.stop();
  EXPECT_EQ(log.lines().size(), 3U) << ::testing::PrintToString(log.lines());
}

TEST(AudioEngine, AFrozenServerHoldsNobodyUp) {
  SoundServer server;
  const tests::CapturedLog log;
  const auto frozenLines = [&] { return log.count("Audio input error: the sound server does not answer"); };
  {
    AudioEngine engine;
    engine.start();
    EXPECT_TRUE(eventually([&] { return engine.state() == State::running; }));
    server.freeze();
    EXPECT_TRUE(eventually([&] { return engine.state() == State::waiting; }));
    EXPECT_EQ(frozenLines(), 1);
    expectReturns([&] {
      engine.stop();
      engine.start();
      EXPECT_THAT(namesOf(AudioEngine::inputDevices()), ElementsAre("mic"));
    });
    server.thaw();
    EXPECT_TRUE(eventually([&] { return engine.state() == State::running; }));
    server.freeze();
    expectReturns([&] { engine.stop(); });
  }
  // Nothing is known of a server that was frozen from the beginning, until it wakes.
  AudioEngine engine;
  expectReturns([&] {
    EXPECT_EQ(AudioEngine::inputDevices(), std::nullopt);
    engine.start();
  });
  EXPECT_TRUE(eventually([&] { return frozenLines() == 2; }));
  server.thaw();
  EXPECT_TRUE(eventually([&] { return engine.state() == State::running; }));
  EXPECT_THAT(namesOf(AudioEngine::inputDevices()), ElementsAre("mic"));
  EXPECT_EQ(log.lines().size(), 2U) << ::testing::PrintToString(log.lines());
}

TEST(AudioEngine, AStreamThatWasAskedForInVainIsNotLeftOpen) {
  SoundServer server;
  AudioEngine engine;
  engine.start();
  ASSERT_TRUE(eventually([&] { return engine.state() == State::running; }));
  engine.stop();
  ASSERT_TRUE(eventually([&] { return !server.isHeardBySomebody(); }));
  server.freeze();
  engine.start();
  std::this_thread::sleep_for(100ms);  // that it asks before it stops, which nobody tells
  engine.stop();
  server.thaw();
  // Whatever was asked for has been answered when something later has.
  EXPECT_TRUE(lists({"mic"}));
  EXPECT_TRUE(eventually([&] { return !server.isHeardBySomebody(); }));
}

}  // namespace
}  // namespace velmora
