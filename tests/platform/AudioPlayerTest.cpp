// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/audio/AudioPlayer.h"

#include <gmock/gmock.h>

#include <cmath>
#include <numbers>
#include <random>

#include "foundation/File.h"
#include "platform/audio/AudioSource.h"
#include "platform/audio/Mp3Decoder.h"
#include "support/AudioFiles.h"
#include "support/CapturedLog.h"
#include "support/Mp3.h"
#include "support/SoundServer.h"
#include "support/ToneFit.h"
#include "support/Waiting.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using ::testing::ThrowsMessage;
using tests::encodeMp3;
using tests::eventually;
using tests::Inbox;
using tests::SoundServer;
using tests::TemporaryFolder;

constexpr int kRate = 44100;

std::vector<std::int16_t> tone(double seconds, double hertz, double amplitude = 0.4) {
  std::vector<std::int16_t> samples;
  for (const float value : tests::tone(hertz, seconds, kRate, {amplitude}))
    samples.push_back(static_cast<std::int16_t>(std::lrint(32767 * value)));
  return samples;
}

std::vector<std::int16_t> decoded(const std::string &mp3) {
  Mp3Decoder decoder(std::make_shared<const std::string>(mp3));
  std::vector<std::int16_t> all(static_cast<std::size_t>(100 * kRate));
  all.resize(decoder.decode(all));
  return all;
}

/// From the first to the last sample that is not zero: what a recording can show.
std::vector<std::int16_t> audible(const std::vector<std::int16_t> &samples) {
  const auto isSound = [](std::int16_t sample) { return sample != 0; };
  const auto first = std::find_if(samples.begin(), samples.end(), isSound);
  const auto last = std::find_if(samples.rbegin(), samples.rend(), isSound).base();
  return {first, std::max(first, last)};
}

/// Says what it is told as a word, and then does what the test wants.
struct Delegate final : AudioPlayerDelegate {
  void audioPlayerDidFinishPlaying(AudioPlayer &player, bool successfully) override {
    tell(player, successfully ? "finished" : "failed");
  }
  void audioPlayerDecodeErrorDidOccur(AudioPlayer &player, const std::string &error) override {
    EXPECT_FALSE(error.empty());
    tell(player, "decode error");
  }
  void tell(AudioPlayer &player, const char *word) {
    if (then) then(player);
    words.put(word);
  }

  std::function<void(AudioPlayer &)> then;
  Inbox<std::string> words;
};

TEST(AudioPlayer, WhatIsHeardIsWhatWasDecodedWholeAndWithoutAGap) {
  const SoundServer server;
  // Longer than the server's buffer and shorter than a piece of it.
  for (const double seconds : {5.0, 0.1}) {
    const auto samples = tone(seconds, 700);
    const std::string mp3 = encodeMp3(samples);
    const auto whole = decoded(mp3);
    // The encoder adds its delay and fills its last frame.
    EXPECT_NEAR(static_cast<double>(whole.size()), static_cast<double>(samples.size()), 2 * 1152 + 529);
    auto wanted = audible(whole);
    const auto recording = server.record();
    Delegate delegate;
    AudioPlayer player(mp3);
    player.play();
    player.setDelegate(&delegate);
    EXPECT_TRUE(player.isPlaying());
    EXPECT_THAT(delegate.words.waitFor(1), ElementsAre("finished"));
    // And nothing behind it.
    wanted.resize(wanted.size() + kRate / 10);
    const auto heard = recording->waitForSound(wanted.size());
    EXPECT_TRUE(heard == wanted) << heard.size() << " of " << wanted.size();
  }
}

