// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// How well and how fast the local assistant understands: sentences spoken by synthetic voices, with and
// without noise, go through the end of utterance, the recogniser and the dialogue.
//
//   bench_speech           flite's voices slt and awb
//   bench_speech espeak    also five accents of espeak-ng, which needs the programs espeak-ng and sox
//   bench_speech -v ...    also one line for each sentence
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "assistant/dialogue/Dialogue.h"
#include "assistant/hearing/EndOfUtterance.h"
#include "assistant/speech/Mp3Encoder.h"
#include "assistant/speech/NumberWords.h"
#include "assistant/hearing/Recogniser.h"
#include "assistant/speech/Voice.h"
#include "support/Speech.h"

namespace velmora {
namespace {

using Clock = std::chrono::steady_clock;
using tests::Samples;

constexpr auto kUnknown = "unknown";

struct Sentence {
  const char *words;
  const char *skill;
  const char *answer = "";  ///< what the answer's text begins with
  bool inGame = false;
};

constexpr Sentence kInGrammar[] = {
    {"what time is it", "time"},
    {"what's the time", "time"},
    {"what is the time", "time"},
    {"tell me the time", "time"},
    {"do you know what time it is", "time"},
    {"what day is it", "date"},
    {"what day is it today", "date"},
    {"what is the date today", "date"},
    {"what's the date", "date"},
    {"tell me today's date", "date"},
    {"what day of the week is it", "date"},
    {"what is seven plus five", "arithmetic", "7 + 5"},
    {"what is forty two minus seventeen", "arithmetic", "42 - 17"},
    {"how much is twelve times eleven", "arithmetic", "12 × 11"},
    {"what is one hundred and five divided by five", "arithmetic", "105 ÷ 5"},
    {"calculate three hundred twenty plus eighty one", "arithmetic", "320 + 81"},
    {"what is nine multiplied by nine", "arithmetic", "9 × 9"},
    {"what can you do", "help"},
    {"what can i say", "help"},
    {"how can you help me", "help"},
    {"can you help me", "help"},
    {"hello there", "greeting"},
    {"good morning", "greeting"},
    {"thank you very much", "thanks"},
    {"thanks a lot", "thanks"},
    {"let's play a guessing game", "game", "I am thinking"},
    {"let's play a game", "game", "I am thinking"},
    {"i want to play a number guessing game", "game", "I am thinking"},
    {"start a guessing game", "game", "I am thinking"},
    {"fifty", "game", "My number is higher than 50", true},
    {"is it sixty four", "game", "My number is higher than 64", true},
    {"i guess ninety nine", "game", "My number is lower than 99", true},
    {"seventeen", "game", "My number is higher than 17", true},
    {"eighty eight", "game", "My number is lower than 88", true},
    {"how about seventy five", "game", "My number is higher than 75", true},
    {"stop the game", "game", "All right", true},
    {"i give up", "game", "All right", true},
};

constexpr Sentence kOutside[] = {
    {"turn on the lights in the kitchen", kUnknown},
    {"play some music by the beatles", kUnknown},
    {"how is the weather tomorrow", kUnknown},
    {"remind me to call my mother", kUnknown},
    {"the quick brown fox jumps over the lazy dog", kUnknown},
    {"who is the president of france", kUnknown},
    {"send a message to peter", kUnknown},
    {"how far is it to the moon", kUnknown},
    {"navigate to the nearest gas station", kUnknown},
    {"i would like to order a pizza", kUnknown},
    {"open the window please", kUnknown},
    {"where did i leave my keys", kUnknown},
    {"add milk and bread to the shopping list", kUnknown},
    {"tell me a joke about computers", kUnknown},
    {"what is the capital of australia", kUnknown},
    {"we should leave before it gets dark", kUnknown},
    {"wake me up in the morning", kUnknown},
    {"how old are you", kUnknown},
    {"read the news to me", kUnknown},
    {"that was not what i meant", kUnknown},
};

struct Voice {
  std::string name;
  std::function<Samples(const std::string &)> say;
};

Samples fromProgram(const std::string &command) {
  Samples samples;
  std::FILE *const pipe = ::popen(command.c_str(), "r");
  if (!pipe) return samples;
  std::array<std::int16_t, 4096> block{};
  while (const std::size_t count = std::fread(block.data(), sizeof block[0], block.size(), pipe)) {
    samples.insert(samples.end(), block.begin(), block.begin() + static_cast<std::ptrdiff_t>(count));
  }
  ::pclose(pipe);
  return samples;
}

std::vector<Voice> voices(bool espeak) {
  std::vector<Voice> all{
      {"slt", [](const std::string &text) { return tests::spoken(text, tests::Speaker::slt); }},
      {"awb", [](const std::string &text) { return tests::spoken(text, tests::Speaker::awb); }}};
  if (!espeak) return all;
  for (const std::string name : {"en-us", "en-us+f3", "en-gb", "en-gb-x-rp+f2", "en-gb-scotland"}) {
    all.push_back({name, [name](const std::string &text) {
                     return fromProgram(
                         "espeak-ng -s 150 -v " + name + " --stdout \"" + text +
                         "\" | sox -q -t wav - -r 16000 -c 1 -b 16 -e signed -t raw - vol 0.4");
                   }});
  }
  return all;
}

double milliseconds(Clock::duration time) { return std::chrono::duration<double, std::milli>(time).count(); }

double percentile(std::vector<double> values, double part) {
  if (values.empty()) return 0.0;
  std::sort(values.begin(), values.end());
  return values[static_cast<std::size_t>(part * static_cast<double>(values.size() - 1))];
}

/// The counts and times of one set of sentences under one condition.
struct Figures {
  int right = 0;
  int rejected = 0;
  int wrong = 0;
  int unheard = 0;
  std::vector<double> delays;        // ms from the last audible frame to the end of the utterance
  std::vector<double> decodeFactor;  // decoding time to duration
  std::vector<double> confidences;

