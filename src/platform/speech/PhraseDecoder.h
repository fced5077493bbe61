// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Between the recogniser of spoken commands and the library that decodes speech, which lives in a plugin that
// is loaded with the first recogniser.
#pragma once

#include <QtPlugin>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace velmora {

/// Tells phrases from other speech. One thread at a time.
class PhraseDecoder {
 public:
  virtual ~PhraseDecoder() = default;
  /// The phrase that was said, alone, in these 16-bit mono samples at 16 kHz; absent when it was something
  /// else. Takes a tenth of their duration.
  [[nodiscard]] virtual std::optional<std::string> decode(std::span<const std::int16_t> samples) = 0;
};

/// The root of the plugin. Any thread.
class PhraseDecoderFactory {
 public:
  virtual ~PhraseDecoderFactory() = default;
  /// What keeps decoders from being made; empty when nothing does. Looks for the files of the model only.
  [[nodiscard]] virtual std::string problem() const = 0;
  /// Reads the model, which takes a tenth of a second. Throws `std::runtime_error` when that or one of the
  /// words is not to be had.
  [[nodiscard]] virtual std::unique_ptr<PhraseDecoder> make(
      const std::vector<std::string> &phrases) const = 0;
};

}  // namespace velmora

Q_DECLARE_INTERFACE(velmora::PhraseDecoderFactory, "velmora.PhraseDecoderFactory/1")
