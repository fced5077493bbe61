// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/Recogniser.h"

#include <pocketsphinx/pocketsphinx.h>
#include <sphinxbase/err.h>
#include <sphinxbase/fsg_model.h>
#include <sphinxbase/jsgf.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <unordered_set>

namespace velmora {
namespace {

constexpr auto kCommands = "commands";
constexpr auto kPhones = "phones";

/// Frames are 10 ms. What fits the grammar scores nearly as well as the best string of bare phones does; what
/// is forced into it loses about this much a frame and more.
constexpr double kLeastConfidence = -20.0;

struct Release {
  void operator()(cmd_ln_t *config) const { cmd_ln_free_r(config); }
  void operator()(ps_decoder_t *decoder) const { ps_free(decoder); }
  void operator()(jsgf_t *grammar) const { jsgf_grammar_free(grammar); }
  void operator()(fsg_model_t *automaton) const { fsg_model_free(automaton); }
};
template <typename Type>
using Owned = std::unique_ptr<Type, Release>;

[[noreturn]] void fail(const std::string &what) {
  throw std::runtime_error("Speech recognition cannot start: " + what);
}

Owned<fsg_model_t> parseGrammar(std::string_view text, logmath_t *logarithms, float languageWeight) {
  const Owned<jsgf_t> grammar(jsgf_parse_string(std::string(text).c_str(), nullptr));
  if (!grammar) fail("the grammar does not parse");
  jsgf_rule_t *const rule = jsgf_get_public_rule(grammar.get());
  if (!rule) fail("the grammar has no public rule");
  Owned<fsg_model_t> automaton(jsgf_build_fsg(grammar.get(), rule, logarithms, languageWeight));
  if (!automaton) fail("the grammar uses a rule that it does not define");
  return automaton;
}

/// Gives the decoder the pronunciations of the grammar's words only: the whole dictionary would take four
/// times as long to load, and more memory than all the rest.
void addPronunciations(ps_decoder_t *decoder, const fsg_model_t *automaton,
                       const std::filesystem::path &dictionary) {
  std::unordered_set<std::string> words;
  for (int word = 0; word < fsg_model_n_word(automaton); ++word)
    words.insert(fsg_model_word_str(automaton, word));

  std::unordered_set<std::string> missing = words;
  std::ifstream lines(dictionary);
  for (std::string line; std::getline(lines, line);) {
    // "word PHONES" or, for another way to say it, "word(2) PHONES", the first way first.
    const std::size_t space = line.find(' ');
    if (space == std::string::npos) continue;
    const std::string entry = line.substr(0, space);
    const std::string word = entry.substr(0, entry.find('(', 1));
    if (!words.contains(word)) continue;
    missing.erase(word);
    if (ps_add_word(decoder, entry.c_str(), line.c_str() + space + 1, FALSE) < 0) {
      fail("the pronunciation of \"" + entry + "\" is not one of the acoustic model");
    }
  }
  if (!missing.empty()) {
    fail("the grammar's word \"" + *std::min_element(missing.begin(), missing.end()) +
         "\" has no pronunciation in " + dictionary.string());
  }
}

}  // namespace

struct Recogniser::Decoder {
  struct Result {
    std::string text;
    double scorePerFrame;
  };

  Result decode(const char *search, std::span<const std::int16_t> samples) const {
    // The stream is begun anew for each pass: the means of the cepstrum are those of the whole utterance and
    // of nothing before it.
    ps_decoder_t *const decoder = handle.get();
    if (ps_set_search(decoder, search) < 0 || ps_start_stream(decoder) < 0 || ps_start_utt(decoder) < 0 ||
        ps_process_raw(decoder, samples.data(), samples.size(), FALSE, TRUE) < 0 || ps_end_utt(decoder) < 0) {
      throw std::runtime_error("Speech recognition failed");
    }
    int32 score = 0;
    const char *const text = ps_get_hyp(decoder, &score);
    const int frames = ps_get_n_frames(decoder);
    return {text ? text : "", frames > 0 ? static_cast<double>(score) / frames : 0.0};
  }

  Owned<cmd_ln_t> config;
  Owned<ps_decoder_t> handle;
};

std::filesystem::path Recogniser::defaultModel() { return VELMORA_SPEECH_MODEL; }

Recogniser::Recogniser(const std::filesystem::path &model, std::string_view grammar)
    : m_decoder(std::make_unique<Decoder>()) {
  const auto acoustics = model / "en-us";
  const auto phones = model / "en-us-phone.lm.bin";
  const auto dictionary = model / "cmudict-en-us.dict";
  for (const auto &part : {acoustics, phones, dictionary}) {
    if (!std::filesystem::exists(part)) fail("there is no " + part.string());
  }

  // The library's log and its grammar parser are global.
  static std::mutex making;
  const std::lock_guard lock(making);
  err_set_logfp(nullptr);

  // Wide beams: the grammar is small, and a right sentence that was pruned is lost.
  m_decoder->config.reset(cmd_ln_init(nullptr, ps_args(), TRUE, "-hmm", acoustics.c_str(), "-beam", "1e-80",
                                      "-wbeam", "1e-60", "-pbeam", "1e-80", "-lw", "1", "-allphone_ci", "yes",
                                      nullptr));
  if (!m_decoder->config) fail("its settings are refused");
  m_decoder->handle.reset(ps_init(m_decoder->config.get()));
  cmd_ln_t *const config = m_decoder->config.get();
  ps_decoder_t *const decoder = m_decoder->handle.get();
  if (!decoder) fail("the acoustic model in " + acoustics.string() + " cannot be read");

  const auto automaton =
      parseGrammar(grammar, ps_get_logmath(decoder), static_cast<float>(cmd_ln_float_r(config, "-lw")));
  addPronunciations(decoder, automaton.get(), dictionary);
  if (ps_set_fsg(decoder, kCommands, automaton.get()) < 0) fail("the grammar is refused");

  // Each search takes the settings of the moment it is added. The phones only tell how well the best of them
  // would fit, for which narrow beams are enough.
  cmd_ln_set_float_r(config, "-beam", 1e-20);
  cmd_ln_set_float_r(config, "-pbeam", 1e-20);
  cmd_ln_set_float_r(config, "-lw", 2.0);
  if (ps_set_allphone_file(decoder, kPhones, phones.c_str()) < 0) {
    fail("the phone model " + phones.string() + " cannot be read");
  }
}

Recogniser::~Recogniser() = default;

Recognition Recogniser::recognise(std::span<const std::int16_t> utterance) {
  const Decoder::Result commands = m_decoder->decode(kCommands, utterance);
  if (commands.text.empty()) return {};
  const Decoder::Result phones = m_decoder->decode(kPhones, utterance);
  const double confidence = commands.scorePerFrame - phones.scorePerFrame;
  return {commands.text, confidence >= kLeastConfidence, confidence};
}

}  // namespace velmora
