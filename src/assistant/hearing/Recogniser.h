// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// From an utterance to its words, offline, within a grammar of commands.
//
//   RecogniserPool recognisers;
//   const Recognition heard = recognisers.recognise(utterance);
//   if (heard.confident) answer(heard.text);
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>

#include "assistant/dialogue/Language.h"

namespace velmora {

/// What was heard: a sentence of the grammar, or any words where they sound more like those.
struct Recognition {
  std::string
      text;  ///< words in lower case with single spaces, `Grammar::kAnything` for others; may be empty
  bool confident = false;   ///< false: what was said is most likely none of the grammar's sentences
  bool certain = false;     ///< so confident that it is hardly the beginning of something else
  double confidence = 0.0;  ///< what `confident` was decided by: log likelihood per frame, weighted
};

/// A decoder with the grammars of a language. One thread at a time; several may be made at once.
class Recogniser {
 public:
  /// The folder of the acoustic model (en-us/) and the phone model (en-us-phone.lm.bin) as installed.
  [[nodiscard]] static std::filesystem::path defaultModel();

  /// Throws `std::runtime_error` with one line that says which part of the model is missing.
  /// `language` outlives it.
  explicit Recogniser(const Language &language = Language::instance(),
                      const std::filesystem::path &model = defaultModel());
  ~Recogniser();
  Recogniser(const Recogniser &) = delete;
  Recogniser &operator=(const Recogniser &) = delete;

  /// Decodes one whole utterance of 16 kHz mono samples, said while `question` is pending (empty: none).
  /// Takes about a tenth of its duration. Utterances do not influence one another. Throws
  /// `std::runtime_error` when the decoder fails.
  [[nodiscard]] Recognition recognise(std::span<const std::int16_t> utterance,
                                      const std::string &question = {});

 private:
  struct Decoder;
  class Phones;
  const Language &m_language;
  std::unique_ptr<Decoder> m_decoder;
  std::shared_ptr<Phones> m_phones;
};

}  // namespace velmora
