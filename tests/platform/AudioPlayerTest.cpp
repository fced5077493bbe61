// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/audio/AudioPlayer.h"

#include <gmock/gmock.h>

#include <cmath>
#include <fstream>
#include <numbers>
#include <random>

#include "platform/audio/AudioSource.h"
#include "platform/audio/Mp3Decoder.h"
#include "support/CapturedLog.h"
#include "support/Mp3.h"
#include "support/SoundServer.h"
#include "support/ToneFit.h"
#include "support/Waiting.h"

namespace velmora {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using tests::encodeMp3;
using tests::eventually;
using tests::Inbox;
using tests::SoundServer;
using tests::TemporaryFolder;

constexpr int kRate = 44100;

std::vector<std::int16_t> tone(double seconds, double hertz, double amplitude = 0.4, int rate = kRate) {
  std::vector<std::int16_t> samples(static_cast<std::size_t>(seconds * rate));
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const double angle = 2 * std::numbers::pi * hertz * static_cast<double>(i) / rate;
    samples[i] = static_cast<std::int16_t>(std::lrint(32767 * amplitude * std::sin(angle)));
  }
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
    const auto wanted = audible(whole);
    const auto recording = server.record();
    Delegate delegate;
    AudioPlayer player(mp3);
    player.play();
    player.setDelegate(&delegate);
    EXPECT_TRUE(player.isPlaying());
    EXPECT_THAT(delegate.words.waitFor(1), ElementsAre("finished"));
    EXPECT_FALSE(player.isPlaying());
    auto heard = recording->waitForSound(wanted.size() + kRate / 10);
    ASSERT_GT(heard.size(), wanted.size());
    EXPECT_THAT(std::vector(heard.begin() + static_cast<std::ptrdiff_t>(wanted.size()), heard.end()),
                ::testing::Each(0));
    heard.resize(wanted.size());
    EXPECT_TRUE(heard == wanted) << "first difference at "
                                 << std::mismatch(heard.begin(), heard.end(), wanted.begin()).first -
                                        heard.begin();
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
  // Once both are there, a tenth of a second holds whole periods of each.
  const auto heardNow = [&](double hertz) {
    const auto all = recording->samples();
    if (all.size() < kRate / 10) return 0.0;
    return tests::fitTone<std::int16_t>(std::span(all).last(kRate / 10), hertz, kRate).amplitude / 32768;
  };
  // LAME makes everything a little softer.
  EXPECT_TRUE(eventually([&] { return heardNow(500) > 0.18 && heardNow(3000) > 0.09; }));
  low.stop();
  EXPECT_TRUE(eventually([&] { return heardNow(500) < 0.001 && heardNow(3000) > 0.09; }));
  EXPECT_FALSE(low.isPlaying());
  EXPECT_TRUE(high.isPlaying());
  high.stop();
  EXPECT_TRUE(eventually([&] { return heardNow(3000) < 0.001; }));
  EXPECT_TRUE(delegate.words.values().empty()) << "a stop is no end";
}

TEST(AudioPlayer, ItsDelegateMayDoToItWhatItLikes) {
  const SoundServer server;
  const std::string mp3 = encodeMp3(tone(0.1, 700));
  Delegate delegate;
  int replays = 0;
  AudioPlayer again(mp3);
  again.setDelegate(&delegate);
  delegate.then = [&](AudioPlayer &player) {
    EXPECT_EQ(&player, &again);
    EXPECT_FALSE(player.isPlaying());
    player.stop();
    if (++replays < 3) player.play();
  };
  again.play();
  again.play();  // plays already
  EXPECT_EQ(delegate.words.waitFor(3).size(), 3U);
  EXPECT_FALSE(again.isPlaying());

  auto gone = std::make_unique<AudioPlayer>(mp3);
  gone->setDelegate(&delegate);
  delegate.then = [&](AudioPlayer &) { gone.reset(); };
  gone->play();
  EXPECT_EQ(delegate.words.waitFor(4).size(), 4U);
  EXPECT_EQ(gone, nullptr);
}

