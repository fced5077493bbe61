// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/audio/AudioFile.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <limits>

#include "support/AudioFiles.h"
#include "support/TemporaryFolder.h"

namespace velmora {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using tests::readAll;
using tests::TemporaryFolder;
using tests::tone;
using tests::writeAudio;

std::vector<std::int16_t> samplesOf(const std::filesystem::path &path) {
  AudioFile file(path);
  return readAll(file);
}

struct ToneFit {
  double amplitude;  // of the sine in phase with the start of the audio, full scale is 1
  double residue;    // effective value of what is not that sine
};

/// Fits a sine of known phase to the middle of `samples`: a wrong frequency, a delay, a wrong level and
/// distortion all show, as amplitude or as residue.
ToneFit fitTone(const std::vector<std::int16_t> &samples, double hertz) {
  const std::size_t from = samples.size() / 5;
  const std::size_t to = samples.size() * 4 / 5;
  const auto sine = [&](std::size_t i) {
    return std::sin(2 * std::numbers::pi * hertz * static_cast<double>(i) / AudioSource::sampleRate);
  };
  double product = 0;
  double power = 0;
  for (std::size_t i = from; i < to; ++i) {
    product += samples[i] / 32768.0 * sine(i);
    power += sine(i) * sine(i);
  }
  const double amplitude = product / power;
  double rest = 0;
  for (std::size_t i = from; i < to; ++i) rest += std::pow(samples[i] / 32768.0 - amplitude * sine(i), 2);
  return {amplitude, std::sqrt(rest / static_cast<double>(to - from))};
}

TEST(AudioFile, AToneKeepsFrequencyLevelAndLengthFromEveryKindOfFile) {
  // The source and the result are each rounded by half a step at the most, and on a tone whose period is a
  // few samples these errors may all point the same way: one step is the bound of the residue (the coarser of
  // the two widths), half a step that of the level. What the conversion itself adds is far below.
  const struct {
    const char *name;
    int format;
    double step;
  } formats[] = {{"u8", SF_FORMAT_PCM_U8, std::ldexp(1, -7)},
                 {"s16", SF_FORMAT_PCM_16, std::ldexp(1, -15)},
                 {"s24", SF_FORMAT_PCM_24, std::ldexp(1, -15)},
                 {"s32", SF_FORMAT_PCM_32, std::ldexp(1, -15)},
                 {"float", SF_FORMAT_FLOAT, std::ldexp(1, -15)}};
  const TemporaryFolder folder;
  const auto path = folder.path() / "tone.wav";
  for (const int rate : {8000, 11025, 16000, 22050, 44100, 48000}) {
    for (const auto &format : formats) {
      for (const std::vector<double> &channels :
           {std::vector<double>{0.5}, std::vector<double>{0.75, 0.25}}) {
        SCOPED_TRACE(std::to_string(rate) + " Hz, " + format.name + ", " + std::to_string(channels.size()));
        const double seconds = 1.05;  // no whole number of frames, nor of blocks
        writeAudio(path, tone(1000, seconds, rate, channels), rate, static_cast<int>(channels.size()),
                   SF_FORMAT_WAV | format.format);
        const auto samples = samplesOf(path);
        // The source's length in samples is rounded, and so is the result.
        EXPECT_NEAR(static_cast<double>(samples.size()), seconds * AudioSource::sampleRate, 1.5);
        const ToneFit fit = fitTone(samples, 1000);
        EXPECT_NEAR(fit.amplitude, 0.5, format.step / 2);
        EXPECT_LT(fit.residue, format.step);
      }
    }
  }
}

TEST(AudioFile, SixteenBitMonoAtSixteenKilohertzIsUnchanged) {
  const TemporaryFolder folder;
  std::vector<float> all;
  std::vector<std::int16_t> expected;
  for (int value = -32768; value <= 32767; ++value) {
    all.push_back(static_cast<float>(value) / 32768.0F);
    expected.push_back(static_cast<std::int16_t>(value));
  }
  writeAudio(folder.path() / "all.wav", all, 16000);
  EXPECT_EQ(samplesOf(folder.path() / "all.wav"), expected);
}

TEST(AudioFile, WhatComesDoesNotDependOnTheFrameSize) {
  const TemporaryFolder folder;
  const auto path = folder.path() / "tone.flac";
  writeAudio(path, tone(440, 2, 44100, {0.3, 0.1}), 44100, 2, SF_FORMAT_FLAC | SF_FORMAT_PCM_16);
  const auto expected = samplesOf(path);
  for (const std::size_t size : {std::size_t{1}, std::size_t{777}, std::size_t{100000}}) {
    AudioFile file(path);
    EXPECT_EQ(readAll(file, size), expected) << size;
  }
}

TEST(AudioFile, TooLoudSaturatesAndNeverWraps) {
  constexpr float infinity = std::numeric_limits<float>::infinity();
  const TemporaryFolder folder;
  for (const int rate : {16000, 44100}) {
    SCOPED_TRACE(rate);
    const auto path = folder.path() / "loud.wav";
    writeAudio(path, tone(100, 1, rate, {4}), rate, 1, SF_FORMAT_WAV | SF_FORMAT_FLOAT);
    const auto samples = samplesOf(path);
    EXPECT_EQ(*std::max_element(samples.begin(), samples.end()), 32767);
    EXPECT_EQ(*std::min_element(samples.begin(), samples.end()), -32768);
    for (std::size_t i = 0; i < samples.size(); ++i) {
      const double wanted = 4 * std::sin(2 * std::numbers::pi * 100 * static_cast<double>(i) / 16000);
      // Away from the ends, where the filter sees silence, each clipped sample stays at its limit.
      if (std::abs(wanted) > 1.1 && i > 200 && i + 200 < samples.size()) {
        ASSERT_EQ(samples[i], wanted > 0 ? 32767 : -32768) << i;
      }
    }

    auto broken = tone(100, 1, rate, {0.5});
    broken[static_cast<std::size_t>(rate) / 4] = std::numeric_limits<float>::quiet_NaN();
    broken[static_cast<std::size_t>(rate) / 3] = infinity;
    broken[static_cast<std::size_t>(rate) / 3 + 1] = -infinity;
    writeAudio(path, broken, rate, 1, SF_FORMAT_WAV | SF_FORMAT_FLOAT);
    auto after = samplesOf(path);
    after.erase(after.begin(), after.begin() + 8000);  // the tone's 50th period begins here
    EXPECT_NEAR(fitTone(after, 100).amplitude, 0.5, 0.001);
  }
}

TEST(AudioFile, SaysInOneLineWhatIsWrong) {
  const TemporaryFolder folder;
  const auto wave = [&](const char *name, std::size_t samples, int rate) {
    writeAudio(folder.path() / name, std::vector<float>(samples), rate, 1, SF_FORMAT_WAV | SF_FORMAT_PCM_U8);
    return folder.path() / name;
  };
  const auto pipe = folder.path() / "pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  // A header whose rate nobody records with.
  const auto slow = wave("slow.wav", 100, 8000);
  std::fstream(slow, std::ios::in | std::ios::out).seekp(24).write("\x01\0\0\0", 4);
  std::string mp3Like(100000, '\0');
  for (std::size_t i = 0; i < mp3Like.size(); ++i) mp3Like[i] = static_cast<char>(i % 7 ? 0xff : 0xe3);

  const struct {
    std::filesystem::path path;
    const char *says;
  } cases[] = {{folder.path() / "none.wav", "No such file"},
               {folder.path(), "is a folder"},
               {pipe, "not a regular file"},
               {folder.write("empty.wav", ""), "is empty"},
               {folder.write("text.wav", "What time is it?\n"), "not an audio file"},
               {folder.write("cut.wav", "RIFF\x10\0\0\0WAVE"), "not an audio file"},
               {folder.write("noise.mp3", mp3Like), "not an audio file"},
               {"/proc/self/exe", "not an audio file"},
               {slow, "impossible sample rate of 1 Hz"},
               {wave("silent.wav", 0, 8000), "holds no samples"},
               {wave("long.wav", 600 * 8000 + 1, 8000), "longer than 10 minutes"}};
  for (const auto &c : cases) {
    try {
      const AudioFile file(c.path);
      ADD_FAILURE() << c.path << " was taken, although it " << c.says;
    } catch (const AudioError &error) {
      EXPECT_THAT(error.what(),
                  AllOf(HasSubstr(c.path.string() + ": "), HasSubstr(c.says), Not(HasSubstr("\n"))));
    }
  }
  EXPECT_EQ(samplesOf(wave("longest.wav", 600 * 8000, 8000)).size(), 600U * 16000);
}

}  // namespace
}  // namespace velmora
