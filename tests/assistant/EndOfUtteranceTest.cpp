// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/hearing/EndOfUtterance.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/Speech.h"

namespace velmora {
namespace {

using State = EndOfUtterance::State;
using tests::joined;
using tests::mixed;
using tests::pinkNoise;
using tests::Samples;
using tests::silence;
using tests::Speaker;
using tests::spoken;
using tests::trimmed;

constexpr std::size_t kMillisecond = 16;
constexpr std::size_t kSecond = 16000;

struct Outcome {
  State state;
  EndOfUtterance::Range utterance;
  std::size_t fed;  ///< up to the piece after which the state was decided; counted in samples
};

/// Feeds `stream` as a microphone does, in pieces, until the end is found or the stream is over.
Outcome listen(const Samples &stream) {
  constexpr std::size_t kPiece = 320;
  EndOfUtterance detector;
  std::size_t fed = 0;
  while (fed < stream.size() && !detector.hasEnded()) {
    const std::size_t count = std::min(kPiece, stream.size() - fed);
    detector.feed(std::span(stream).subspan(fed, count));
    fed += count;
  }
  const State state = detector.state();
  if (!detector.hasEnded()) detector.finish();
  EXPECT_LE(detector.utterance().begin, detector.utterance().end);
  EXPECT_LE(detector.utterance().end, fed);
  return {state, detector.utterance(), fed};
}

const Samples &question() {
  static const Samples speech = spoken("what is seven plus five", Speaker::awb);
  return speech;
}

/// `samples` with clicks at these milliseconds.
Samples clicked(Samples samples, const std::vector<std::size_t> &times) {
  for (const std::size_t time : times)
    for (std::size_t i = 0; i < 120; ++i) samples[time * kMillisecond + i] = i % 2 == 0 ? 20000 : -20000;
  return samples;
}

TEST(EndOfUtterance, NothingButSpeechBeginsARequest) {
  std::vector<std::size_t> keys;
  for (std::size_t time = 0; time < 8000; time += 150) keys.push_back(time);
  const struct {
    const char *what;
    Samples stream;
  } cases[] = {{"loud noise", pinkNoise(9 * kSecond, -20.0)},
               {"a microphone that starts late", joined({silence(700), pinkNoise(9 * kSecond, -45.0)})},
               {"a microphone that is muted", joined({pinkNoise(kSecond, -45.0), silence(8500)})},
               {"typing", clicked(pinkNoise(9 * kSecond, -65.0), keys)}};
  for (const auto &c : cases) {
    const Outcome outcome = listen(c.stream);
    EXPECT_EQ(outcome.state, State::nothingSaid) << c.what;
    EXPECT_EQ(outcome.fed, 8 * kSecond) << c.what;
    EXPECT_EQ(outcome.utterance, EndOfUtterance::Range()) << c.what;
  }
}

TEST(EndOfUtterance, FindsARequestWhereverItBegins) {
  const struct {
    const char *what;
    Samples before;
    Samples after;
    double noise;  ///< dB under the speech; 0: none at all
  } cases[] = {
      {"at the first sample, clean", {}, silence(3000), 0.0},
      {"at the first sample, 10 dB", {}, silence(3000), 10.0},
      {"after 6 s of nothing, 10 dB", silence(6000), silence(3000), 10.0},
      {"among clicks", clicked(silence(2000), {500}), clicked(silence(3000), {300, 550, 700}), 30.0}};
  for (const auto &c : cases) {
    for (const Speaker speaker : {Speaker::slt, Speaker::awb}) {
      // Words without a pause in them, which might pass for the noise of the room.
      const Samples speech = trimmed(spoken("what is nine multiplied by nine", speaker));
      Samples stream = joined({c.before, speech, c.after});
      if (c.noise > 0.0) stream = mixed(stream, pinkNoise(stream.size(), tests::levelOf(speech) - c.noise));
      const Outcome outcome = listen(stream);
      ASSERT_EQ(outcome.state, State::ended) << c.what;
      const std::size_t begin = c.before.size();
      const std::size_t end = begin + speech.size();
      EXPECT_LE(outcome.utterance.begin, begin + 50 * kMillisecond) << c.what;
      EXPECT_GE(outcome.utterance.begin + 350 * kMillisecond, begin) << c.what;
      EXPECT_GE(outcome.utterance.end, end) << c.what;
      EXPECT_LE(outcome.utterance.end, end + 400 * kMillisecond) << c.what;
      EXPECT_LE(outcome.fed, end + 850 * kMillisecond) << c.what;
    }
  }
}

TEST(EndOfUtterance, NobodySpeaksForEver) {
  Samples talk = pinkNoise(kSecond, -65.0);
  while (talk.size() < 25 * kSecond) talk = joined({talk, question()});
  const Outcome outcome = listen(mixed(talk, pinkNoise(talk.size(), -65.0)));
  EXPECT_EQ(outcome.state, State::ended);
  const double seconds = static_cast<double>(outcome.utterance.end - outcome.utterance.begin) / kSecond;
  EXPECT_GE(seconds, 20.0);
  EXPECT_LE(seconds, 20.3);
}

TEST(EndOfUtterance, TheEndOfTheStreamIsTheEndOfTheRequest) {
  const Samples whole = joined({silence(200), question()});
  const struct {
    const char *what;
    Samples stream;
    State state;
  } cases[] = {{"less than a frame", Samples(100, 9000), State::nothingSaid},
               {"half a request", Samples(whole.begin(), whole.begin() + 12007), State::ended}};
  for (const auto &c : cases) {
    EndOfUtterance detector;
    detector.feed(c.stream);
    EXPECT_EQ(detector.finish(), c.state) << c.what;
    EXPECT_EQ(detector.feed(whole), c.state) << c.what;
    EXPECT_LE(detector.utterance().end, c.stream.size()) << c.what;
  }
}

}  // namespace
}  // namespace velmora
