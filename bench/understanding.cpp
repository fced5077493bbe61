// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// How well and how fast the local assistant understands: what bench/understanding/speak has said by synthetic
// voices goes, with and without noise, through the end of utterance, the recogniser and the dialogue.
//
//   bench_understanding           everything, for both halves of the sentences and voices
//   bench_understanding --tuned   only the half to tune by, and nothing in real time
//   bench_understanding --unseen  only the other half
//   bench_understanding --times   only memory, and the times of a few utterances in real time: a minute
//   bench_understanding --list    also what was misunderstood of the half to tune by
//
// The other half says how well it works for what nobody has tuned it by. Therefore only its counts are
// printed: who changes phrases or thresholds looks at no sentence of it.
#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "assistant/dialogue/Dialogue.h"
#include "assistant/dialogue/SystemServices.h"
#include "assistant/hearing/Listener.h"
#include "assistant/speech/Mp3Encoder.h"
#include "assistant/speech/SpeechStream.h"
#include "assistant/speech/Voice.h"
#include "foundation/Heaps.h"
#include "support/Speech.h"

namespace velmora {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;
using tests::Samples;

constexpr auto kNone = "none";        ///< the skill of what nobody can answer
constexpr auto kRefusal = "beyond";   ///< the skill that says so
constexpr std::size_t kFrame = 1600;  // samples: clients send 100 ms at a time
constexpr milliseconds kFrameTime{100};
constexpr int kLead = 400;                   // ms of the room before the speech
constexpr int kTail = 1500;                  // and after it
constexpr double kQuietRoom = 50.0;          // dB under the speech: a microphone is never silent
constexpr std::size_t kRealTimeOfHalf = 20;  // utterances of each half that are said in real time

struct Condition {
  const char *name;
  double signalToNoise;  // dB
};
constexpr std::array<Condition, 3> kConditions{{{"clean", kQuietRoom}, {"20 dB", 20.0}, {"10 dB", 10.0}}};

struct Utterance {
  std::string half, skill, voice, speed, file, sentence;
  [[nodiscard]] bool isMeant() const { return skill != kNone; }
};

std::vector<Utterance> utterances() {
  if (std::system("\"" VELMORA_SPEAK "\" \"" VELMORA_UTTERANCES "\"") != 0)
    throw std::runtime_error("there is nothing to listen to");
  std::vector<std::string> skills{kNone};
  for (const SkillTable &table : skillTables())
    for (const Skill &skill : table.skills) skills.push_back(skill.name);

  std::vector<Utterance> all;
  std::ifstream file(VELMORA_UTTERANCES "/utterances.tsv");
  for (std::string line; std::getline(file, line);) {
    std::istringstream fields(line);
    Utterance one;
    for (std::string *field : {&one.half, &one.skill, &one.voice, &one.speed, &one.file, &one.sentence})
      std::getline(fields, *field, '\t');
    if (std::find(skills.begin(), skills.end(), one.skill) == skills.end())
      throw std::runtime_error("there is no skill \"" + one.skill + "\"");
    all.push_back(std::move(one));
  }
  return all;
}

/// An utterance in its room.
struct Sound {
  Samples samples;
  std::size_t end = 0;  ///< of the speech
};

/// Where the spoken part ends: the last 10 ms frame within 40 dB of the loudest.
std::size_t lastAudible(const Samples &speech) {
  std::vector<double> levels;
  for (std::size_t at = 0; at + 160 <= speech.size(); at += 160)
    levels.push_back(tests::levelOf(std::span(speech).subspan(at, 160)));
  if (levels.empty()) return 0;
  const double least = *std::max_element(levels.begin(), levels.end()) - 40.0;
  const auto last = std::find_if(levels.rbegin(), levels.rend(), [=](double level) { return level > least; });
  return static_cast<std::size_t>(levels.rend() - last) * 160;
}

/// `number` chooses the noise.
Sound soundOf(const Utterance &utterance, double signalToNoise, std::size_t number) {
  std::ifstream file(VELMORA_UTTERANCES "/" + utterance.file, std::ios::binary);
  const std::string bytes(std::istreambuf_iterator<char>(file), {});
  Samples speech(bytes.size() / sizeof(std::int16_t));
  std::copy_n(bytes.data(), speech.size() * sizeof(std::int16_t), reinterpret_cast<char *>(speech.data()));
  speech.resize(lastAudible(speech));
  if (speech.empty()) throw std::runtime_error(utterance.file + " holds no speech");
  const double noise = tests::levelOf(speech) - signalToNoise;
  const std::size_t end = static_cast<std::size_t>(kLead) * 16 + speech.size();
  Samples all = tests::joined({tests::silence(kLead), speech, tests::silence(kTail)});
  const std::size_t size = all.size();
  return {tests::mixed(std::move(all), tests::pinkNoise(size, noise, static_cast<unsigned>(number + 1))),
          end};
}

/// What became of an utterance.
struct Hearing {
  std::optional<Recognition> heard = {};
  std::string matched = kNone;  ///< the skill that the words belong to, however doubtful they are
  double delay = 0.0;   ///< ms from the last of the speech to the end of the utterance; less than 0: cut off
  bool hasEnd = false;  ///< before the stream's

