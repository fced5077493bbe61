// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// From the samples of one stream to what was said in it.
//
//   Listener listener(recognisers, language, question);
//   while (!listener.hasEnded()) listener.feed(nextSamples());
//   std::optional<Recognition> heard = listener.result();
#pragma once

#include <chrono>
#include <cstdint>
#include <future>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "assistant/dialogue/Language.h"
#include "assistant/hearing/EndOfUtterance.h"
#include "assistant/hearing/RecogniserPool.h"

namespace velmora {

/// Recognises already in the pauses of the speaker, so that the words are there when the pause turns out to
/// be the end, and so that a request which is complete ends sooner than one that breaks off. Belongs to one
/// thread; what it is given outlives it. Holds at most half a minute of sound.
class Listener {
 public:
  /// `question` is the name of what the assistant has asked; empty for nothing.
  Listener(RecogniserPool &recognisers, const Language &language, std::string question);

  /// Takes the next 16 kHz mono samples; those after the end are dropped. When they may be the last before
  /// the end, it waits for the recogniser as long as the next ones are likely to take, a tenth of a second at
  /// most.
  void feed(std::span<const std::int16_t> samples);
  /// The stream is over.
  void finish() { m_detector.finish(); }
  [[nodiscard]] bool hasEnded() const { return m_detector.hasEnded(); }
  /// Waits until what is being recognised is, for at most `time`: for those who feed faster than real time.
  void wait(std::chrono::milliseconds time) const {
    if (m_guess && m_guess->recognition.valid()) m_guess->recognition.wait_for(time);
  }

  /// What was said, to be asked for once, after the end; waits for the recogniser. Nothing when nobody spoke.
  /// Throws what the recogniser throws.
  [[nodiscard]] std::optional<Recognition> result();

  /// The samples of the request, after the end; empty when nobody spoke.
  [[nodiscard]] std::span<const std::int16_t> utterance() const;

 private:
  /// A recognition that is under way for the words before a pause.
  struct Guess {
    EndOfUtterance::Range range;
    std::future<Recognition> recognition;
  };

  [[nodiscard]] std::future<Recognition> recognise(EndOfUtterance::Range range) const;
  void useGuess();

  RecogniserPool &m_recognisers;
  const Language &m_language;
  const std::string m_question;
  EndOfUtterance m_detector;
  std::vector<std::int16_t> m_samples;
  std::optional<Guess> m_guess;
  std::optional<Recognition> m_guessed;  // for the range of `m_guess`
};

}  // namespace velmora
