// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/hearing/EndOfUtterance.h"

#include <algorithm>
#include <cmath>

namespace velmora {
namespace {

constexpr std::size_t kFrame = 160;  // samples: 10 ms, the unit of all the counts below

constexpr std::size_t kNoiseWindow = 200;  // 2 s: longer than anybody speaks without a dip to the noise
constexpr double kOverNoise = 9.0;         // dB
constexpr double kBelowSpeech = 10.0;      // dB
constexpr double kLeastSpeech = -60.0;     // dBFS; nobody who means the microphone is as quiet as this
constexpr double kNoSound = -90.0;         // dBFS; less than the last bit: a muted or a starting microphone

constexpr std::size_t kStartWindow = 15;
constexpr std::size_t kStartVoiced = 8;  // longer than any click
constexpr std::size_t kPause = 20;       // so much silence is a pause; stops within words are shorter
constexpr std::size_t kClickShare = 10;  // one in so many of its frames may be a click
constexpr std::size_t kLastSilent = 10;  // speech that goes on in these frames is waited for
constexpr std::size_t kBefore = 30;      // a quiet first consonant, and the decoder's run-up
// A quiet last consonant. All of it is there when the pause is noticed: what is recognised then is the whole.
constexpr std::size_t kAfter = kPause - kPause / kClickShare;

/// The level in dBFS without the frame's mean: an offset of the microphone and hum are no speech.
double levelOf(std::span<const std::int16_t> frame) {
  double sum = 0.0;
  double squares = 0.0;
  for (const std::int16_t sample : frame) {
    sum += sample;
    squares += static_cast<double>(sample) * sample;
  }
  const double mean = sum / static_cast<double>(frame.size());
  const double power = squares / static_cast<double>(frame.size()) - mean * mean;
  return 10.0 * std::log10(std::max(power, 1e-3) / (32768.0 * 32768.0));
}

double percentile(std::vector<double> values, std::size_t percent) {
  const auto wanted = values.begin() + static_cast<std::ptrdiff_t>(values.size() * percent / 100);
  std::nth_element(values.begin(), wanted, values.end());
  return *wanted;
}

std::size_t framesOf(std::chrono::milliseconds time) { return static_cast<std::size_t>(time.count() / 10); }

}  // namespace

EndOfUtterance::EndOfUtterance(const Limits &limits) : m_limits(limits), m_hangOver(limits.hangOver) {
  m_rest.reserve(kFrame);
}

EndOfUtterance::State EndOfUtterance::feed(std::span<const std::int16_t> samples) {
  while (!hasEnded() && !samples.empty()) {
    const std::size_t count = std::min(samples.size(), kFrame - m_rest.size());
    m_rest.insert(m_rest.end(), samples.begin(), samples.begin() + static_cast<std::ptrdiff_t>(count));
    samples = samples.subspan(count);
    if (m_rest.size() < kFrame) break;
    const double level = levelOf(m_rest);
    m_rest.clear();
    takeFrame(level);
  }
  return m_state;
}

EndOfUtterance::State EndOfUtterance::finish() {
  if (m_state == State::listening) {
    m_state = State::nothingSaid;
  } else if (m_state == State::speaking) {
    end(m_levels.size() + 1);  // with what does not fill a frame
  }
  return m_state;
}

void EndOfUtterance::takeFrame(double level) {
  m_levels.push_back(level);
  // A microphone that gives nothing says nothing about the room.
  if (level > kNoSound) {
    if (m_noise.size() < kNoiseWindow) {
      m_noise.push_back(level);
    } else {
      m_noise[m_oldestNoise] = level;
      m_oldestNoise = (m_oldestNoise + 1) % kNoiseWindow;
    }
  }
  markVoiced();

  const std::size_t now = m_levels.size();
  if (m_state == State::listening) lookForSpeech();
  if (m_state == State::listening && now >= framesOf(m_limits.patience)) m_state = State::nothingSaid;
  if (m_state != State::speaking) return;

  followPause();
  if (now - m_firstVoiced >= framesOf(m_limits.longest)) return end(now);
  endIfPausedEnough();
}

void EndOfUtterance::followPause() {
  const std::size_t now = m_levels.size();
  if (m_pause) {
    if (voicedAmongLast(kStartWindow) >= kStartVoiced) m_pause.reset();
  } else if (now - m_firstVoiced >= kPause && voicedAmongLast(kPause) <= kPause / kClickShare) {
    // The last of the speech may be what is allowed for clicks.
    m_pause = now - kAfter;
    m_hangOver = m_limits.hangOver;
  }
}

void EndOfUtterance::endIfPausedEnough() {
  if (!m_pause || m_levels.size() - *m_pause < framesOf(m_hangOver)) return;
  if (voicedAmongLast(kLastSilent) <= kLastSilent / kClickShare * 2) end(*m_pause + kAfter);
}

std::optional<EndOfUtterance::Range> EndOfUtterance::pausedUtterance() const {
  if (m_state != State::speaking || !m_pause) return std::nullopt;
  return rangeTo(*m_pause + kAfter);
}

std::chrono::milliseconds EndOfUtterance::pause() const {
  if (m_state != State::speaking || !m_pause) return std::chrono::milliseconds(0);
  return std::chrono::milliseconds(10 * (m_levels.size() - *m_pause));
}

EndOfUtterance::State EndOfUtterance::shortenPause(std::chrono::milliseconds hangOver) {
  if (m_state == State::speaking && m_pause) {
    m_hangOver = std::min(m_hangOver, hangOver);
    endIfPausedEnough();
  }
  return m_state;
}

std::size_t EndOfUtterance::voicedAmongLast(std::size_t frames) const {
  const auto count = static_cast<std::ptrdiff_t>(frames);
  if (roomIsKnown())
    return static_cast<std::size_t>(std::count(m_voiced.end() - count, m_voiced.end(), true));
  // What passes for noise may be speech that never pauses: an end must be far below the loud parts, too.
  const std::vector<double> request(m_levels.begin() + static_cast<std::ptrdiff_t>(m_firstVoiced),
                                    m_levels.end());
  const double threshold = std::clamp(percentile(request, 90) - kBelowSpeech, kLeastSpeech, m_threshold);
  return static_cast<std::size_t>(
      std::count_if(m_levels.end() - count, m_levels.end(), [=](double level) { return level > threshold; }));
}

void EndOfUtterance::markVoiced() {
  m_threshold = kLeastSpeech;
  if (!m_noise.empty()) m_threshold = std::max(m_threshold, percentile(m_noise, 10) + kOverNoise);
  // Until the room is known, speech passes for its noise; when the first dip shows what the noise is, the
  // frames so far are judged again. Later they are not: noise that stops would become speech.
  const std::size_t settled = roomIsKnown() ? m_voiced.size() : 0;
  m_voiced.resize(m_levels.size());
  for (std::size_t frame = settled; frame < m_levels.size(); ++frame)
    m_voiced[frame] = m_levels[frame] > m_threshold;
}

void EndOfUtterance::lookForSpeech() {
  const std::size_t from =
      roomIsKnown() && m_voiced.size() > kStartWindow ? m_voiced.size() - kStartWindow : 0;
  for (std::size_t frame = from; frame < m_voiced.size(); ++frame) {
    if (!m_voiced[frame]) continue;
    const auto first = m_voiced.begin() + static_cast<std::ptrdiff_t>(frame);
    const auto last =
        m_voiced.begin() + static_cast<std::ptrdiff_t>(std::min(frame + kStartWindow, m_voiced.size()));
    if (static_cast<std::size_t>(std::count(first, last, true)) < kStartVoiced) continue;
    m_state = State::speaking;
    m_firstVoiced = frame;
    return;
  }
}

bool EndOfUtterance::roomIsKnown() const { return m_noise.size() == kNoiseWindow; }

EndOfUtterance::Range EndOfUtterance::rangeTo(std::size_t frame) const {
  // Frames before the first voiced one may have been found to be voiced since.
  std::size_t first = m_firstVoiced;
  for (std::size_t back = first; back > 0 && first - back < kBefore;) {
    if (m_voiced[--back]) first = back;
  }
  return {.begin = (first - std::min(first, kBefore)) * kFrame,
          .end = std::min(frame * kFrame, m_levels.size() * kFrame + m_rest.size())};
}

void EndOfUtterance::end(std::size_t frame) {
  m_utterance = rangeTo(frame);
  m_state = State::ended;
}

}  // namespace velmora
