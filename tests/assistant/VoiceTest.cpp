// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/speech/Voice.h"

#include <gtest/gtest.h>
#include <mpg123.h>

#include <algorithm>
#include <thread>

#include "assistant/speech/Mp3Encoder.h"
#include "support/Speech.h"

namespace velmora {
namespace {

using tests::Samples;

struct Decoded {
  long rate = 0;
  int channels = 0;
  Samples samples;
};

Decoded decode(const std::string &mp3) {
  mpg123_init();
  mpg123_handle *const decoder = mpg123_new(nullptr, nullptr);
  mpg123_param(decoder, MPG123_FLAGS, MPG123_QUIET, 0.0);
  mpg123_open_feed(decoder);
  mpg123_feed(decoder, reinterpret_cast<const unsigned char *>(mp3.data()), mp3.size());
  Decoded result;
  for (int status = MPG123_OK; status == MPG123_OK || status == MPG123_NEW_FORMAT;) {
    unsigned char block[4096];
    std::size_t size = 0;
    status = mpg123_read(decoder, block, sizeof block, &size);
    int encoding = 0;
    if (status == MPG123_NEW_FORMAT) mpg123_getformat(decoder, &result.rate, &result.channels, &encoding);
    const auto *const samples = reinterpret_cast<const std::int16_t *>(block);
    result.samples.insert(result.samples.end(), samples, samples + size / sizeof(std::int16_t));
  }
  mpg123_delete(decoder);
  return result;
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
    const Decoded decoded = decode(encode(samples, 4000));
    EXPECT_EQ(decoded.rate, kSpeechRate);
    EXPECT_EQ(decoded.channels, 1);
    // An encoder's delay at the beginning, and the filling of the last frame.
    EXPECT_GE(decoded.samples.size(), full.size());
    EXPECT_LE(decoded.samples.size(), full.size() + 3 * 1152);
    EXPECT_NEAR(tests::levelOf(decoded.samples), tests::levelOf(full) + c.change, 0.7) << c.percent;
  }
  for (const int percent : {0, -1, -2147483647 - 1}) {
    Samples samples{32767, -32768, 1};
    applyVolume(samples, percent);
    EXPECT_EQ(samples, Samples(3)) << percent;
  }
  Samples extremes{32767, -32768, -1};
  applyVolume(extremes, 2147483647);
  EXPECT_EQ(extremes, (Samples{32767, -32768, -1}));
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
  EXPECT_EQ(decode(encode({}, 1)).samples.size() % 576, 0U);
}

TEST(Voice, SpeakersTakeTurns) {
  std::vector<std::jthread> speakers;
  speakers.reserve(4);
  for (int i = 0; i < 4; ++i) {
    speakers.emplace_back([] { EXPECT_GT(speak("One hundred and five.").size(), 8000U); });
  }
}

TEST(Voice, SpeaksWhateverTextItIsGiven) {
  for (const char *text : {"", "  ", "...", "\xff\xfe", "日本 é", "<b>&amp;"})
    EXPECT_NO_THROW((void)speak(text));
}

}  // namespace
}  // namespace velmora
