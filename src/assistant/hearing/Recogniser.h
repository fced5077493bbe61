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
  bool confident = false;   ///< false: nothing that was said belongs to the grammar
  double confidence = 0.0;  ///< how well the text fits the sound: log likelihood a frame of 10 ms
};

/// A decoder with the grammars of a language. One thread at a time; several may be made at once.
class Recogniser {
 public:
  /// The folder of the acoustic model (en-us/) as installed.
  [[nodiscard]] static std::filesystem::path defaultModel();

  /// Throws `std::runtime_error` with one line that says which part of the model is missing.
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
  std::unique_ptr<Decoder> m_decoder;
};

}  // namespace velmora
