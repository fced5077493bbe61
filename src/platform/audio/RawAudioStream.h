// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "platform/audio/AudioSource.h"

namespace velmora {

/// Samples without a header from a descriptor, delivered as they come: 16 kHz, mono, 16 bits, little-endian.
class RawAudioStream : public AudioSource {
 public:
  /// `descriptor` stays the caller's, and `name` is what errors call it. A read is broken off while
  /// `wakeDescriptor` is readable; -1: never.
  RawAudioStream(int descriptor, std::string name, int wakeDescriptor = -1);

  /// Half a sample at the end is dropped. Throws `AudioError` when the descriptor cannot be read, when
  /// nothing comes or what is recognisably an audio file with a header, and beyond `longestSeconds`.
  [[nodiscard]] AudioRead read(std::span<std::int16_t> frame) override;

 private:
  [[nodiscard]] bool waitForData() const;
  void receive(std::size_t wanted);
  void checkStart() const;
  AudioRead deliver(std::span<std::int16_t> frame);

  int m_descriptor;
  int m_wakeDescriptor;
  std::string m_name;
  std::vector<unsigned char> m_bytes;  // received and not yet delivered
  std::size_t m_delivered = 0;         // samples in all
  bool m_ended = false;
};

}  // namespace velmora
