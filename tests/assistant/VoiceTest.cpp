// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/speech/Voice.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include "assistant/speech/Mp3Encoder.h"
#include "support/AudioFiles.h"
#include "support/Speech.h"
#include "support/TemporaryFolder.h"

namespace velmora {
namespace {

using tests::Samples;

tests::Sound decoded(const std::string &mp3) {
  const tests::TemporaryFolder folder;
  return tests::readAudio(folder.write("answer.mp3", mp3));
}

std::string encode(const Samples &samples, std::size_t piece) {
  Mp3Encoder encoder;
  std::string mp3;
  for (std::size_t at = 0; at < samples.size(); at += piece) {
    mp3 += encoder.encode(std::span(samples).subspan(at, std::min(piece, samples.size() - at)));
  }
  return mp3 + encoder.finish();
}

TEST(Voice, AnAnswerSurvivesMp3AtItsVolume) {
  const Samples full = speak("It is three oh five in the afternoon.");
  ASSERT_GT(full.size(), static_cast<std::size_t>(kSpeechRate));
  // Pauses do not count for the level, and a short text is as loud as a long one.
  EXPECT_NEAR(tests::levelOf(full), kSpeechLevel, 3.0);
  EXPECT_NEAR(tests::levelOf(speak("No.")), kSpeechLevel, 4.0);
  EXPECT_EQ(full.front(), 0);
  EXPECT_EQ(full.back(), 0);
  const struct {
    int percent;
    double change;  ///< dB
  } cases[] = {{100, 0.0}, {50, -6.02}, {10, -20.0}, {250, 0.0}};
  for (const auto &c : cases) {
    Samples samples = full;
    applyVolume(samples, c.percent);
    const tests::Sound heard = decoded(encode(samples, 4000));
    EXPECT_EQ(heard.format.samplerate, kSpeechRate);
    EXPECT_EQ(heard.format.channels, 1);
    // An encoder's delay at the beginning, and the filling of the last frame.
    EXPECT_GE(heard.samples.size(), full.size());
    EXPECT_LE(heard.samples.size(), full.size() + 3 * 1152);
    EXPECT_NEAR(tests::levelOf(heard.samples), tests::levelOf(full) + c.change, 0.7) << c.percent;
  }
  for (const int percent : {0, -1, -2147483647 - 1, 2147483647}) {
    const Samples extremes{32767, -32768, -1};
    Samples samples = extremes;
    applyVolume(samples, percent);
    EXPECT_EQ(samples, percent > 0 ? extremes : Samples(3)) << percent;
  }
}

TEST(Voice, FirstBytesLeaveEarlyAndAreBareFrames) {
  const Samples speech = speak("Hello.");
  Mp3Encoder encoder;
  const std::string first = encoder.encode(std::span(speech).first(4000));
  ASSERT_GE(first.size(), 4U);
  // Layer III of MPEG 2 without a checksum, 48 kb/s, 16 kHz: a frame and no tag.
  EXPECT_EQ(first.substr(0, 3), "\xff\xf3\x68");
  EXPECT_EQ(encode(speech, 1), encode(speech, 100'000));
  EXPECT_EQ(first, encode(speech, 100'000).substr(0, first.size()));
}

TEST(Voice, SpeakersTakeTurnsWhateverTheyAreToSay) {
  std::vector<std::jthread> speakers;
  for (const char *text : {"One hundred and five.", "", "  ", "...", "\xff\xfe", "日本 é", "<b>&amp;"})
    speakers.emplace_back([text] { EXPECT_NO_THROW((void)speak(text)) << text; });
}

}  // namespace
}  // namespace velmora