TEST(AudioPlayer, PlayersSoundTogetherAndStopAlone) {
  const SoundServer server;
  const auto recording = server.record();
  Delegate delegate;
  AudioPlayer low(encodeMp3(tone(20, 500, 0.2)));
  AudioPlayer high(encodeMp3(tone(20, 3000, 0.1)));
  for (AudioPlayer *const player : {&low, &high}) {
    player->setDelegate(&delegate);
    player->play();
  }
  const auto heardNow = [&](double hertz) {
    const auto all = recording->samples();
    if (all.size() < kRate / 10) return 0.0;
    const auto last = std::span(all).last(kRate / 10);  // whole periods of each
    return tests::fitTone<std::int16_t>(last, hertz, kRate).amplitude / 32768;
  };
  // LAME makes everything a little softer.
  EXPECT_TRUE(eventually([&] { return heardNow(500) > 0.18 && heardNow(3000) > 0.09; }));
  low.stop();
  EXPECT_TRUE(eventually([&] { return heardNow(500) < 0.001 && heardNow(3000) > 0.09; }));
  EXPECT_TRUE(!low.isPlaying() && high.isPlaying());
  high.stop();
  EXPECT_TRUE(eventually([&] { return heardNow(3000) < 0.001; }));
  EXPECT_TRUE(delegate.words.values().empty()) << "a stop is no end";
}

TEST(AudioPlayer, ItsDelegateMayDoToItWhatItLikes) {
  const SoundServer server;
  Delegate delegate;
  int plays = 1;
  auto player = std::make_unique<AudioPlayer>(encodeMp3(tone(0.1, 700)));
  player->setDelegate(&delegate);
  delegate.then = [&](AudioPlayer &ended) {
    EXPECT_EQ(&ended, player.get());
    EXPECT_FALSE(ended.isPlaying());
    ended.stop();
    if (++plays <= 3) return ended.play();
    player.reset();  // the last one, whose connection ends with it
  };
  player->play();
  player->play();  // plays already
  EXPECT_THAT(delegate.words.waitFor(3), ElementsAre("finished", "finished", "finished"));
  EXPECT_EQ(player, nullptr);
}

TEST(AudioPlayer, AStopComesBeforeAReportThatIsOnItsWay) {
  const SoundServer server;
  const std::string mp3 = encodeMp3(tone(0.1, 700));
  Delegate first;
  Delegate second;
  AudioPlayer one(mp3);
  AudioPlayer other(mp3);
  one.setDelegate(&first);
  other.setDelegate(&second);
  bool isStopped = false;
  first.then = [&](AudioPlayer &) {
    if (std::exchange(isStopped, true)) return;
    // The other one has ended too by then, and its report waits for this one.
    EXPECT_TRUE(eventually([&] { return server.control({"list", "short", "sink-inputs"}).empty(); }));
    other.stop();
    one.play();
  };
  one.play();
  other.play();
  EXPECT_THAT(first.words.waitFor(2), ElementsAre("finished", "finished"));
  EXPECT_THAT(second.words.values(), ElementsAre());
}

TEST(AudioPlayer, MayBeDestroyedAtAnyTimeAndSaysNothingAfterwards) {
  const SoundServer server;
  const std::string mp3 = encodeMp3(tone(0.05, 700));
  const AudioPlayer keepsTheConnection(mp3);
  std::mt19937 random(3);
  std::vector<std::pair<Inbox<std::string>, std::size_t>> told;
  for (int i = 0; i < 40; ++i) {
    Delegate delegate;
    auto player = std::make_unique<AudioPlayer>(mp3);
    player->setDelegate(&delegate);
    player->play();
    // From before the stream exists to after its end.
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 150'000));
    if (i % 2 == 0) player->stop();
    if (i % 2 != 0) player.reset();
    told.emplace_back(delegate.words, delegate.words.values().size());
  }
  for (const auto &[words, count] : told) EXPECT_EQ(words.values().size(), count);
}

