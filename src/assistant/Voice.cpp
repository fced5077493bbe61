// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/Voice.h"

#include <flite/flite.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>

extern "C" cst_voice *register_cmu_us_rms(const char *folder);

namespace velmora {
namespace {

struct Release {
  void operator()(cst_wave *wave) const { delete_wave(wave); }
};

/// The voice that was recognised best of those with a free licence. To be called with the mutex held.
cst_voice *voice() {
  static cst_voice *const made = [] {
    flite_init();
    return register_cmu_us_rms(nullptr);
  }();
  return made;
}

}  // namespace

std::vector<std::int16_t> speak(std::string_view text) {
  static std::mutex speaking;
  const std::lock_guard lock(speaking);
  const std::unique_ptr<cst_wave, Release> wave(flite_text_to_wave(std::string(text).c_str(), voice()));
  if (!wave || wave->sample_rate != kSpeechRate || wave->num_channels != 1) {
    throw std::runtime_error("The voice cannot speak");
  }
  return {wave->samples, wave->samples + wave->num_samples};
}

void applyVolume(std::span<std::int16_t> samples, int percent) {
  const int gain = std::clamp(percent, 0, 100);
  for (std::int16_t &sample : samples) sample = static_cast<std::int16_t>(sample * gain / 100);
}

}  // namespace velmora
