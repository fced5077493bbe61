// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Captured audio as the service wants it.
//
//   AudioConverter converter(AudioEngine::inputFormat(), {SampleType::int16, 16000});
//   PCMBuffer output({SampleType::int16, 16000}, 1600);
//   converter.convert(output, [&](AudioConverter::InputStatus &status) {
//     status = AudioConverter::InputStatus::haveData;
//     return &captured;
//   });
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "platform/audio/PCMBuffer.h"

namespace velmora {

/// Converts a stream of buffers to another sample rate, sample type and to one channel (the mean of all),
/// with a constant delay: what a tenth of a second of input gives is a tenth of a second of output from the
/// first buffer on, begun with `delay()` of silence. From 44100 to 16000 Hz the delay is 17 ms, signal to
/// noise is above 130 dB before the rounding to integers and above 96 dB after it, and aliases are 100 dB
/// down. Too loud saturates. One thread at a time.
class AudioConverter {
 public:
  enum class InputStatus { haveData = 0, noDataNow = 1 };
  /// Sets the status, and with `haveData` gives a buffer of the format converted from, which stays as it is
  /// until the next call or the end of the conversion. Each buffer given is taken whole, once.
  using Input = std::function<const PCMBuffer *(InputStatus &status)>;

  /// Takes 5 ms: the delay that the filter needs is measured. Throws `AudioError` for what it cannot convert:
  /// more than one channel in `to`, or rates without sense.
  AudioConverter(const AudioFormat &from, const AudioFormat &to);
  ~AudioConverter();
  AudioConverter(const AudioConverter &) = delete;
  AudioConverter &operator=(const AudioConverter &) = delete;

  /// Fills `output` to its capacity, asking for input as often as that needs: not at all when enough is left,
  /// and once for 1600 frames at 16000 Hz when 4410 at 44100 Hz are given each time. Sets a shorter
  /// `frameLength` when the input has no data or an empty buffer. Throws `AudioError` when a buffer is not of
  /// the format agreed on; nothing is lost then but that buffer.
  void convert(PCMBuffer &output, const Input &input);

  /// By how much the output lags behind the input, in frames of the output.
  [[nodiscard]] std::uint32_t delay() const;

 private:
  class Stream;
  std::unique_ptr<Stream> m_stream;
};

}  // namespace velmora
