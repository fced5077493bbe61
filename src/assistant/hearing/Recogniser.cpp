// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/hearing/Recogniser.h"

#include <pocketsphinx/pocketsphinx.h>
#include <sphinxbase/err.h>
#include <sphinxbase/fsg_model.h>

#include <array>
#include <cstdarg>
#include <cstdio>
#include <future>
#include <map>
#include <mutex>
#include <set>
#include <sstream>
#include <stdexcept>
#include <vector>

#include "assistant/hearing/CommonWords.h"
#include "assistant/hearing/Pronunciations.h"
#include "assistant/hearing/Room.h"
#include "foundation/Log.h"

namespace velmora {
namespace {

constexpr auto kCommands = "commands";
constexpr auto kPhones = "phones";

// What speaks for a sentence of the grammar, in log likelihood a frame of 10 ms: that its sound fits nearly
// as well as the best string of phones does, which what is forced into the grammar does not; that it is a
// plain one, for among so many numbers and things some always fit; and that it was said to its end, for what
// breaks off fits better as a fragment. Weights and threshold keep nearly all that is meant and let one in
// twenty others pass in the tuned half of bench/understanding.
constexpr double kLanguageWeight = 2.0;
constexpr double kIncompleteWeight = 2.0;
constexpr double kLeastConfidence = -33.0;
/// Half of the beginnings that pass for sentences do not reach this, and of the sentences nearly all do.
constexpr double kCertain = -27.0;

/// The sounds of the acoustic model. Any words at all are any string of common words and of these; the
/// decoder knows each as a word of its own, with `Grammar::kAnything` in front.
constexpr std::array kSounds{"AA", "AE", "AH", "AO", "AW", "AY", "B",  "CH", "D", "DH", "EH", "ER", "EY",
                             "F",  "G",  "HH", "IH", "IY", "JH", "K",  "L",  "M", "N",  "NG", "OW", "OY",
                             "P",  "R",  "S",  "SH", "T",  "TH", "UH", "UW", "V", "W",  "Y",  "Z",  "ZH"};

/// How likely what is outside the grammar is. What is said to nobody's assistant is told by its words, so
/// that the sounds are needed only for words that are not common; the less likely both are, the more of it is
/// forced into the grammar, and the fewer sentences of the grammar are taken for it.
struct Outside {
  double sound;         ///< one more of any sound
  double frequentWord;  ///< one more of the most frequent words; 0 without words
  double otherWord;     ///< one more of the other common words
  double nothingKnown;  ///< not even the beginning belongs to a sentence of the grammar
  double continued;     ///< the rest of a sentence that the grammar leaves open does not
};
constexpr Outside kOutsideCommands{0.01, 0.004, 0.0006, 5e-5, 0.05};
// Whoever is asked something most likely answers it, and the words take 4 MB for each grammar.
constexpr Outside kOutsideAnswers{0.08, 0.0, 0.0, 0.02, 1.0};

struct Release {
  void operator()(cmd_ln_t *config) const { cmd_ln_free_r(config); }
  void operator()(ps_decoder_t *decoder) const { ps_free(decoder); }
  void operator()(fsg_model_t *automaton) const { fsg_model_free(automaton); }
};
template <typename Type>
using Owned = std::unique_ptr<Type, Release>;

/// For what decoders have in common: the library's log, and automata with a plain count of their users.
std::mutex &shared() {
  static std::mutex mutex;
  return mutex;
}

[[noreturn]] void fail(const std::string &what) {
  throw std::runtime_error("Speech recognition cannot start: " + what);
}

/// A file or folder of the model.
std::filesystem::path modelPart(const std::filesystem::path &model, const char *name) {
  auto part = model / name;
  if (!std::filesystem::exists(part)) fail("there is no " + part.string());
  return part;
}

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

/// The decoder's name of a sound, or of a word that is not one of the grammar.
std::string outside(const std::string &word) { return std::string(Grammar::kAnything) + word; }

/// The words of `text` with each string of what is outside the grammar as `Grammar::kAnything`.
std::string withoutOutside(const char *text) {
  std::istringstream words(text);
  std::string result;
  std::string last;
  for (std::string word; words >> word; last = word) {
    if (word.starts_with(Grammar::kAnything)) word = Grammar::kAnything;
    if (word == Grammar::kAnything && word == last) continue;
    (result += result.empty() ? "" : " ") += word;
  }
  return result;
}

/// The decoder's form of `grammar`, and beside it any words at all.
Owned<fsg_model_t> automatonOf(const Grammar &grammar, const Outside &probabilities, ps_decoder_t *decoder,
                               float languageWeight) {
  logmath_t *const logarithms = ps_get_logmath(decoder);
  // What stands for any words ends a sentence: from wherever it begins, they go round between two states.
  const int before = grammar.stateCount();
  const int after = before + 1;
  Owned<fsg_model_t> automaton(fsg_model_init("grammar", logarithms, languageWeight, after + 1));
  automaton->start_state = Grammar::kStart;
  automaton->final_state = Grammar::kEnd;
  std::vector<int> numbers;
  for (const std::string &word : grammar.words())
    numbers.push_back(word == Grammar::kAnything ? Grammar::kNoWord
                                                 : fsg_model_word_add(automaton.get(), word.c_str()));
  const auto weighted = [&](double probability) {
    return static_cast<int32>(static_cast<float>(logmath_log(logarithms, probability)) * languageWeight);
  };
  const auto step = [&](int from, int to, double probability) {
    fsg_model_null_trans_add(automaton.get(), from, to, weighted(probability));
  };
  for (const Grammar::Arc &arc : grammar.arcs()) {
    const int word =
        arc.word == Grammar::kNoWord ? Grammar::kNoWord : numbers[static_cast<std::size_t>(arc.word)];
    if (word != Grammar::kNoWord) {
      fsg_model_trans_add(automaton.get(), arc.from, arc.to, weighted(arc.probability), word);
    } else if (arc.word == Grammar::kNoWord) {
      step(arc.from, arc.to, arc.probability);
    } else {
      step(arc.from, before, arc.probability * probabilities.continued);
    }
  }
  const auto addOutside = [&](const std::string &word, double probability) {
    fsg_model_trans_add(automaton.get(), before, after, weighted(probability),
                        fsg_model_word_add(automaton.get(), outside(word).c_str()));
  };
  for (const char *const sound : kSounds) addOutside(sound, probabilities.sound);
  if (probabilities.frequentWord > 0.0) {
    for (const std::string &word : frequentWords()) addOutside(word, probabilities.frequentWord);
    for (const std::string &word : otherCommonWords()) addOutside(word, probabilities.otherWord);
  }
  step(Grammar::kStart, before, probabilities.nothingKnown);
  step(after, before, 1.0);
  step(after, Grammar::kEnd, 1.0);
  glist_free(fsg_model_null_trans_closure(automaton.get(), nullptr));
  return automaton;
}

/// Gives the decoder the pronunciations of the words that can be understood, and of those outside.
void addPronunciations(ps_decoder_t *decoder) {
  std::set<std::string> common(frequentWords().begin(), frequentWords().end());
  common.insert(otherCommonWords().begin(), otherCommonWords().end());
  std::istringstream lines{std::string(pronunciations())};
  for (std::string line; std::getline(lines, line);) {
    const std::size_t blank = line.find(' ');
    const std::string word = line.substr(0, blank);  // "a", and "a(2)" for another way to say it
    const char *const sounds = line.c_str() + blank + 1;
    if (ps_add_word(decoder, word.c_str(), sounds, FALSE) < 0 ||
        (common.contains(word.substr(0, word.find('(', 1))) &&
         ps_add_word(decoder, outside(word).c_str(), sounds, FALSE) < 0))
      fail("the pronunciation of \"" + word + "\" is not one of the acoustic model");
  }
  for (const char *const sound : kSounds) {
    if (ps_add_word(decoder, outside(sound).c_str(), sound, FALSE) < 0)
      fail(std::string("the acoustic model has no sound ") + sound);
  }
}

}  // namespace

struct Recogniser::Decoder {
  Decoder() = default;
  Decoder(const Decoder &) = delete;
  Decoder &operator=(const Decoder &) = delete;
  ~Decoder() {
    const std::lock_guard lock(shared());
    handle.reset();
  }

