// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/audio/AudioPlayer.h"

#include <gmock/gmock.h>

#include <cmath>
#include <random>

#include "foundation/File.h"
#include "platform/audio/AudioSource.h"
#include "platform/audio/Mp3Decoder.h"
#include "support/AudioFiles.h"
#include "support/Mp3.h"
#include "support/SoundServer.h"
#include "support/Waiting.h"

namespace velmora {
namespace {

using ::testing::ElementsAre;
using ::testing::StartsWith;
using ::testing::ThrowsMessage;
using tests::eventually;
using tests::Inbox;
using tests::SoundServer;

constexpr int kRate = 44100;

/// A tone of so many seconds.
std::string mp3Of(double seconds) {
  std::vector<std::int16_t> samples;
  for (const float value : tests::tone(700, seconds, kRate, {0.4}))
    samples.push_back(static_cast<std::int16_t>(std::lrint(32767 * value)));
  return tests::encodeMp3(samples);
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
    const std::string mp3 = mp3Of(seconds);
    std::vector<std::int16_t> wanted(static_cast<std::size_t>(10 * kRate));
    wanted.resize(Mp3Decoder(std::make_shared<const std::string>(mp3)).decode(wanted));
    // The encoder adds its delay and fills its last frame.
    EXPECT_NEAR(static_cast<double>(wanted.size()), seconds * kRate, 2 * 1152 + 529);
    // From the first to the last sample that is not zero: what a recording can show.
    const auto isSound = [](std::int16_t sample) { return sample != 0; };
    wanted.erase(std::find_if(wanted.rbegin(), wanted.rend(), isSound).base(), wanted.end());
    wanted.erase(wanted.begin(), std::find_if(wanted.begin(), wanted.end(), isSound));
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

TEST(AudioPlayer, ItsDelegateMayDoToItWhatItLikes) {
  const SoundServer server;
  Delegate delegate;
  int plays = 1;
  auto player = std::make_unique<AudioPlayer>(mp3Of(0.1));
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
  const std::string mp3 = mp3Of(0.1);
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
  const std::string mp3 = mp3Of(0.05);
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
  std::mt19937 random(5);
  std::string noise(100'000, '\0');
  for (char &byte : noise) byte = static_cast<char>(random());
  const std::string mp3 = mp3Of(1);
  const std::string tag = std::string("ID3\x03\0\0\0\0\x10\0", 10) + std::string(2048, '\0');
  for (const std::string &good : {mp3, mp3.substr(0, mp3.size() * 2 / 3), tag + mp3,
                                  std::string(300, 'x') + mp3, mp3.substr(0, mp3.size() / 2) + noise})
    EXPECT_NO_THROW(AudioPlayer{good});
  std::string layer2;
  for (int i = 0; i < 20; ++i) layer2 += std::string("\xff\xfd\x80\0", 4) + std::string(413, '\0');
  for (const std::string &bad :
       {std::string(), std::string(50'000, 'x'), readFile("/bin/sh"), noise, tag, layer2})
    EXPECT_THAT([&] { AudioPlayer{bad}; }, ThrowsMessage<AudioError>(StartsWith("the data is not MP3")))
        << bad.size();
}

}  // namespace
}  // namespace velmora