  [[nodiscard]] std::string skill() const { return heard && heard->confident ? matched : kNone; }
};

/// As fast as the recogniser lets it, but what is recognised in a pause takes its time: the pause goes on
/// meanwhile.
Hearing hear(RecogniserPool &recognisers, const Sound &sound) {
  const Language &language = Language::instance();
  Listener listener(recognisers, language, {});
  std::size_t fed = 0;
  while (!listener.hasEnded() && fed < sound.samples.size()) {
    const std::size_t count = std::min(kFrame, sound.samples.size() - fed);
    listener.feed(std::span(sound.samples).subspan(fed, count));
    fed += count;
    if (!listener.hasEnded()) listener.wait(kFrameTime);
  }
  Hearing hearing;
  hearing.hasEnd = listener.hasEnded();
  hearing.delay = (static_cast<double>(fed) - static_cast<double>(sound.end)) / 16.0;
  listener.finish();
  hearing.heard = listener.result();
  if (hearing.heard) {
    if (const auto match = language.commands().match(hearing.heard->text))
      hearing.matched = language.skill(match->intent).name;
    if (hearing.matched == kRefusal) hearing.matched = kNone;
  }
  return hearing;
}

double millisecondsOf(Clock::duration time) {
  return std::chrono::duration<double, std::milli>(time).count();
}

double percentile(std::vector<double> values, double part) {
  if (values.empty()) return 0.0;
  std::sort(values.begin(), values.end());
  return values[static_cast<std::size_t>(part * static_cast<double>(values.size() - 1) + 0.5)];
}

double percent(int part, int whole) { return whole == 0 ? 0.0 : 100.0 * part / whole; }

/// One half under one condition.
struct Figures {
  int meant = 0, right = 0, refused = 0, wrong = 0;
  int notMeant = 0, answered = 0;
  int cutOff = 0, endless = 0;
  std::vector<double> delays;

  void add(const Utterance &utterance, const Hearing &hearing) {
    const std::string skill = hearing.skill();
    if (utterance.isMeant()) {
      ++meant;
      ++(skill == utterance.skill ? right : skill == kNone ? refused : wrong);
    } else {
      ++notMeant;
      if (skill != kNone) ++answered;
    }
    if (!hearing.hasEnd) {
      ++endless;
    } else if (hearing.delay < 0.0) {
      ++cutOff;
    } else {
      delays.push_back(hearing.delay);
    }
  }