  void print(const char *label) const {
    const int all = right + rejected + wrong + unheard;
    std::printf(
        "%-28s %3d/%3d right  %3d rejected  %3d wrong  %3d unheard   end %3.0f/%3.0f ms   decode %.3f/%.3f   "
        "confidence %.1f %.1f %.1f\n",
        label, right, all, rejected, wrong, unheard, percentile(delays, 0.5), percentile(delays, 0.95),
        percentile(decodeFactor, 0.5), percentile(decodeFactor, 0.95), percentile(confidences, 0.05),
        percentile(confidences, 0.5), percentile(confidences, 0.95));
  }
};

/// Where the spoken part ends: the last 10 ms frame within 40 dB of the loudest.
std::size_t lastAudible(const Samples &speech) {
  std::vector<double> levels;
  for (std::size_t at = 0; at + 160 <= speech.size(); at += 160) {
    levels.push_back(tests::levelOf(std::span(speech).subspan(at, 160)));
  }
  const double least = *std::max_element(levels.begin(), levels.end()) - 40.0;
  for (std::size_t frame = levels.size(); frame > 0; --frame) {
    if (levels[frame - 1] > least) return frame * 160;
  }
  return 0;
}

void ask(Recogniser &recogniser, const Dialogue &dialogue, const Sentence &sentence, const Voice &voice,
         double noise, bool verbose, Figures &figures) {
  const Samples speech = voice.say(sentence.words);
  const Samples lead = tests::silence(500);
  const std::size_t end = lead.size() + lastAudible(speech);
  Samples stream = tests::joined({lead, speech, tests::silence(2000)});
  if (noise > 0.0) {
    static unsigned seed = 0;
    stream = tests::mixed(stream, tests::pinkNoise(stream.size(), tests::levelOf(speech) - noise, ++seed));
  }

  EndOfUtterance detector;
  std::size_t fed = 0;
  while (fed + 160 <= stream.size() && !detector.hasEnded()) {
    detector.feed(std::span(stream).subspan(fed, 160));
    fed += 160;
  }
  if (detector.state() != EndOfUtterance::State::ended) {
    ++figures.unheard;
    std::printf("  unheard: %s by %s\n", sentence.words, voice.name.c_str());
    return;
  }
  figures.delays.push_back((static_cast<double>(fed) - static_cast<double>(end)) / 16.0);
  const auto [from, to] = detector.utterance();
  const auto utterance = std::span(stream).subspan(from, to - from);
  const auto start = Clock::now();
  const Recognition heard = recogniser.recognise(utterance);
  figures.decodeFactor.push_back(milliseconds(Clock::now() - start) /
                                 (static_cast<double>(utterance.size()) / 16.0));
  figures.confidences.push_back(heard.confidence);

  const std::string state = sentence.inGame ? R"({"game":{"secret":80,"tries":1,"silences":0}})" : "";
  const Reply reply =
      heard.confident ? dialogue.answer(heard.text, state) : dialogue.answerToUnclearSpeech(state);
  const bool understood = reply.skill == sentence.skill && reply.text.starts_with(sentence.answer);
  const bool refused = !heard.confident || reply.skill == kUnknown;
  int &count = understood ? figures.right : refused ? figures.rejected : figures.wrong;
  ++count;
  if (verbose || !understood) {
    std::printf("  %s %-8s %6.1f  \"%s\" by %s heard as \"%s\"\n",
                understood ? "right   "
                : refused  ? "rejected"
                           : "WRONG   ",
                reply.skill.c_str(), heard.confidence, sentence.words, voice.name.c_str(),
                heard.text.c_str());
  }
}

void measureAnswer() {
  std::vector<double> spoken;
  std::vector<double> encoded;
  for (int i = 0; i < 20; ++i) {
    const auto start = Clock::now();
    const auto samples = speak("I did not understand that. You can ask me: what can you do?");
    const auto between = Clock::now();
    Mp3Encoder encoder;
    const std::string mp3 = encoder.encode(samples) + encoder.finish();
    spoken.push_back(milliseconds(between - start));
    encoded.push_back(milliseconds(Clock::now() - between));
  }
  std::printf("an answer of thirteen words: voice %.1f ms, MP3 %.1f ms\n", percentile(spoken, 0.5),
              percentile(encoded, 0.5));
}

void measure(bool espeak, bool verbose) {
  const auto start = Clock::now();
  Recogniser recogniser;
  std::printf("recogniser made in %.0f ms\n", milliseconds(Clock::now() - start));
  const Dialogue dialogue;
  for (const double noise : {0.0, 20.0, 10.0}) {
    Figures inGrammar;
    Figures outside;
    for (const Voice &voice : voices(espeak)) {
      for (const Sentence &sentence : kInGrammar)
        ask(recogniser, dialogue, sentence, voice, noise, verbose, inGrammar);
      for (const Sentence &sentence : kOutside)
        ask(recogniser, dialogue, sentence, voice, noise, verbose, outside);
    }
    const std::string condition = noise == 0.0 ? "clean" : std::to_string(static_cast<int>(noise)) + " dB";
    inGrammar.print(("in the grammar, " + condition).c_str());
    outside.print(("outside, " + condition).c_str());
  }
  measureAnswer();
}

}  // namespace
}  // namespace velmora

int main(int argc, char **argv) {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  const auto given = [&](const char *name) {
    return std::find(arguments.begin(), arguments.end(), name) != arguments.end();
  };
  velmora::measure(given("espeak"), given("-v"));
}