  /// How widely it searches, in what the library's settings take.
  struct Search {
    const char *beam;
    const char *languageWeight;
    const char *mostActive;  ///< models of sounds followed at once; more narrow the beam of their frame
  };

  /// Under the lock of what is shared, as all that follows on it.
  void make(const std::filesystem::path &acoustics, const Search &search) {
    err_set_logfp(nullptr);
    err_set_callback(&hearComplaint, nullptr);
    // With only the active senones computed, scores would be relative to the best of those, and those of two
    // searches could not be compared.
    config.reset(cmd_ln_init(nullptr, ps_args(), TRUE, "-hmm", acoustics.c_str(), "-beam", search.beam,
                             "-wbeam", "1e-40", "-pbeam", search.beam, "-maxhmmpf", search.mostActive, "-lw",
                             search.languageWeight, "-compallsen", "yes", "-allphone_ci", "yes", nullptr));
    if (!config) fail("its settings are refused");
    handle.reset(ps_init(config.get()));
    if (!handle) fail("the acoustic model in " + acoustics.string() + " cannot be read");
  }

  struct Result {
    std::string text = {};
    double sound = 0.0;       ///< how well it fits, a frame
    double language = 0.0;    ///< how likely the words are, a frame
    double incomplete = 0.0;  ///< how much better it would be, a frame, if it might stop anywhere
  };