  void print(const std::string &half, const char *condition) const {
    std::printf(
        "%-7s %-6s %3d/%3d %5.1f %%  %6.1f %%  %5.1f %%   %3d/%3d %5.1f %%   %4.0f / %4.0f ms  %3d  %3d\n",
        half.c_str(), condition, right, meant, percent(right, meant), percent(refused, meant),
        percent(wrong, meant), answered, notMeant, percent(answered, notMeant), percentile(delays, 0.5),
        percentile(delays, 0.95), cutOff, endless);
  }
};

using Hearings = std::array<std::vector<Hearing>, kConditions.size()>;

/// Every utterance under every condition, by as many threads as the machine runs at once.
Hearings hearAll(RecogniserPool &recognisers, const std::vector<Utterance> &all) {
  Hearings hearings;
  for (auto &part : hearings) part.resize(all.size());
  std::atomic<std::size_t> next = 0;
  const auto work = [&] {
    for (std::size_t job = next++; job < all.size() * kConditions.size(); job = next++) {
      const std::size_t condition = job % kConditions.size();
      const std::size_t number = job / kConditions.size();
      hearings[condition][number] =
          hear(recognisers, soundOf(all[number], kConditions[condition].signalToNoise, number));
    }
  };
  std::vector<std::jthread> workers;
  for (unsigned i = std::max(1U, std::thread::hardware_concurrency()); i > 1; --i) workers.emplace_back(work);
  work();
  return hearings;
}

/// Of recorded people and of formant synthesisers apart, so that neither hides behind the other.
void printKinds(const std::vector<Utterance> &all, const Hearings &hearings) {
  std::printf("\nintent right by kind of voice %9s", "");
  for (const Condition &condition : kConditions) std::printf("  %-8s", condition.name);
  std::printf("\n");
  for (const std::string half : {"tuned", "unseen"}) {
    for (const bool formant : {false, true}) {
      std::array<int, kConditions.size()> right{};
      int meant = 0;
      for (std::size_t i = 0; i < all.size(); ++i) {
        if (all[i].half != half || !all[i].isMeant() || all[i].voice.starts_with("espeak") != formant)
          continue;
        ++meant;
        for (std::size_t condition = 0; condition < kConditions.size(); ++condition)
          right[condition] += hearings[condition][i].skill() == all[i].skill ? 1 : 0;
      }
      if (meant == 0) continue;
      std::printf("%-7s %-9s %4d utterances      ", half.c_str(), formant ? "formant" : "recorded", meant);
      for (const int count : right) std::printf("  %5.1f %%", percent(count, meant));
      std::printf("\n");
    }
  }
}

void printAccuracy(const std::vector<Utterance> &all, const Hearings &hearings) {
  std::printf("\n%-14s %-17s %-9s %-9s %-17s %-17s %-4s %s\n", "", "intent right", "refused", "wrong",
              "answered of none", "end after speech", "cut", "no end");
  for (const std::string half : {"tuned", "unseen"}) {
    for (std::size_t condition = 0; condition < kConditions.size(); ++condition) {
      Figures figures;
      for (std::size_t i = 0; i < all.size(); ++i)
        if (all[i].half == half) figures.add(all[i], hearings[condition][i]);
      if (figures.meant > 0) figures.print(half, kConditions[condition].name);
    }
  }
}

void listMisunderstood(const std::vector<Utterance> &all, const Hearings &hearings) {
  std::printf("\nmisunderstood of the tuned half\n");
  for (std::size_t condition = 0; condition < kConditions.size(); ++condition) {
    for (std::size_t i = 0; i < all.size(); ++i) {
      const Hearing &hearing = hearings[condition][i];
      const std::string skill = hearing.skill();
      if (all[i].half != "tuned" || skill == all[i].skill) continue;
      std::printf("  %s  %-8s %-22s \"%s\" by %s at %s heard as \"%s\" (%s)\n", kConditions[condition].name,
                  skill == kNone      ? "refused"
                  : !all[i].isMeant() ? "answered"
                                      : "WRONG",
                  all[i].skill.c_str(), all[i].sentence.c_str(), all[i].voice.c_str(), all[i].speed.c_str(),
                  hearing.heard ? hearing.heard->text.c_str() : "", hearing.matched.c_str());
    }
  }
}

/// The times of one turn, in ms after the last of the speech.
struct Turn {
  double end = 0.0;
  double firstByte = 0.0;
  double decodeFactor = 0.0;  ///< decoding time to duration
};

/// A turn as a client in real time sees it, without the network.
Turn converse(RecogniserPool &recognisers, const Dialogue &dialogue, const Sound &sound) {
  Listener listener(recognisers, Language::instance(), {});
  const auto start = Clock::now();
  for (std::size_t fed = 0; !listener.hasEnded() && fed + kFrame <= sound.samples.size(); fed += kFrame) {
    std::this_thread::sleep_until(start + kFrameTime * (fed / kFrame + 1));
    listener.feed(std::span(sound.samples).subspan(fed, kFrame));
  }
  listener.finish();
  const auto lastSpoken = start + std::chrono::microseconds(sound.end * 125 / 2);
  Turn turn{.end = millisecondsOf(Clock::now() - lastSpoken)};
  const auto heard = listener.result();
  const Reply reply = !heard             ? dialogue.answerToSilence({})
                      : heard->confident ? dialogue.answer(heard->text, {})
                                         : dialogue.answerToUnclearSpeech({});
  bool isFirst = true;
  streamSpeech(reply.speech, 100, SpeechEncoding::mp3, [&](const std::string &) {
    if (std::exchange(isFirst, false)) turn.firstByte = millisecondsOf(Clock::now() - lastSpoken);
  });
  const auto utterance = listener.utterance();
  if (!utterance.empty()) {
    const auto before = Clock::now();
    static_cast<void>(recognisers.recognise(utterance));
    turn.decodeFactor =
        millisecondsOf(Clock::now() - before) / (static_cast<double>(utterance.size()) / 16.0);
  }
  return turn;
}

void measureRealTime(RecogniserPool &recognisers, const Dialogue &dialogue,
                     const std::vector<Utterance> &all) {
  std::printf("\nin real time at 20 dB, median / p95\n");
  for (const std::string half : {"tuned", "unseen"}) {
    std::vector<std::size_t> chosen;
    for (std::size_t i = 0; i < all.size(); ++i)
      if (all[i].half == half && all[i].isMeant()) chosen.push_back(i);
    if (chosen.empty()) continue;
    std::vector<double> end, firstByte, decoding;
    for (std::size_t i = 0; i < kRealTimeOfHalf; ++i) {
      const std::size_t number = chosen[i * chosen.size() / kRealTimeOfHalf];
      const Turn turn = converse(recognisers, dialogue, soundOf(all[number], 20.0, number));
      end.push_back(turn.end);
      firstByte.push_back(turn.firstByte);
      decoding.push_back(turn.decodeFactor);
    }
    std::printf(
        "%-7s end of utterance %4.0f / %4.0f ms   first answer byte %4.0f / %4.0f ms   "
        "decoding takes %.3f / %.3f of the duration\n",
        half.c_str(), percentile(end, 0.5), percentile(end, 0.95), percentile(firstByte, 0.5),
        percentile(firstByte, 0.95), percentile(decoding, 0.5), percentile(decoding, 0.95));
  }
}

/// "VmRSS" or another line of the kernel's account of this process, in MB.
double memory(const std::string &what) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with(what + ":")) return std::stod(line.substr(what.size() + 1)) / 1024.0;
  }
  return 0.0;
}

