// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/speech/engine/PhrasePlugin.h"

#include <pocketsphinx/pocketsphinx.h>
#include <sphinxbase/err.h>
#include <sphinxbase/fsg_model.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>
#include <set>
#include <sstream>
#include <stdexcept>

#include "foundation/Log.h"

namespace velmora {
namespace {

// The library has a search for key phrases as well. Of "okay mac" by the voices of bench_hotword it finds
// a third of what this way finds, with as many mistakes: a phrase that was said alone can be scored as a
// whole, with the means of the cepstrum over the whole of it, against the best string of bare phones.
constexpr auto kPhrases = "phrases";
constexpr auto kPhones = "phones";
constexpr double kLeastConfidence = -24.0;  // log likelihood a frame of 10 ms

/// What people say by itself and what sounds much like a command; whatever fits best must not be one of
/// these. Without them half of what the voices of bench_hotword say of "okay then" passes for "okay mac", and
/// with them nothing.
const std::vector<std::string> kRivals{"okay then", "go back",  "okay thanks", "okay now",
                                       "okay no",   "okay yes", "okay good",   "okay so",
                                       "okay bye",  "oh my",    "okay stop",   "okay great"};

const std::filesystem::path kModel = VELMORA_SPEECH_MODEL;
const std::filesystem::path kAcoustics = kModel / "en-us";
const std::filesystem::path kPhoneModel = kModel / "en-us-phone.lm.bin";
const std::filesystem::path kDictionary = kModel / "cmudict-en-us.dict";

struct Release {
  void operator()(cmd_ln_t *config) const { cmd_ln_free_r(config); }
  void operator()(ps_decoder_t *decoder) const { ps_free(decoder); }
  void operator()(fsg_model_t *automaton) const { fsg_model_free(automaton); }
};

[[noreturn]] void fail(const std::string &what) { throw std::runtime_error(what); }

/// Takes the place of the library's log. An error that it calls fatal ends the program as soon as this
/// returns.
__attribute__((format(printf, 3, 4))) void hearComplaint(void *, err_lvl_t level, const char *format, ...) {
  if (level != ERR_FATAL) return;
  char line[512];
  va_list values;
  va_start(values, format);
  std::vsnprintf(line, sizeof line, format, values);
  va_end(values);
  standardErrorSink()(std::string("Speech recognition failed: ") + line);
}

std::vector<std::string> piecesOf(const std::string &phrase) {
  std::istringstream pieces(phrase);
  return {std::istream_iterator<std::string>(pieces), {}};
}

/// Gives the decoder the pronunciations of these words only: the whole dictionary takes 40 MB.
void addPronunciations(ps_decoder_t *decoder, const std::vector<std::string> &phrases) {
  std::set<std::string> words;
  for (const std::string &phrase : phrases) {
    for (const std::string &word : piecesOf(phrase)) words.insert(word);
  }
  std::set<std::string> missing = words;
  std::ifstream lines(kDictionary);
  for (std::string line; std::getline(lines, line);) {
    const std::size_t blank = line.find(' ');
    const std::string entry = line.substr(0, blank);
    const std::string word = entry.substr(0, entry.find('('));  // others of one word are numbered
    if (!words.contains(word) || blank == std::string::npos) continue;
    if (ps_add_word(decoder, entry.c_str(), line.c_str() + blank + 1, FALSE) >= 0) missing.erase(word);
  }
  if (!missing.empty()) fail("nobody knows how to say \"" + *missing.begin() + "\"");
}

/// Any of the phrases, all of them as likely; one path from the first to the last state each. The library
/// could read the same from a text, and leaks when it does.
std::unique_ptr<fsg_model_t, Release> automatonOf(const std::vector<std::string> &phrases,
                                                  ps_decoder_t *decoder, float languageWeight) {
  constexpr int kStart = 0, kEnd = 1;
  int states = 2;
  for (const std::string &phrase : phrases) states += static_cast<int>(piecesOf(phrase).size());
  std::unique_ptr<fsg_model_t, Release> automaton(
      fsg_model_init(kPhrases, ps_get_logmath(decoder), languageWeight, states));
  automaton->start_state = kStart;
  automaton->final_state = kEnd;
  int used = 2;
  for (const std::string &phrase : phrases) {
    const auto words = piecesOf(phrase);
    int from = kStart;
    for (std::size_t i = 0; i < words.size(); ++i) {
      const int to = i + 1 == words.size() ? kEnd : used++;
      fsg_model_trans_add(automaton.get(), from, to, 0,
                          fsg_model_word_add(automaton.get(), words[i].c_str()));
      from = to;
    }
  }
  return automaton;
}

class Decoder final : public PhraseDecoder {
 public:
  explicit Decoder(const std::vector<std::string> &phrases) : m_phrases(phrases) {
    std::vector<std::string> all = phrases;
    for (const std::string &rival : kRivals)
      if (!isPhrase(rival)) all.push_back(rival);
    // The library's log is global.
    static std::mutex making;
    const std::lock_guard lock(making);
    err_set_logfp(nullptr);
    err_set_callback(&hearComplaint, nullptr);

    // With only the active senones computed, scores would be relative to the best of those, and those of two
    // searches could not be compared. The dither stands for a room where a microphone gives pure silence.
    m_config.reset(cmd_ln_init(nullptr, ps_args(), TRUE, "-hmm", kAcoustics.c_str(), "-beam", "1e-60",
                               "-wbeam", "1e-40", "-pbeam", "1e-60", "-lw", "6", "-compallsen", "yes",
                               "-allphone_ci", "yes", "-dither", "yes", nullptr));
    if (!m_config) fail("its settings are refused");
    m_decoder.reset(ps_init(m_config.get()));
    if (!m_decoder) fail("the acoustic model in " + kAcoustics.string() + " cannot be read");
    addPronunciations(m_decoder.get(), all);
    const auto weight = static_cast<float>(cmd_ln_float_r(m_config.get(), "-lw"));
    const auto automaton = automatonOf(all, m_decoder.get(), weight);
    if (ps_set_fsg(m_decoder.get(), kPhrases, automaton.get()) < 0) fail("the phrases are refused");
    // Each search takes the settings of the moment it is added. The phones only tell how well the best of
    // them would fit, for which narrow beams are enough.
    cmd_ln_set_float_r(m_config.get(), "-beam", 1e-20);
    cmd_ln_set_float_r(m_config.get(), "-pbeam", 1e-20);
    cmd_ln_set_float_r(m_config.get(), "-lw", 2.0);
    if (ps_set_allphone_file(m_decoder.get(), kPhones, kPhoneModel.c_str()) < 0)
      fail("the phone model " + kPhoneModel.string() + " cannot be read");
  }
  ~Decoder() override {
    // The search for phones lets go of its last result when it begins another one, and at no other time.
    if (!m_decoder || ps_set_search(m_decoder.get(), kPhones) < 0) return;
    ps_start_utt(m_decoder.get());
    ps_end_utt(m_decoder.get());
  }
  Decoder(const Decoder &) = delete;
  Decoder &operator=(const Decoder &) = delete;

