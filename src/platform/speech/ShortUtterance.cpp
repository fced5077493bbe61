// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/speech/ShortUtterance.h"

#include <algorithm>
#include <cmath>

namespace velmora {
namespace {

constexpr std::size_t kFrame = 160;  // samples: 10 ms, the unit of all the counts below

constexpr std::size_t kNoiseWindow = 200;  // longer than anybody speaks without a dip to the noise
constexpr std::size_t kThresholdLife = 10;
constexpr double kOverNoise = 9.0;      // dB
constexpr double kLeastSpeech = -60.0;  // dBFS
constexpr double kNoSound = -90.0;      // dBFS; says nothing about the room

constexpr std::size_t kStartWindow = 12;
constexpr std::size_t kStartVoiced = 7;  // longer than a click
constexpr std::size_t kPause = 25;
constexpr std::size_t kPauseVoiced = 2;  // clicks in it
constexpr std::size_t kMargin = 60;      // before what is voiced: the decoder takes the means of the whole
constexpr std::size_t kShortest = 33;
constexpr std::size_t kLongest = 150;

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

}  // namespace

std::optional<std::vector<std::int16_t>> ShortUtterance::feed(std::span<const std::int16_t> samples) {
  std::optional<std::vector<std::int16_t>> found;
  for (; samples.size() >= kFrame; samples = samples.subspan(kFrame)) {
    if (!takeFrame(samples.first(kFrame))) continue;
    found.emplace();
    for (const Frame &frame : m_frames) found->insert(found->end(), frame.begin(), frame.end());
    forget();
  }
  return found;
}

void ShortUtterance::forget() {
  m_voiced.clear();
  m_frames.clear();
  m_isSpeaking = m_isTooLong = false;
}

bool ShortUtterance::takeFrame(std::span<const std::int16_t> frame) {
  m_voiced.push_back(isVoiced(levelOf(frame)));
  if (m_voiced.size() > kPause) m_voiced.pop_front();
  if (!m_isTooLong) m_frames.emplace_back(frame.begin(), frame.end());

  if (!m_isSpeaking) {
    if (m_frames.size() > kMargin + kStartWindow) m_frames.pop_front();
    m_isSpeaking = voicedAmongLast(kStartWindow) >= kStartVoiced;
    m_spoken = kStartVoiced;
    return false;
  }
  ++m_spoken;
  if (m_voiced.size() == kPause && voicedAmongLast(kPause) <= kPauseVoiced) {
    const bool isWanted = !m_isTooLong && m_spoken >= kShortest + kPause;
    if (!isWanted) forget();
    return isWanted;
  }
  if (m_spoken > kLongest + kPause) {
    m_isTooLong = true;  // until the next pause
    m_frames.clear();
  }
  return false;
}

bool ShortUtterance::isVoiced(double level) {
  if (level > kNoSound) m_noise.push_back(level);
  if (m_noise.size() > kNoiseWindow) m_noise.pop_front();
  if (m_sinceThreshold++ % kThresholdLife == 0) {
    m_threshold = kLeastSpeech;
    // Until there is so much of it, speech would pass for the noise of the room.
    if (m_noise.size() == kNoiseWindow) {
      std::vector<double> sorted(m_noise.begin(), m_noise.end());
      const auto tenth = sorted.begin() + kNoiseWindow / 10;
      std::nth_element(sorted.begin(), tenth, sorted.end());
      m_threshold = std::max(m_threshold, *tenth + kOverNoise);
    }
  }
  return level > m_threshold;
}

std::size_t ShortUtterance::voicedAmongLast(std::size_t frames) const {
  const auto count = static_cast<std::ptrdiff_t>(std::min(frames, m_voiced.size()));
  return static_cast<std::size_t>(std::count(m_voiced.end() - count, m_voiced.end(), true));
}

}  // namespace velmora
