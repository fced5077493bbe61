// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// How well and at what price "okay mac" is heard: said by 14 synthetic voices at three speeds
// (bench/hotword/speak), beside phrases that sound like it, and beside what else is said to an assistant
// (bench/understanding/speak).
#include <QCoreApplication>
#include <QPluginLoader>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "platform/speech/PhraseDecoder.h"
#include "platform/speech/ShortUtterance.h"
#include "support/Speech.h"

namespace velmora {
namespace {

using tests::Samples;

constexpr int kLead = 500;   // ms of the room before what is said
constexpr int kTrail = 700;  // and after it

struct Count {
  int said = 0, taken = 0;
  double audio = 0.0, cpu = 0.0;  // s
};

double cpuTime() {
  timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

Samples load(const std::filesystem::path &path) {
  std::ifstream file(path, std::ios::binary);
  const std::string bytes(std::istreambuf_iterator<char>(file), {});
  Samples samples(bytes.size() / sizeof(std::int16_t));
  std::copy_n(bytes.data(), samples.size() * sizeof(std::int16_t), reinterpret_cast<char *>(samples.data()));
  return samples;
}

/// One stream of audio, 100 ms at a time as from the microphone; whether anything in it was taken for the
/// phrase.
bool listen(PhraseDecoder &decoder, ShortUtterance &utterance, const Samples &stream, Count &count) {
  bool isTaken = false;
  const double before = cpuTime();
  for (std::size_t at = 0; at + 1600 <= stream.size(); at += 1600) {
    const auto found = utterance.feed(std::span(stream).subspan(at, 1600));
    if (found && decoder.decode(*found)) isTaken = true;
  }
  count.cpu += cpuTime() - before;
  count.audio += static_cast<double>(stream.size()) / 16000.0;
  return isTaken;
}

/// All recordings of a folder, in a room whose noise is so many dB below them.
void measure(PhraseDecoder &decoder, const char *what, const std::filesystem::path &folder,
             double signalToNoise) {
  Count count;
  ShortUtterance utterance;
  for (const auto &entry : std::filesystem::recursive_directory_iterator(folder)) {
    if (entry.path().extension() != ".raw") continue;
    const Samples speech = load(entry.path());
    if (speech.empty()) continue;
    Samples stream = tests::joined({tests::silence(kLead), speech, tests::silence(kTrail)});
    const std::size_t size = stream.size();
    const double noise = tests::levelOf(speech) - signalToNoise;
    stream =
        tests::mixed(std::move(stream), tests::pinkNoise(size, noise, static_cast<unsigned>(++count.said)));
    if (listen(decoder, utterance, stream, count)) ++count.taken;
  }
  std::printf("%-22s %2.0f dB  %4d of %4d taken for the phrase  %5.1f min  %5.2f %% CPU\n", what,
              signalToNoise, count.taken, count.said, count.audio / 60.0, 100.0 * count.cpu / count.audio);
  std::fflush(stdout);
}

void measureSilence(PhraseDecoder &decoder) {
  Count count;
  ShortUtterance utterance;
  (void)listen(decoder, utterance, tests::pinkNoise(120 * 16000, -55.0), count);
  std::printf("%-22s        %44.1f min  %5.2f %% CPU\n", "a quiet room", count.audio / 60.0,
              100.0 * count.cpu / count.audio);
}

int speak(const std::string &arguments) { return std::system(arguments.c_str()); }

int run() {
  const std::string folder = VELMORA_HOTWORD;
  int failed = speak("\"" VELMORA_SPEAK_PHRASE "\" \"" + folder + "/command\" \"okay mac\"") |
               speak("\"" VELMORA_SPEAK "\" \"" VELMORA_UTTERANCES "\"");
  for (const std::string phrase : {"okay max", "okay then", "hey mac", "play music", "go back"})
    failed |= speak("\"" VELMORA_SPEAK_PHRASE "\" \"" + folder + "/like/" + phrase + "\" \"" + phrase + "\"");
  QPluginLoader plugin(QStringLiteral(VELMORA_SPEECH_ENGINE));
  auto *const factory = qobject_cast<PhraseDecoderFactory *>(plugin.instance());
  if (failed != 0 || !factory) {
    std::fprintf(stderr, "bench_hotword: there is nothing to listen to or with\n");
    return 1;
  }
  const auto decoder = factory->make({"okay mac"});
  measureSilence(*decoder);
  for (const double signalToNoise : {40.0, 20.0}) {
    measure(*decoder, "okay mac", folder + "/command", signalToNoise);
    for (const auto &entry : std::filesystem::directory_iterator(folder + "/like"))
      measure(*decoder, entry.path().filename().c_str(), entry.path(), signalToNoise);
    measure(*decoder, "other speech", VELMORA_UTTERANCES, signalToNoise);
  }
  return 0;
}

}  // namespace
}  // namespace velmora

int main(int argc, char **argv) {
  const QCoreApplication application(argc, argv);
  return velmora::run();
}