/// Before anything else takes memory.
void measureMemory(RecogniserPool &recognisers, const Dialogue &dialogue, const std::vector<Utterance> &all) {
  const double before = memory("VmRSS");
  {
    std::vector<std::jthread> streams;
    for (std::size_t i = 0; i < 4; ++i)
      streams.emplace_back([&, i] { converse(recognisers, dialogue, soundOf(all[2 * i], 20.0, i)); });
  }
  std::printf(
      "memory of the whole program: %.0f MB at start, %.0f MB after four streams at once, %.0f MB at most\n",
      before, memory("VmRSS"), memory("VmHWM"));
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
    spoken.push_back(millisecondsOf(between - start));
    encoded.push_back(millisecondsOf(Clock::now() - between));
  }
  std::printf("an answer of thirteen words: voice %.1f ms, MP3 %.1f ms\n", percentile(spoken, 0.5),
              percentile(encoded, 0.5));
}

/// What is asked for on the command line.
struct Wanted {
  std::string half = {};  ///< both, if empty
  bool onlyTimes = false;
  bool list = false;
};

void measure(const Wanted &wanted) {
  std::vector<Utterance> all = utterances();
  if (!wanted.half.empty()) std::erase_if(all, [&](const Utterance &one) { return one.half != wanted.half; });
  std::printf("%zu utterances, each under %zu conditions\n", all.size(), kConditions.size());

  SystemServices services(std::nullopt);
  const Dialogue dialogue(services.services(), services.seal());
  RecogniserPool recognisers;
  const auto start = Clock::now();
  recognisers.prepare();
  std::printf("first recogniser ready after %.0f ms\n", millisecondsOf(Clock::now() - start));
  measureMemory(recognisers, dialogue, all);
  measureAnswer();
  std::fflush(stdout);

  if (!wanted.onlyTimes) {
    const Hearings hearings = hearAll(recognisers, all);
    printAccuracy(all, hearings);
    printKinds(all, hearings);
    if (wanted.list) listMisunderstood(all, hearings);
    std::fflush(stdout);
  }
  if (wanted.half != "tuned") measureRealTime(recognisers, dialogue, all);
}

}  // namespace
}  // namespace velmora

int main(int argc, char **argv) {
  velmora::Wanted wanted;
  for (const std::string &argument : std::vector<std::string>(argv + 1, argv + argc)) {
    if (argument == "--tuned" || argument == "--unseen") {
      wanted.half = argument.substr(2);
    } else if (argument == "--times") {
      wanted.onlyTimes = true;
    } else if (argument == "--list") {
      wanted.list = true;
    } else if (!argument.starts_with("--benchmark_")) {  // scripts/bench gives those to every program
      std::fprintf(stderr, "usage: bench_understanding [--tuned | --unseen] [--times] [--list]\n");
      return 2;
    }
  }
  velmora::shareHeaps();  // as velmora-assistant does
  try {
    velmora::measure(wanted);
  } catch (const std::exception &error) {
    std::fprintf(stderr, "bench_understanding: %s\n", error.what());
    return 1;
  }
}
