// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/audio/AudioConverter.h"

#include <gmock/gmock.h>

#include "support/ToneFit.h"

namespace velmora {
namespace {

constexpr int kFrom = 44100;
constexpr int kTo = 16000;
constexpr std::uint32_t kIn = 4410;
constexpr std::uint32_t kOut = 1600;
constexpr AudioFormat kSource{SampleType::float32, kFrom};
constexpr AudioFormat kTarget{SampleType::int16, kTo};

/// One buffer, whose frames are what `value` says.
template <typename Value>
PCMBuffer bufferOf(const Value &value) {
  PCMBuffer buffer(kSource, kIn);
  buffer.setFrameLength(kIn);
  for (std::uint32_t i = 0; i < kIn; ++i) buffer.floatChannelData()[i] = static_cast<float>(value(i));
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
  // A click at a border, a lost or doubled sample, a wrong level: all leave more than rounding.
  for (const double hertz : {1000.0, 7000.0}) {
    SCOPED_TRACE(hertz);
    AudioConverter converter(kSource, kTarget);
    std::vector<std::int16_t> all;
    for (int number = 0; number < 60; ++number) {
      const auto some = convert(converter, bufferOf([&](std::uint32_t i) {
                                  const double at = static_cast<double>(number) * kIn + i;
                                  return 0.95 * std::sin(2 * std::numbers::pi * hertz * at / kFrom);
                                }));
      if (number > 0) all.insert(all.end(), some.begin(), some.end());
    }
    const auto fit = tests::fitTone<std::int16_t>(all, hertz, kTo);
    EXPECT_NEAR(fit.amplitude, 0.95 * 32768, 31);
    EXPECT_LT(fit.residue, 0.36);
    EXPECT_LE(converter.delay(), kTo / 50U);
    // The delay is what it says, to a hundredth of a sample.
    const double turns = (fit.phase / (2 * std::numbers::pi)) + hertz * converter.delay() / kTo;
    EXPECT_NEAR(turns, std::round(turns), 0.01 * hertz / kTo);
  }
}

TEST(AudioConverter, TooLoudSaturatesAndWhatIsNoNumberDoesNotSpread) {
  AudioConverter converter(kSource, kTarget);
  for (int number = 0; number < 12; ++number) {
    const auto some = convert(converter, bufferOf([&](std::uint32_t i) {
                                if (number == 3 && i == 5) return std::nanf("");
                                if (number == 3 && i == 6) return HUGE_VALF;
                                return number < 8 ? 4.0F : -4.0F;
                              }));
    // The first of each kind begins with what came before.
    if (number % 8 != 0) {
      EXPECT_THAT(some, ::testing::Each(number < 8 ? 32767 : -32768)) << number;
    }
  }
}

}  // namespace
}  // namespace velmora
