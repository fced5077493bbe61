// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <vector>

namespace velmora {

/// Finds in a stream of 16-bit mono samples at 16 kHz what was said by itself: a third of a second to one and
/// a half of speech, with a pause before and after it. Everything else, silence and long speech above all,
/// costs next to nothing. One thread at a time.
class ShortUtterance {
 public:
  /// Takes a whole number of frames of 10 ms. The utterance with a little of the pause around it, once, a
  /// quarter of a second after its end.
  [[nodiscard]] std::optional<std::vector<std::int16_t>> feed(std::span<const std::int16_t> samples);
  /// Begins anew; only the noise of the room is kept.
  void forget();

 private:
  using Frame = std::vector<std::int16_t>;

  [[nodiscard]] bool takeFrame(std::span<const std::int16_t> frame);
  [[nodiscard]] bool isVoiced(double level);
  [[nodiscard]] std::size_t voicedAmongLast(std::size_t frames) const;

  std::deque<double> m_noise;  // levels of the last frames with any sound
  double m_threshold = 0.0;
  std::size_t m_sinceThreshold = 0;  // frames
  std::deque<bool> m_voiced;         // of the last frames
  std::deque<Frame> m_frames;        // of the utterance, or of the time before one
  bool m_isSpeaking = false;
  std::size_t m_spoken = 0;  // frames of the speech and what follows
  bool m_isTooLong = false;
};

}  // namespace velmora
