// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/Recogniser.h"

#include <pocketsphinx/pocketsphinx.h>
#include <sphinxbase/err.h>
#include <sphinxbase/fsg_model.h>
#include <sphinxbase/jsgf.h>

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <fstream>
#include <mutex>
#include <random>
#include <stdexcept>
#include <unordered_set>
#include <vector>

#include "foundation/Log.h"

namespace velmora {
namespace {

constexpr auto kCommands = "commands";
constexpr auto kPhones = "phones";

/// What fits the grammar scores nearly as well, a frame of 10 ms, as the best string of bare phones does;
/// what is forced into it loses more. Measured with eleven synthetic voices (bench/speech.cpp): here nine in
/// ten sentences of the grammar are kept and well over nine in ten others are refused, clean and at 20 dB
/// alike. Three higher, and artificial voices are refused too often; three lower, and twice as many others
/// pass.
constexpr double kLeastConfidence = -15.0;

/// The acoustic model has never heard digital silence: a recording whose pauses hold nothing at all is
/// understood worse than one with the noise of a quiet room, of this level in dB under the utterance.
constexpr double kRoom = -33.0;

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

/// While it lives, the first error that the library reports on this thread is kept for us to tell.
class Complaint {
 public:
  Complaint() { t_listening = this; }
  ~Complaint() { t_listening = nullptr; }
  Complaint(const Complaint &) = delete;
  Complaint &operator=(const Complaint &) = delete;

  void failIfAny() const {
    if (!m_text.empty()) fail("the grammar does not parse: " + m_text);
  }

  /// Takes the place of the library's log. An error that it calls fatal ends the program as soon as this
  /// returns.
  __attribute__((format(printf, 3, 4))) static void hear(void *, err_lvl_t level, const char *format, ...) {
    if (level < ERR_ERROR || (level == ERR_ERROR && !t_listening)) return;
    char line[512];
    va_list values;
    va_start(values, format);
    std::vsnprintf(line, sizeof line, format, values);
    va_end(values);
    std::string text = line;
    // Without the place in the library's sources: ERROR: "jsgf.c", line 348: …
    if (const auto place = text.find("\", line "); place != std::string::npos)
      text.erase(0, text.find(": ", place) + 2);
    if (text.ends_with('\n')) text.pop_back();
    // What follows of a syntax error is made of arguments that the library does not give.
    if (const auto at = text.find(" at line "); at != std::string::npos) text.erase(at);
    if (level == ERR_FATAL) return standardErrorSink()("Speech recognition failed: " + text);
    if (t_listening->m_text.empty()) t_listening->m_text = std::move(text);
  }

 private:
  static thread_local Complaint *t_listening;

  std::string m_text;
};

thread_local Complaint *Complaint::t_listening = nullptr;

Owned<fsg_model_t> parseGrammar(std::string_view text, logmath_t *logarithms, float languageWeight) {
  const Complaint complaint;
  const Owned<jsgf_t> grammar(jsgf_parse_string(std::string(text).c_str(), nullptr));
  complaint.failIfAny();
  jsgf_rule_t *const rule = grammar ? jsgf_get_public_rule(grammar.get()) : nullptr;
  if (!rule) fail("the grammar has no public rule");
  // A rule that is used but not defined is reported, and left out of the result.
  Owned<fsg_model_t> automaton(jsgf_build_fsg(grammar.get(), rule, logarithms, languageWeight));
  complaint.failIfAny();
  if (!automaton) fail("the grammar has no sentences");
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

std::vector<std::int16_t> withRoom(std::span<const std::int16_t> utterance) {
  double power = 0.0;
  for (const double sample : utterance) power += sample * sample;
  const double rms = std::sqrt(power / std::max<double>(1.0, static_cast<double>(utterance.size())));
  const double peak = rms * std::pow(10.0, kRoom / 20.0) * std::sqrt(3.0);  // of an even distribution
  std::vector<std::int16_t> result;
  result.reserve(utterance.size());
  std::minstd_rand random;  // the same noise each time, so that the same utterance gives the same words
  const auto range = static_cast<double>(std::minstd_rand::max());
  for (const std::int16_t sample : utterance) {
    const double noise = peak * (2.0 * static_cast<double>(random()) / range - 1.0);
    result.push_back(static_cast<std::int16_t>(std::clamp(sample + noise, -32768.0, 32767.0)));
  }
  return result;
}

}  // namespace

struct Recogniser::Decoder {
  Decoder() = default;
  Decoder(const Decoder &) = delete;
  Decoder &operator=(const Decoder &) = delete;
  ~Decoder() {
    // The search for phones lets go of its last result when it begins another one, and at no other time.
    if (!handle || ps_set_search(handle.get(), kPhones) < 0) return;
    ps_start_utt(handle.get());
    ps_end_utt(handle.get());
  }

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
  err_set_callback(&Complaint::hear, nullptr);

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
  const auto heard = withRoom(utterance);
  const Decoder::Result commands = m_decoder->decode(kCommands, heard);
  if (commands.text.empty()) return {};
  const Decoder::Result phones = m_decoder->decode(kPhones, heard);
  const double confidence = commands.scorePerFrame - phones.scorePerFrame;
  return {commands.text, confidence >= kLeastConfidence, confidence};
}

}  // namespace velmora
