// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/audio/AudioConverter.h"

#include <gmock/gmock.h>

#include "platform/audio/AudioSource.h"
#include "support/ToneFit.h"

namespace velmora {
namespace {

constexpr int kFrom = 44100;
constexpr int kTo = 16000;
constexpr std::uint32_t kIn = 4410;
constexpr std::uint32_t kOut = 1600;
constexpr AudioFormat kSource{SampleType::float32, kFrom};
constexpr AudioFormat kTarget{SampleType::int16, kTo};

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

/// What one buffer gives, which must be exactly 1600 frames for one question.
std::vector<std::int16_t> convert(AudioConverter &converter, const PCMBuffer &input) {
  PCMBuffer output(kTarget, kOut);
  int asked = 0;
  converter.convert(output, [&](AudioConverter::InputStatus &status) {
    ++asked;
    status = AudioConverter::InputStatus::haveData;
    return &input;
  });
  EXPECT_EQ(asked, 1);
  EXPECT_EQ(output.frameLength(), kOut);
  return {output.int16ChannelData(), output.int16ChannelData() + output.frameLength()};
}

TEST(AudioConverter, EveryBufferGivesItsSixteenHundredFramesWithoutAClick) {
  // A click at a border, a lost or doubled sample, a wrong level or channel: all leave more than rounding.
  const AudioFormat formats[] = {{SampleType::float32, kFrom},
                                 {SampleType::int16, kFrom},
                                 {SampleType::float32, kFrom, 2},
                                 {SampleType::int16, kFrom, 2, false}};
  for (const AudioFormat &from : formats) {
    for (const double hertz : {1000.0, 7000.0}) {
      SCOPED_TRACE(::testing::Message() << from.channels << " channels, int16 "
                                        << (from.sampleType == SampleType::int16) << ", " << hertz << " Hz");
      const double amplitude = from.channels == 1 ? 0.95 : 0.6;
      AudioConverter converter(from, kTarget);
      std::vector<std::int16_t> all;
      for (int number = 0; number < 60; ++number) {
        const auto some = convert(converter, toneBuffer(from, number, hertz, amplitude));
        if (number > 0) all.insert(all.end(), some.begin(), some.end());
      }
      const auto fit = tests::fitTone<std::int16_t>(all, hertz, kTo);
      EXPECT_NEAR(fit.amplitude, amplitude * 32768, amplitude * 33);
      // Two roundings where the source has integers; a step on each otherwise.
      EXPECT_LT(fit.residue, from.sampleType == SampleType::int16 ? 0.5 : 0.36);
      EXPECT_LE(converter.delay(), kTo / 50U);
      // The delay is what it says, to a hundredth of a sample.
      const double turns = (fit.phase / (2 * std::numbers::pi)) + hertz * converter.delay() / kTo;
      EXPECT_NEAR(turns, std::round(turns), 0.01 * hertz / kTo);
    }
  }
}

TEST(AudioConverter, TooLoudSaturatesAndWhatIsNoNumberDoesNotSpread) {
  AudioConverter converter(kSource, kTarget);
  for (int number = 0; number < 12; ++number) {
    PCMBuffer input(kSource, kIn);
    input.setFrameLength(kIn);
    float *const samples = input.floatChannelData();
    std::fill(samples, samples + kIn, number < 8 ? 4.0F : -4.0F);
    if (number == 3) samples[5] = std::nanf("");
    if (number == 3) samples[6] = HUGE_VALF;
    const auto some = convert(converter, input);
    // The first of each kind begins with what came before.
    if (number % 8 != 0) {
      EXPECT_THAT(some, ::testing::Each(number < 8 ? 32767 : -32768)) << number;
    }
  }
}

TEST(AudioConverter, BuffersOfOtherSizesAreAskedForUntilEnoughIsThere) {
  AudioConverter converter(kSource, kTarget);
  PCMBuffer output(kTarget, kOut);
  PCMBuffer tenth(kSource, kIn / 10);
  tenth.setFrameLength(kIn / 10);
  std::size_t asked = 0;
  std::size_t frames = 0;
  while (asked < 700) {
    converter.convert(output, [&](AudioConverter::InputStatus &status) {
      const bool hasData = ++asked % 70 != 0;
      status = hasData ? AudioConverter::InputStatus::haveData : AudioConverter::InputStatus::noDataNow;
      return hasData ? &tenth : nullptr;
    });
    frames += output.frameLength();
  }
  // What comes out is what went in, but for what the filter and the queue hold.
  EXPECT_NEAR(static_cast<double>(frames), 160.0 * 690, 2 * kOut);
}

TEST(AudioConverter, RefusesWhatItCannotConvert) {
  EXPECT_THROW(AudioConverter(kSource, {SampleType::int16, kTo, 2}), AudioError);
  EXPECT_THROW(AudioConverter({SampleType::float32, 0}, kTarget), AudioError);
  EXPECT_THROW(AudioConverter({SampleType::float32, kFrom, 0}, kTarget), AudioError);
  AudioConverter converter(kSource, kTarget);
  const PCMBuffer other = toneBuffer({SampleType::float32, kFrom, 2}, 0, 100, 0.1);
  EXPECT_THROW(convert(converter, other), AudioError);
}

}  // namespace
}  // namespace velmora