  Result decode(const std::string &search, std::span<const std::int16_t> samples) const {
    // A search keeps all that it has thought of, megabytes of a long utterance, until it begins another one.
    const std::unique_ptr<ps_decoder_t, decltype(&beginAnother)> forgetting(handle.get(), &beginAnother);
    // The stream is begun anew for each pass: the means of the cepstrum are those of the whole utterance and
    // of nothing before it.
    ps_decoder_t *const decoder = handle.get();
    if (ps_set_search(decoder, search.c_str()) < 0 || ps_start_stream(decoder) < 0 ||
        ps_start_utt(decoder) < 0 ||
        ps_process_raw(decoder, samples.data(), samples.size(), FALSE, TRUE) < 0) {
      throw std::runtime_error("Speech recognition failed");
    }
    // Before its end, an utterance may stop anywhere in the grammar, and after it at the end of a sentence
    // only.
    int32 anywhere = 0;
    (void)ps_get_hyp(decoder, &anywhere);
    if (ps_end_utt(decoder) < 0) throw std::runtime_error("Speech recognition failed");
    int32 score = 0;
    const char *const words = ps_get_hyp(decoder, &score);
    const int frames = ps_get_n_frames(decoder);
    if (frames == 0 || !words) return {};
    Result result{.text = withoutOutside(words),
                  .incomplete = static_cast<double>(anywhere - score) / frames};
    for (ps_seg_t *part = ps_seg_iter(decoder); part; part = ps_seg_next(part)) {
      int32 sound = 0, language = 0, backoff = 0;
      (void)ps_seg_prob(part, &sound, &language, &backoff);
      result.sound += static_cast<double>(sound) / frames;
      result.language += static_cast<double>(language) / frames;
    }
    return result;
  }

  Owned<cmd_ln_t> config;
  Owned<ps_decoder_t> handle;

 private:
  static void beginAnother(ps_decoder_t *decoder) {
    ps_start_utt(decoder);
    ps_end_utt(decoder);
  }
};

/// How well the best string of sounds fits, whatever it is. One decoder for all recognisers, used beside
/// theirs: it takes a quarter of their time.
class Recogniser::Phones {
 public:
  /// The one that the others use, if any.
  static std::shared_ptr<Phones> shared(const std::filesystem::path &model) {
    static std::mutex mutex;
    static std::map<std::filesystem::path, std::weak_ptr<Phones>> all;
    const std::lock_guard lock(mutex);
    std::weak_ptr<Phones> &known = all[model];
    auto phones = known.lock();
    if (!phones) known = phones = std::make_shared<Phones>(model);
    return phones;
  }

