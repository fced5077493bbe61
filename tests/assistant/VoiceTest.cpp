// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/speech/Voice.h"

#include <gtest/gtest.h>

#include <span>
#include <thread>

#include "assistant/speech/Mp3Encoder.h"
#include "support/AudioFiles.h"
#include "support/Speech.h"
#include "support/TemporaryFolder.h"

namespace velmora {
namespace {

using tests::Samples;

/// What comes out of `samples` as MP3, made of two pieces.
tests::Sound throughMp3(const Samples &samples) {
  Mp3Encoder encoder;
  const std::span all(samples);
  std::string mp3 = encoder.encode(all.first(4000));
  EXPECT_FALSE(mp3.empty()) << "the first sound does not wait for the last";
  mp3 += encoder.encode(all.subspan(4000)) + encoder.finish();
  const tests::TemporaryFolder folder;
  return tests::readAudio(folder.write("answer.mp3", mp3));
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
  } cases[] = {{100, 0.0}, {50, -6.02}, {250, 0.0}};
  for (const auto &c : cases) {
    Samples samples = full;
    applyVolume(samples, c.percent);
    const tests::Sound heard = throughMp3(samples);
    EXPECT_EQ(heard.format.samplerate, kSpeechRate);
    EXPECT_EQ(heard.format.channels, 1);
    // An encoder's delay at the beginning, and the filling of the last frame.
    EXPECT_GE(heard.samples.size(), full.size());
    EXPECT_LE(heard.samples.size(), full.size() + 3 * 1152);
    EXPECT_NEAR(tests::levelOf(heard.samples), tests::levelOf(full) + c.change, 0.7) << c.percent;
  }
}

TEST(Voice, SpeakersTakeTurnsWhateverTheyAreToSay) {
  std::vector<std::jthread> speakers;
  for (const char *text : {"One hundred and five.", "", "  ", "...", "\xff\xfe", "日本 é", "<b>&amp;"})
    speakers.emplace_back([text] { EXPECT_NO_THROW((void)speak(text)) << text; });
}

}  // namespace
}  // namespace velmora
