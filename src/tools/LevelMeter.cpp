// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "tools/LevelMeter.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>

namespace velmora {
namespace {

constexpr std::size_t kCells = 24;
constexpr double kQuietest = -54;  // dBFS, mean power: a silent room
constexpr double kLoudest = -6;    // shouted into the microphone
const std::string kLabel = "Listening [";

double levelOf(std::span<const std::int16_t> samples) {
  double squares = 0;
  for (const std::int16_t sample : samples) squares += static_cast<double>(sample) * sample;
  return 10 * std::log10(std::max(squares / static_cast<double>(samples.size()), 1.0)) -
         20 * std::log10(32768.0);
}

}  // namespace

LevelMeter::LevelMeter(int descriptor) : m_descriptor(::isatty(descriptor) != 0 ? descriptor : -1) {}

LevelMeter::~LevelMeter() { clear(); }

void LevelMeter::show(std::span<const std::int16_t> samples) {
  if (samples.empty()) return;
  const double part = (levelOf(samples) - kQuietest) / (kLoudest - kQuietest);
  const auto full = static_cast<std::size_t>(std::lround(std::clamp(part, 0.0, 1.0) * kCells));
  draw('\r' + kLabel + std::string(full, '#') + std::string(kCells - full, '.') + ']');
  m_isShown = true;
}

void LevelMeter::clear() {
  if (!m_isShown) return;
  draw('\r' + std::string(kLabel.size() + kCells + 1, ' ') + '\r');
  m_isShown = false;
}

/// What a terminal does not take is no loss.
void LevelMeter::draw(const std::string &line) {
  if (m_descriptor < 0) return;
  [[maybe_unused]] const ssize_t written = ::write(m_descriptor, line.data(), line.size());
}

}  // namespace velmora