  explicit Phones(const std::filesystem::path &model) {
    const auto acoustics = modelPart(model, "en-us");
    const auto phones = modelPart(model, "en-us-phone.lm.bin");
    const std::lock_guard lock(velmora::shared());
    // It only tells how well the best would fit, for which narrow beams are enough.
    m_decoder.make(acoustics, {.beam = "1e-20", .languageWeight = "2", .mostActive = "30000"});
    if (ps_set_allphone_file(m_decoder.handle.get(), kPhones, phones.c_str()) < 0)
      fail("the phone model " + phones.string() + " cannot be read");
  }

  /// A frame of `samples`. Thread-safe; one after the other.
  double fit(std::span<const std::int16_t> samples) {
    const std::lock_guard lock(m_mutex);
    return m_decoder.decode(kPhones, samples).sound;
  }

 private:
  std::mutex m_mutex;
  Decoder m_decoder;
};

std::filesystem::path Recogniser::defaultModel() { return VELMORA_SPEECH_MODEL; }

Recogniser::Recogniser(const Language &language, const std::filesystem::path &model)
    : m_language(language), m_decoder(std::make_unique<Decoder>()), m_phones(Phones::shared(model)) {
  const std::lock_guard lock(shared());
  // Wide beams: the grammars are small, and a right sentence that was pruned is lost. Where so wide ones
  // would let all of a grammar pass, as in noise, following only the best of it spares the slowest utterances
  // a third of their time. The weight keeps long numbers out of what was said in a few words.
  m_decoder->make(modelPart(model, "en-us"), {.beam = "1e-60", .languageWeight = "6", .mostActive = "4000"});
  cmd_ln_t *const config = m_decoder->config.get();
  ps_decoder_t *const decoder = m_decoder->handle.get();
  addPronunciations(decoder);

  const auto weight = static_cast<float>(cmd_ln_float_r(config, "-lw"));
  const auto add = [&](const std::string &name, const Grammar &grammar, const Outside &probabilities) {
    // The decoders only read it, and a third of the memory that one takes is this.
    static std::map<std::string, Owned<fsg_model_t>> automata;
    Owned<fsg_model_t> &automaton = automata[name];
    if (!automaton) automaton = automatonOf(grammar, probabilities, decoder, weight);
    if (ps_set_fsg(decoder, name.c_str(), automaton.get()) < 0) fail("the grammar " + name + " is refused");
  };
  add(kCommands, language.commands(), kOutsideCommands);
  for (const Language::Answers &answers : language.answers())
    add(answers.question->name, answers.grammar, kOutsideAnswers);
}

Recogniser::~Recogniser() = default;

Recognition Recogniser::recognise(std::span<const std::int16_t> utterance, const std::string &question) {
  const auto heard = withRoom(utterance);
  auto phones = std::async(std::launch::async, [this, &heard] { return m_phones->fit(heard); }).share();
  const auto recogniseAs = [&](const std::string &search) -> Recognition {
    Decoder::Result result = m_decoder->decode(search, heard);
    if (result.text.empty() || result.text == Grammar::kAnything) return {std::move(result.text)};
    const double confidence = result.sound - phones.get() + kLanguageWeight * result.language -
                              kIncompleteWeight * result.incomplete;
    const bool isOdd = search == kCommands && !m_language.makesSense(result.text);
    return {.text = std::move(result.text),
            .confident = confidence >= kLeastConfidence && !isOdd,
            .certain = confidence >= kCertain && !isOdd,
            .confidence = confidence};
  };
  if (question.empty()) return recogniseAs(kCommands);
  // An answer is much more likely than a new request; that one is looked for where no answer fits.
  Recognition answer = recogniseAs(question);
  if (answer.confident) return answer;
  Recognition request = recogniseAs(kCommands);
  return request.confident ? request : answer;
}

}  // namespace velmora