TEST(AudioPlayer, TheLastPlayerMayGoInItsOwnCallback) {
  const SoundServer server;  // whose connection ends with it
  Delegate delegate;
  auto player = std::make_unique<AudioPlayer>(encodeMp3(tone(0.1, 700)));
  delegate.then = [&](AudioPlayer &) { player.reset(); };
  player->setDelegate(&delegate);
  player->play();
  EXPECT_THAT(delegate.words.waitFor(1), ElementsAre("finished"));
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
  const std::string mp3 = encodeMp3(tone(1, 700));
  std::string middle = mp3;  // the frames begin to be something else
  std::mt19937 random(5);
  for (std::size_t i = mp3.size() / 2; i < mp3.size(); ++i) middle[i] = static_cast<char>(random() & 0x7f);
  std::string noise(100'000, '\0');
  for (char &byte : noise) byte = static_cast<char>(random());
  const auto fileOf = [](const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    return std::string{std::istreambuf_iterator<char>(in), {}};
  };
  std::string wave =
      "RIFF" + std::string("\x24\x80\x02\0WAVEfmt \x10\0\0\0\x01\0\x01\0\x44\xac\0\0\x88\x58\x01\0", 28) +
      std::string("\x02\0\x10\0data\0\x80\x02\0", 12);
  for (const std::int16_t sample : tone(1, 700)) wave.append(reinterpret_cast<const char *>(&sample), 2);
  const std::string tag = std::string("ID3\x03\0\0\0\0\x10\0", 10) + std::string(2048, '\0');

  const struct {
    const char *what;
    std::string bytes;
    bool isMp3;
  } cases[] = {{"MP3", mp3, true},
               {"cut off", mp3.substr(0, mp3.size() * 2 / 3), true},
               {"tagged", tag + mp3, true},
               {"after junk", std::string(300, 'x') + mp3, true},
               {"16 kHz", encodeMp3(tone(1, 700, 0.4, 16000), 16000), true},
               {"damaged later", middle, true},
               {"empty", "", false},
               {"text", std::string(50'000, 'x'), false},
               {"a program", fileOf("/proc/self/exe"), false},
               {"a library", fileOf("/lib/x86_64-linux-gnu/libc.so.6"), false},
               {"WAV", wave, false},
               {"noise", noise, false},
               {"a tag only", tag, false}};
  for (const auto &[what, bytes, isMp3] : cases) {
    if (isMp3) {
      EXPECT_NO_THROW(AudioPlayer{bytes}) << what;
    } else {
      EXPECT_THAT([&given = bytes] { AudioPlayer{given}; },
                  ::testing::ThrowsMessage<AudioError>(StartsWith("the data is not MP3")))
          << what;
    }
  }
  EXPECT_TRUE(AudioPlayer::fromFile(folder.write("a.mp3", mp3)));
  EXPECT_THAT([&] { (void)AudioPlayer::fromFile(folder.write("b.mp3", wave)); },
              ::testing::ThrowsMessage<AudioError>(HasSubstr("b.mp3: the data is not MP3")));
  EXPECT_THAT([&] { (void)AudioPlayer::fromFile(folder.path() / "none.mp3"); },
              ::testing::ThrowsMessage<AudioError>(HasSubstr("none.mp3: No such file")));
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
  {
    const auto recording = server.record();
    player.play();
    EXPECT_FALSE(recording->waitForSound(kRate).empty());
    server.kill();
    EXPECT_THAT(delegate.words.waitFor(1), ElementsAre("failed"));
    EXPECT_THAT(log.lines(), ElementsAre(StartsWith("Audio error: no sound server: ")));
  }
  brief.play();  // waits for the server
  server.start();
  EXPECT_THAT(delegate.words.waitFor(2), ElementsAre("failed", "finished"));
  {
    const auto recording = server.record();
    player.play();
    EXPECT_FALSE(recording->waitForSound(kRate).empty());
    server.freeze();
    EXPECT_THAT(delegate.words.waitFor(3), ElementsAre("failed", "finished", "failed"));
    EXPECT_FALSE(player.isPlaying());
    EXPECT_EQ(log.count("Audio output error: the sound server does not answer"), 1);
    player.play();
    player.stop();
    server.thaw();
  }
  brief.play();
  EXPECT_EQ(delegate.words.waitFor(4).back(), "finished");
  EXPECT_EQ(log.lines().size(), 2U) << ::testing::PrintToString(log.lines());
}

}  // namespace
}  // namespace velmora
