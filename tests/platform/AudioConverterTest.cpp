// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/audio/AudioConverter.h"

#include <gmock/gmock.h>

#include <cstring>

#include "platform/audio/AudioSource.h"
#include "support/ToneFit.h"

namespace velmora {
namespace {

constexpr int kFrom = 44100;
constexpr int kTo = 16000;
constexpr std::uint32_t kIn = 4410;
constexpr std::uint32_t kOut = 1600;

/// One buffer of a tone that goes on from buffer to buffer; the channels have different levels that mean to
/// `amplitude`.
PCMBuffer toneBuffer(const AudioFormat &format, int number, double hertz, double amplitude) {
  PCMBuffer buffer(format, kIn);
  buffer.setFrameLength(kIn);
  for (int channel = 0; channel < format.channels; ++channel) {
    const double level = amplitude * (format.channels == 1 ? 1 : channel == 0 ? 1.5 : 0.5);
    for (std::uint32_t i = 0; i < kIn; ++i) {
      const double at = static_cast<double>(number) * kIn + i;
      const double value = level * std::sin(2 * std::numbers::pi * hertz * at / kFrom);
      if (float *const data = buffer.floatChannelData(channel)) {
        data[i * buffer.stride()] = static_cast<float>(value);
      } else {
        buffer.int16ChannelData(channel)[i * buffer.stride()] =
            static_cast<std::int16_t>(std::lrint(value * 32767));
      }
    }
  }
  return buffer;
}

/// Converts `count` buffers of a tone, each of which must give exactly 1600 frames for one question.
template <typename Sample>
std::vector<Sample> convertTone(const AudioFormat &from, int count, double hertz, double amplitude) {
  const AudioFormat to{sizeof(Sample) == 2 ? SampleType::int16 : SampleType::float32, kTo};
  AudioConverter converter(from, to);
  PCMBuffer output(to, kOut);
  std::vector<Sample> all;
  for (int number = 0; number < count; ++number) {
    const PCMBuffer input = toneBuffer(from, number, hertz, amplitude);
    int asked = 0;
    converter.convert(output, [&](AudioConverter::InputStatus &status) {
      ++asked;
      status = AudioConverter::InputStatus::haveData;
      return &input;
    });
    EXPECT_EQ(asked, 1) << "buffer " << number;
    EXPECT_EQ(output.frameLength(), kOut) << "buffer " << number;
    const void *data = output.floatChannelData();
    if (!data) data = output.int16ChannelData();
    const auto *samples = static_cast<const Sample *>(data);
    all.insert(all.end(), samples, samples + output.frameLength());
  }
  return all;
}

TEST(AudioConverter, EveryBufferGivesItsSixteenHundredFramesWithoutAClick) {
  // A click at a border, a lost or doubled sample, a wrong level or channel: all leave more than rounding.
  const AudioFormat formats[] = {{SampleType::float32, kFrom},    {SampleType::int16, kFrom},
                                 {SampleType::float32, kFrom, 2}, {SampleType::float32, kFrom, 2, false},
                                 {SampleType::int16, kFrom, 2},   {SampleType::int16, kFrom, 2, false}};
  for (const AudioFormat &from : formats) {
    for (const double hertz : {1000.0, 7000.0}) {
      SCOPED_TRACE(::testing::Message() << from.channels << " channels, int16 "
                                        << (from.sampleType == SampleType::int16) << ", " << hertz << " Hz");
      const double amplitude = from.channels == 1 ? 0.95 : 0.6;
      const auto samples = convertTone<std::int16_t>(from, 60, hertz, amplitude);
      const auto fit = tests::fitTone<std::int16_t>(std::span(samples).subspan(kOut), hertz, kTo);
      EXPECT_NEAR(fit.amplitude, amplitude * 32768, amplitude * 33);
      // Two roundings where the source has integers; a step on each otherwise.
      EXPECT_LT(fit.residue, from.sampleType == SampleType::int16 ? 0.5 : 0.36);
      const AudioConverter converter(from, {SampleType::int16, kTo});
      EXPECT_LE(converter.delay(), kTo / 50U);
      // The delay is what it says, to a hundredth of a sample.
      const double turns = (fit.phase / (2 * std::numbers::pi)) + hertz * converter.delay() / kTo;
      EXPECT_NEAR(turns, std::round(turns), 0.01 * hertz / kTo);
    }
  }
}

TEST(AudioConverter, WhatTheNewRateCannotHoldIsGone) {
  for (const double hertz : {8500.0, 12000.0, 20000.0}) {
    const auto samples = convertTone<float>({SampleType::float32, kFrom}, 40, hertz, 1);
    double loudest = 0;
    for (std::size_t i = kOut; i < samples.size(); ++i)
      loudest = std::max(loudest, std::abs(static_cast<double>(samples[i])));
    EXPECT_LT(loudest, 1e-5) << hertz;  // 100 dB
  }
}

TEST(AudioConverter, TooLoudSaturatesAndWhatIsNoNumberDoesNotSpread) {
  const AudioFormat from{SampleType::float32, kFrom};
  const AudioFormat to{SampleType::int16, kTo};
  AudioConverter converter(from, to);
  PCMBuffer output(to, kOut);
  for (int number = 0; number < 10; ++number) {
    PCMBuffer input = toneBuffer(from, number, 100, 4);
    if (number == 3) {
      input.floatChannelData()[5] = std::nanf("");
      input.floatChannelData()[6] = HUGE_VALF;
    }
    converter.convert(output, [&](AudioConverter::InputStatus &status) {
      status = AudioConverter::InputStatus::haveData;
      return &input;
    });
    if (number < 6) continue;
    for (std::uint32_t i = 0; i < kOut; ++i) {
      const double at = number * 1600.0 + i - converter.delay();
      const double wanted = 4 * std::sin(2 * std::numbers::pi * 100 * at / kTo);
      if (std::abs(wanted) > 1.1) {
        ASSERT_EQ(output.int16ChannelData()[i], wanted > 0 ? 32767 : -32768) << number << " " << i;
      }
    }
  }
}

TEST(AudioConverter, BuffersOfOtherSizesAreAskedForUntilEnoughIsThere) {
  const AudioFormat from{SampleType::float32, kFrom};
  const AudioFormat to{SampleType::float32, kTo};
  AudioConverter converter(from, to);
  PCMBuffer output(to, kOut);
  PCMBuffer tenth(from, 441);
  tenth.setFrameLength(441);
  std::size_t given = 0;
  std::size_t frames = 0;
  const auto give = [&](AudioConverter::InputStatus &status) {
    status =
        given % 70 == 69 ? AudioConverter::InputStatus::noDataNow : AudioConverter::InputStatus::haveData;
    ++given;
    return status == AudioConverter::InputStatus::haveData ? &tenth : nullptr;
  };
  while (given < 700) {
    converter.convert(output, give);
    frames += output.frameLength();
  }
  // What comes out is what went in, but for what the filter and the queue hold.
  EXPECT_NEAR(static_cast<double>(frames), 160.0 * 690, 2 * kOut);
}

TEST(AudioConverter, RefusesWhatItCannotConvert) {
  const AudioFormat good{SampleType::float32, kFrom};
  const AudioFormat to{SampleType::int16, kTo};
  EXPECT_THROW(AudioConverter(good, {SampleType::int16, kTo, 2}), AudioError);
  EXPECT_THROW(AudioConverter({SampleType::float32, 0}, to), AudioError);
  EXPECT_THROW(AudioConverter({SampleType::float32, kFrom, 0}, to), AudioError);
  AudioConverter converter(good, to);
  PCMBuffer output(to, kOut);
  const PCMBuffer other = toneBuffer({SampleType::float32, kFrom, 2}, 0, 100, 0.1);
  EXPECT_THROW(converter.convert(output,
                                 [&](AudioConverter::InputStatus &status) {
                                   status = AudioConverter::InputStatus::haveData;
                                   return &other;
                                 }),
               AudioError);
}

}  // namespace
}  // namespace velmora
