// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/audio/AudioEngine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <future>
#include <span>

#include "platform/audio/AudioSource.h"
#include "support/CapturedLog.h"
#include "support/SoundServer.h"
#include "support/Waiting.h"

namespace velmora {
namespace {

using State = AudioEngine::State;
using tests::eventually;
using tests::Inbox;
using tests::SoundServer;

constexpr std::uint32_t kFrames = 4410;

/// Waits for one more buffer that is silent, or is not. The default microphone of the server is.
bool nextIs(const Inbox<bool> &inbox, bool silent) {
  const std::size_t already = inbox.values().size();
  return eventually([&] {
    const auto all = inbox.values();
    return all.size() > already && all.back() == silent;
  });
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
}

TEST(AudioEngine, HearsTheMicrophoneThatIsChosenElseTheDefaultWhateverHappens) {
  SoundServer server;
  const tests::CapturedLog log;
  AudioEngine engine;
  const Inbox<bool> inbox;
  engine.installTap(kFrames, [inbox](const PCMBuffer &buffer, const AudioTime &) {
    const std::span samples(buffer.floatChannelData(), buffer.frameLength());
    inbox.put(std::ranges::all_of(samples, [](float sample) { return sample == 0; }));
  });
  engine.start();
  EXPECT_TRUE(nextIs(inbox, true));
  server.plugHum("hum");
  server.setDefaultMicrophone("hum");
  EXPECT_TRUE(nextIs(inbox, false)) << "the default was switched";
  EXPECT_TRUE(eventually([&] { return engine.inputDevice().value_or(AudioDevice{}).name == "hum"; }));
  server.setDefaultMicrophone("mic");
  EXPECT_TRUE(nextIs(inbox, true));
  engine.setInputDevice({"hum", ""});
  EXPECT_TRUE(nextIs(inbox, false)) << "chosen on the way";
  server.unplugMicrophone("hum");
  EXPECT_TRUE(nextIs(inbox, true)) << "the default stands in";
  server.plugHum("hum");
  EXPECT_TRUE(nextIs(inbox, false)) << "the chosen one is back";

  // What the server then has for a default is the sound of the loudspeaker.
  for (const char *const name : {"mic", "hum"}) server.unplugMicrophone(name);
  EXPECT_TRUE(eventually([&] { return log.count("Audio input error: there is no microphone") == 1; }));
  EXPECT_EQ(engine.state(), State::waiting);
  EXPECT_EQ(engine.inputDevice(), std::nullopt);
  EXPECT_THROW(engine.setInputDevice({"hum", ""}), AudioError);
  server.plugHum("hum");
  EXPECT_TRUE(nextIs(inbox, false));

  server.kill();
  EXPECT_TRUE(comesToBe(engine, State::waiting));
  engine.stop();  // the next start works as well as going on
  engine.start();
  server.start();
  EXPECT_TRUE(comesToBe(engine, State::running));
  EXPECT_EQ(log.count("Audio error: no sound server: "), 1);
}

TEST(AudioEngine, AFrozenServerHoldsNobodyUp) {
  SoundServer server;
  const tests::CapturedLog log;
  const auto hasSaidIt = [&](std::ptrdiff_t times) {
    return eventually(
        [&] { return log.count("Audio input error: the sound server does not answer") == times; });
  };
  AudioEngine engine;
  engine.start();
  EXPECT_TRUE(comesToBe(engine, State::running));
  server.freeze();
  EXPECT_TRUE(hasSaidIt(1));
  EXPECT_EQ(engine.state(), State::waiting);
  expectReturns([&] {
    engine.stop();
    engine.start();
  });
  EXPECT_TRUE(hasSaidIt(2));  // it has asked for a stream, in vain
  expectReturns([&] { engine.stop(); });
  server.thaw();
  EXPECT_TRUE(eventually([&] { return !server.isHeardBySomebody(); })) << "that stream was left open";
  engine.start();
  EXPECT_TRUE(comesToBe(engine, State::running));
  server.freeze();  // and so it is left
}

}  // namespace
}  // namespace velmora
