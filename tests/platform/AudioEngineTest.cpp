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

/// The microphones that there are.
std::vector<std::string> names() {
  const auto devices = AudioEngine::inputDevices();
  if (!devices) return {"(no list)"};
  std::vector<std::string> all;
  for (const AudioDevice &device : *devices) all.push_back(device.name);
  return all;
}

bool lists(const std::vector<std::string> &wanted) {
  return eventually([&] { return names() == wanted; });
}

bool comesToBe(const AudioEngine &engine, State state) {
  return eventually([&] { return engine.state() == state; });
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
    EXPECT_TRUE(std::ranges::equal(inbox.values().back().samples, microphone.newest().samples));

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
  EXPECT_EQ(late, 0);

  // From within the tap, and with a tap removed there.
  const Inbox<int> own;
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
}

TEST(AudioEngine, HearsTheMicrophoneThatIsChosenElseTheDefaultWhateverHappens) {
  SoundServer server;
  const tests::CapturedLog log;
  AudioEngine engine;
  const auto isSelected = [&](const char *name) {
    return eventually([&] { return engine.inputDevice().value_or(AudioDevice{}).name == name; });
  };
  const Inbox<Heard> inbox;
  engine.installTap(kFrames, into(inbox));
  EXPECT_THAT(names(), ElementsAre("mic")) << "at the first look, without monitors";
  engine.start();
  EXPECT_TRUE(nextIs(inbox, true));
  server.plugHum("hum");
  EXPECT_TRUE(lists({"mic", "hum"}));
  EXPECT_TRUE(isSelected("mic"));
  server.setDefaultMicrophone("hum");
  EXPECT_TRUE(nextIs(inbox, false)) << "the default was switched";
  EXPECT_TRUE(isSelected("hum"));
  server.setDefaultMicrophone("spk.monitor");
  EXPECT_TRUE(isSelected("mic")) << "a monitor is no microphone";
  server.setDefaultMicrophone("mic");
  EXPECT_TRUE(nextIs(inbox, true));
  engine.setInputDevice({"hum", ""});
  EXPECT_TRUE(nextIs(inbox, false)) << "chosen on the way";
  // Another default is no reason to leave it.
  server.setDefaultMicrophone("hum");
  server.setDefaultMicrophone("mic");
  server.plugMicrophone("other");
  EXPECT_TRUE(lists({"mic", "hum", "other"}));
  EXPECT_TRUE(nextIs(inbox, false));
  server.unplugMicrophone("hum");
  EXPECT_TRUE(nextIs(inbox, true)) << "the default stands in";
  EXPECT_TRUE(isSelected("mic"));
  EXPECT_THROW(engine.setInputDevice({"hum", ""}), AudioError);
  server.plugHum("hum");
  EXPECT_TRUE(nextIs(inbox, false)) << "the chosen one is back";
  engine.setInputDevice({"mic", ""});
  EXPECT_TRUE(nextIs(inbox, true));
  server.setDefaultMicrophone("hum");
  EXPECT_TRUE(nextIs(inbox, false)) << "who selects the default follows it";

  for (const char *const name : {"mic", "other"}) server.unplugMicrophone(name);
  for (int turn = 1; turn <= 2; ++turn) {
    server.unplugMicrophone("hum");
    EXPECT_TRUE(eventually([&] { return log.count("Audio input error: there is no microphone") == turn; }));
    EXPECT_EQ(engine.state(), State::waiting);
    EXPECT_TRUE(lists({}));
    EXPECT_EQ(engine.inputDevice(), std::nullopt);
    server.plugHum("hum");
    EXPECT_TRUE(nextIs(inbox, false));
    EXPECT_EQ(engine.state(), State::running);
  }

  for (int turn = 1; turn <= 3; ++turn) {
    server.kill();
    EXPECT_TRUE(comesToBe(engine, State::waiting));
    EXPECT_TRUE(lists({"(no list)"}));
    EXPECT_THROW(engine.setInputDevice({"hum", ""}), AudioError);
    if (turn == 2) {  // the next start works as well as going on
      engine.stop();
      engine.start();
    }
    server.start();
    EXPECT_THAT(names(), ElementsAre("mic")) << "at the next look";
    EXPECT_TRUE(comesToBe(engine, State::running));
    EXPECT_EQ(log.count("Audio error: no sound server: "), turn);
  }
  EXPECT_EQ(log.lines().size(), 5U) << ::testing::PrintToString(log.lines());
}

TEST(AudioEngine, AFrozenServerHoldsNobodyUp) {
  SoundServer server;
  const tests::CapturedLog log;
  const auto hasSaidIt = [&](std::ptrdiff_t times) {
    return eventually(
        [&] { return log.count("Audio input error: the sound server does not answer") == times; });
  };
  {
    AudioEngine engine;
    engine.start();
    EXPECT_TRUE(comesToBe(engine, State::running));
    server.freeze();
    EXPECT_TRUE(hasSaidIt(1));
    EXPECT_EQ(engine.state(), State::waiting);
    expectReturns([&] {
      engine.stop();
      engine.start();
      EXPECT_THAT(names(), ElementsAre("mic"));
    });
    EXPECT_TRUE(hasSaidIt(2));  // it has asked for a stream, in vain
    expectReturns([&] { engine.stop(); });
    server.thaw();
    EXPECT_TRUE(eventually([&] { return !server.isHeardBySomebody(); })) << "that stream was left open";
    engine.start();
    EXPECT_TRUE(comesToBe(engine, State::running));
    server.freeze();
    expectReturns([&] { engine.stop(); });
  }
  // Nothing is known of a server that was frozen from the beginning, until it wakes.
  AudioEngine engine;
  expectReturns([&] {
    EXPECT_EQ(AudioEngine::inputDevices(), std::nullopt);
    engine.start();
  });
  EXPECT_TRUE(hasSaidIt(3));
  server.thaw();
  EXPECT_TRUE(comesToBe(engine, State::running));
  EXPECT_THAT(names(), ElementsAre("mic"));
  EXPECT_EQ(log.lines().size(), 3U) << ::testing::PrintToString(log.lines());
}

}  // namespace
}  // namespace velmora
