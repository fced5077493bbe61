// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/hearing/Listener.h"

#include <utility>

namespace velmora {
namespace {

/// How much silence ends a request that is complete, and one that is complete but that people go on with.
constexpr std::chrono::milliseconds kAfterFinished{420};
constexpr std::chrono::milliseconds kAfterComplete{600};

/// How long the words of a pause that is long enough are waited for: clients send ten pieces a second.
constexpr std::chrono::milliseconds kUntilNextPiece{90};

/// The detector is told this much at a time, so that it is asked about pauses often enough however large the
/// pieces of the stream are.
constexpr std::size_t kPiece = 320;

}  // namespace

Listener::Listener(RecogniserPool &recognisers, const Language &language, std::string question)
    : m_recognisers(recognisers), m_language(language), m_question(std::move(question)) {}

void Listener::feed(std::span<const std::int16_t> samples) {
  while (!hasEnded() && !samples.empty()) {
    const auto piece = samples.first(std::min(samples.size(), kPiece));
    samples = samples.subspan(piece.size());
    m_samples.insert(m_samples.end(), piece.begin(), piece.end());
    m_detector.feed(piece);
    useGuess();
  }
  if (hasEnded() || m_detector.pause() < kAfterFinished) return;
  wait(kUntilNextPiece);
  useGuess();
}

void Listener::useGuess() {
  const auto paused = m_detector.pausedUtterance();
  if (!paused) return;
  if (m_guess && m_guess->range != *paused) {
    // One at a time: a speaker who pauses often must not occupy all recognisers.
    if (m_guess->recognition.valid() &&
        m_guess->recognition.wait_for(std::chrono::seconds(0)) != std::future_status::ready) {
      return;
    }
    m_guess.reset();
    m_guessed.reset();
  }
  if (!m_guess) m_guess = Guess{*paused, recognise(*paused)};
  if (m_guess->recognition.valid() &&
      m_guess->recognition.wait_for(std::chrono::seconds(0)) == std::future_status::ready) {
    m_guessed = m_guess->recognition.get();
  }
  if (!m_guessed || !m_guessed->certain) return;
  switch (m_language.completeness(m_guessed->text, m_question)) {
    case Language::Completeness::finished: m_detector.shortenPause(kAfterFinished); return;
    case Language::Completeness::complete: m_detector.shortenPause(kAfterComplete); return;
    case Language::Completeness::none: return;
  }
}

std::future<Recognition> Listener::recognise(EndOfUtterance::Range range) const {
  const auto begin = m_samples.begin() + static_cast<std::ptrdiff_t>(range.begin);
  const auto end = m_samples.begin() + static_cast<std::ptrdiff_t>(std::min(range.end, m_samples.size()));
  return std::async(std::launch::async, [this, samples = std::vector<std::int16_t>(begin, end)] {
    return m_recognisers.recognise(samples, m_question);
  });
}

std::span<const std::int16_t> Listener::utterance() const {
  if (m_detector.state() != EndOfUtterance::State::ended) return {};
  const EndOfUtterance::Range range = m_detector.utterance();
  return std::span(m_samples).subspan(range.begin, range.end - range.begin);
}

std::optional<Recognition> Listener::result() {
  if (m_detector.state() != EndOfUtterance::State::ended) return std::nullopt;
  if (m_guess && m_guess->range == m_detector.utterance())
    return m_guessed ? *m_guessed : m_guess->recognition.get();
  return m_recognisers.recognise(utterance(), m_question);
}

}  // namespace velmora
