// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/hearing/EndOfUtterance.h"

#include <gmock/gmock.h>

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
Outcome listen(const Samples &stream, std::size_t piece = 160) {
  EndOfUtterance detector;
  std::size_t fed = 0;
  while (fed < stream.size() && !detector.hasEnded()) {
    const std::size_t count = std::min(piece, stream.size() - fed);
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

Samples room(std::size_t count, double level = -65.0) { return pinkNoise(count, level, 3); }

Samples click() {
  Samples samples(320);
  for (std::size_t i = 0; i < 120; ++i) samples[i] = i % 2 == 0 ? 20000 : -20000;
  return samples;
}

/// `samples` with clicks at these milliseconds.
Samples clicked(Samples samples, const std::vector<std::size_t> &times) {
  const Samples one = click();
  for (const std::size_t time : times)
    std::copy(one.begin(), one.end(), samples.begin() + static_cast<std::ptrdiff_t>(time * kMillisecond));
  return samples;
}

TEST(EndOfUtterance, NothingButSpeechBeginsARequest) {
  std::vector<std::size_t> keys;
  for (std::size_t time = 0; time < 8000; time += 150) keys.push_back(time);
  const struct {
    const char *what;
    Samples stream;
  } cases[] = {{"digital silence", silence(9000)},
               {"loud noise", pinkNoise(9 * kSecond, -20.0)},
               {"a microphone that starts late", joined({silence(700), pinkNoise(9 * kSecond, -45.0)})},
               {"a microphone that is muted", joined({pinkNoise(kSecond, -45.0), silence(8500)})},
               {"typing", clicked(room(9 * kSecond), keys)},
               {"clicks in digital silence", clicked(silence(9000), {1000, 1320})}};
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
    double noise;  ///< dB under the speech; 0: none at all
  } cases[] = {{"at the first sample, clean", {}, 0.0},
               {"at the first sample, 10 dB", {}, 10.0},
               {"after 3 s of nothing, 20 dB", silence(3000), 20.0},
               {"after 6 s of nothing, 10 dB", silence(6000), 10.0},
               {"after a click", clicked(silence(2000), {500}), 30.0}};
  for (const auto &c : cases) {
    for (const Speaker speaker : {Speaker::slt, Speaker::awb}) {
      // Words without a pause in them, which might pass for the noise of the room.
      const Samples speech = trimmed(spoken("what is nine multiplied by nine", speaker));
      Samples stream = joined({c.before, speech, silence(3000)});
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

TEST(EndOfUtterance, APauseEndsIfItIsLongWhateverClicksInIt) {
  const Samples begin = trimmed(spoken("what is", Speaker::slt));
  const Samples end = trimmed(spoken("seven plus five", Speaker::slt));
  const struct {
    Samples pause;
    bool goesOn;
  } cases[] = {
      {silence(600), true}, {silence(1000), false}, {clicked(silence(3000), {300, 550, 700}), false}};
  for (const auto &c : cases) {
    const Samples stream = joined({silence(1000), begin, c.pause, end, silence(2000)});
    const Outcome outcome = listen(mixed(stream, room(stream.size())));
    EXPECT_EQ(outcome.state, State::ended);
    const std::size_t pause = kSecond + begin.size();
    if (c.goesOn) {
      EXPECT_GT(outcome.utterance.end, pause + c.pause.size() + end.size());
    } else {
      EXPECT_LT(outcome.fed, pause + kSecond);
    }
  }
}

TEST(EndOfUtterance, NobodySpeaksForEver) {
  Samples talk = room(kSecond);
  while (talk.size() < 25 * kSecond) talk = joined({talk, question()});
  talk = mixed(talk, room(talk.size()));
  const Outcome outcome = listen(talk);
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
  } cases[] = {{"nothing", {}, State::nothingSaid},
               {"less than a frame", Samples(100, 9000), State::nothingSaid},
               {"silence", silence(500), State::nothingSaid},
               {"noise", pinkNoise(kSecond, -30.0), State::nothingSaid},
               {"a whole request", whole, State::ended},
               {"half a request", Samples(whole.begin(), whole.begin() + 12007), State::ended}};
  for (const auto &c : cases) {
    EndOfUtterance detector;
    detector.feed(c.stream);
    EXPECT_EQ(detector.finish(), c.state) << c.what;
    EXPECT_EQ(detector.finish(), c.state) << c.what;
    EXPECT_LE(detector.utterance().end, c.stream.size()) << c.what;
    const EndOfUtterance::Range before = detector.utterance();
    EXPECT_EQ(detector.feed(whole), c.state) << c.what;
    EXPECT_EQ(detector.utterance(), before) << c.what;
  }
}

TEST(EndOfUtterance, PiecesMakeNoDifference) {
  Samples stream = joined({silence(333), question(), silence(2000)});
  stream = mixed(stream, pinkNoise(stream.size(), -45.0));
  const Outcome expected = listen(stream);
  ASSERT_EQ(expected.state, State::ended);
  for (const std::size_t piece : {1U, 7U, 159U, 160U, 161U, 441U, 1024U, 1600U, 4096U}) {
    const Outcome outcome = listen(stream, piece);
    EXPECT_EQ(outcome.state, expected.state) << piece;
    EXPECT_EQ(outcome.utterance, expected.utterance) << piece;
    EXPECT_LT(outcome.fed, expected.fed + piece) << piece;
  }
}

}  // namespace
}  // namespace velmora