TEST(AudioPlayer, BelievesOnlyWhatIsMp3) {
  const TemporaryFolder folder;
  std::mt19937 random(5);
  std::string noise(100'000, '\0');
  for (char &byte : noise) byte = static_cast<char>(random());
  const std::string mp3 = encodeMp3(tone(1, 700));
  const std::string tag = std::string("ID3\x03\0\0\0\0\x10\0", 10) + std::string(2048, '\0');
  const fs::path wave = folder.path() / "a.wav";
  tests::writeAudio(wave, tests::tone(700, 1, kRate, {0.4}), kRate);
  for (const std::string &good : {mp3, mp3.substr(0, mp3.size() * 2 / 3), tag + mp3,
                                  std::string(300, 'x') + mp3, mp3.substr(0, mp3.size() / 2) + noise})
    EXPECT_NO_THROW(AudioPlayer{good});
  std::string layer2;
  for (int i = 0; i < 20; ++i) layer2 += std::string("\xff\xfd\x80\0", 4) + std::string(413, '\0');
  for (const std::string &bad :
       {std::string(), std::string(50'000, 'x'), readFile("/bin/sh"), readFile(wave), noise, tag, layer2})
    EXPECT_THAT([&] { AudioPlayer{bad}; }, ThrowsMessage<AudioError>(StartsWith("the data is not MP3")))
        << bad.size();
  EXPECT_TRUE(AudioPlayer::fromFile(folder.write("a.mp3", mp3)));
  EXPECT_THAT([&] { (void)AudioPlayer::fromFile(wave); },
              ThrowsMessage<AudioError>(HasSubstr("a.wav: the data is not MP3")));
  EXPECT_THAT([&] { (void)AudioPlayer::fromFile(folder.path() / "none.mp3"); },
              ThrowsMessage<AudioError>(HasSubstr("none.mp3: No such file")));
}

TEST(AudioPlayer, PlaysUpToThePlaceThatCannotBeDecoded) {
  const SoundServer server;
  std::string mp3 = encodeMp3(tone(1, 700));
  const auto half = audible(decoded(mp3.substr(0, mp3.size() / 2)));
  mp3.replace(mp3.size() / 2, std::string::npos, std::string(20'000, 'x'));
  const auto recording = server.record();
  Delegate delegate;
  AudioPlayer player(mp3);
  player.setDelegate(&delegate);
  player.play();
  EXPECT_THAT(delegate.words.waitFor(1), ElementsAre("decode error"));
  // The last frames before it may be lost with it.
  const auto heard = recording->waitForSound(half.size() - 2 * 1152);
  EXPECT_TRUE(std::equal(heard.begin(), heard.end(), half.begin()));
  EXPECT_EQ(heard.size(), half.size() - 2 * 1152);
}

TEST(AudioPlayer, SurvivesTheDeathAndTheFrostOfTheServer) {
  SoundServer server;
  const tests::CapturedLog log;
  Delegate delegate;
  AudioPlayer player(encodeMp3(tone(30, 700)));
  AudioPlayer brief(encodeMp3(tone(0.1, 700)));
  player.setDelegate(&delegate);
  brief.setDelegate(&delegate);
  const auto playUntilHeard = [&] {
    const auto recording = server.record();
    player.play();
    EXPECT_FALSE(recording->waitForSound(kRate).empty());
  };
  playUntilHeard();
  server.kill();
  EXPECT_THAT(delegate.words.waitFor(1), ElementsAre("failed"));
  EXPECT_THAT(log.lines(), ElementsAre(StartsWith("Audio error: no sound server: ")));
  brief.play();  // waits for the server
  server.start();
  EXPECT_EQ(delegate.words.waitFor(2).back(), "finished");
  playUntilHeard();
  server.freeze();
  EXPECT_EQ(delegate.words.waitFor(3).back(), "failed");
  EXPECT_FALSE(player.isPlaying());
  player.play();
  player.stop();
  server.thaw();
  brief.play();
  EXPECT_EQ(delegate.words.waitFor(4).back(), "finished");
  EXPECT_EQ(log.count("Audio output error: the sound server does not answer"), 1);
  EXPECT_EQ(log.lines().size(), 2U) << ::testing::PrintToString(log.lines());
}

}  // namespace
}  // namespace velmora