  [[nodiscard]] std::optional<std::string> decode(std::span<const std::int16_t> samples) override {
    const Score phrase = scoreOf(kPhrases, samples);
    if (!isPhrase(phrase.text)) return std::nullopt;
    if (phrase.sound - scoreOf(kPhones, samples).sound < kLeastConfidence) return std::nullopt;
    return phrase.text;
  }

 private:
  struct Score {
    std::string text = {};
    double sound = 0.0;  // how well it fits, a frame
  };

  [[nodiscard]] bool isPhrase(const std::string &text) const {
    return std::find(m_phrases.begin(), m_phrases.end(), text) != m_phrases.end();
  }

  [[nodiscard]] Score scoreOf(const char *search, std::span<const std::int16_t> samples) const {
    ps_decoder_t *const decoder = m_decoder.get();
    // The stream is begun anew: the means of the cepstrum are those of this sound and of nothing before it.
    if (ps_set_search(decoder, search) < 0 || ps_start_stream(decoder) < 0 || ps_start_utt(decoder) < 0)
      return {};
    ps_process_raw(decoder, samples.data(), samples.size(), FALSE, TRUE);
    ps_end_utt(decoder);
    const char *const text = ps_get_hyp(decoder, nullptr);
    if (!text) return {};
    Score score{.text = text};
    for (ps_seg_t *part = ps_seg_iter(decoder); part; part = ps_seg_next(part)) {
      int32 acoustic = 0, language = 0, backoff = 0;
      (void)ps_seg_prob(part, &acoustic, &language, &backoff);
      score.sound += acoustic;
    }
    score.sound /= std::max(1, ps_get_n_frames(decoder));
    return score;
  }

  const std::vector<std::string> m_phrases;
  std::unique_ptr<cmd_ln_t, Release> m_config;
  std::unique_ptr<ps_decoder_t, Release> m_decoder;
};

}  // namespace

std::string PhrasePlugin::problem() const {
  for (const auto &part : {kAcoustics, kPhoneModel, kDictionary}) {
    std::error_code error;
    if (!std::filesystem::exists(part, error)) return "there is no " + part.string();
  }
  return {};
}

std::unique_ptr<PhraseDecoder> PhrasePlugin::make(const std::vector<std::string> &phrases) const {
  return std::make_unique<Decoder>(phrases);
}

}  // namespace velmora
