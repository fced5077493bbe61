// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "tools/ConverseTurn.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <array>
#include <thread>

#include "platform/audio/RawAudioStream.h"
#include "support/Responses.h"

namespace velmora {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using Clock = std::chrono::steady_clock;
using Outcome = Turn::Outcome;
using tests::endOfUtterance;
using tests::resultOf;

class Silence : public AudioSource {
 public:
  explicit Silence(std::size_t samples) : m_left(samples) {}
  AudioRead read(std::span<std::int16_t> frame) override {
    const std::size_t count = std::min(m_left, frame.size());
    m_left -= count;
    return {.samples = count, .ended = m_left == 0};
  }

 private:
  std::size_t m_left;
};

/// Does what the test says, on a thread of its own as the engine does.
class ScriptedEngine : public TurnEngine {
 public:
  void beginTurn(std::int32_t volumePercentage) override { volumes.push_back(volumePercentage); }
  void sendAudioFrame(const std::int16_t * /*samples*/, std::ptrdiff_t count) override {
    frames.push_back(count);
    sent.push_back(Clock::now());
    if (frames.size() == atFrame) m_thread = std::jthread(reaction);
  }
  void endAudio() override {
    ++ends;
    if (atFrame == 0) m_thread = std::jthread(reaction);
  }

  std::function<void()> reaction;
  std::size_t atFrame = 0;  // when it comes; 0: at the end of the audio
  std::vector<std::int32_t> volumes;
  std::vector<std::ptrdiff_t> frames;
  std::vector<Clock::time_point> sent;
  int ends = 0;

 private:
  std::jthread m_thread;
};

struct ConverseTurnTest : ::testing::Test {
  Turn run(AudioSource &&source, bool fast = true, std::chrono::milliseconds timeout = 30s) {
    ConverseTurn turn(engine, recorder, wake, [] { return false; }, {40, fast, timeout});
    return turn.run(source);
  }

  WakePipe wake;
  TurnRecorder recorder{wake};
  ScriptedEngine engine;
};

TEST_F(ConverseTurnTest, SendsTheWholeFileInTimeAndReportsWhatCame) {
  engine.reaction = [this] {
    recorder.responseReceived(endOfUtterance());
    recorder.stopListening();
    recorder.responseReceived(resultOf("a request", ""));
    recorder.responseReceived(tests::soundOf("AB"));
    recorder.responseReceived(resultOf("", "an answer", "", tests::Result::MicrophoneMode::dialogFollowOn));
    recorder.playResponse("AB");
    recorder.turnEnded({.statusCode = 0, .statusMessage = "OK"});
  };
  const Turn turn = run(Silence(3 * 1600 + 7), false);
  EXPECT_THAT(engine.volumes, ElementsAre(40));
  EXPECT_THAT(engine.frames, ElementsAre(1600, 1600, 1600, 7));
  for (std::size_t i = 1; i < 4; ++i) EXPECT_GE(engine.sent[i] - engine.sent[0], i * 100ms - 1ms);
  EXPECT_EQ(engine.ends, 1);
  EXPECT_EQ(turn.outcome, Outcome::answered);
  EXPECT_EQ(turn.request + "; " + turn.answer + "; " + turn.audio, "a request; an answer; AB");
  EXPECT_TRUE(turn.followOn);
  EXPECT_LE(0, turn.endOfUtterance);
  EXPECT_LE(turn.endOfUtterance, turn.firstAudio);
  EXPECT_LE(turn.firstAudio, turn.done);

  // The next turn begins with nothing of this one. A good end without an answer is no answer.
  engine.reaction = [this] {
    recorder.responseReceived(resultOf("", "", "", tests::Result::MicrophoneMode::dialogFollowOn));
    recorder.responseReceived(endOfUtterance());
    recorder.turnEnded({});
  };
  const Turn next = run(Silence(1));
  EXPECT_EQ(next.outcome, Outcome::unanswered);
  EXPECT_EQ(next.request + next.answer + next.audio, "");
  EXPECT_FALSE(next.followOn) << "the last response decides";
  EXPECT_FALSE(next.firstAudio);
}

TEST_F(ConverseTurnTest, TheServiceEndsTheAudioAndThenKeepsSilent) {
  engine.atFrame = 2;
  engine.reaction = [this] {
    recorder.responseReceived(resultOf("heard", ""));
    recorder.stopListening();
  };
  const Turn turn = run(Silence(1000 * 1600), false, 50ms);
  EXPECT_LT(engine.frames.size(), 900U);
  EXPECT_EQ(engine.ends, 1);
  EXPECT_EQ(turn.outcome, Outcome::timedOut);
  EXPECT_EQ(turn.request, "heard");
  EXPECT_GE(Clock::now() - engine.sent.back(), 50ms);
}

TEST_F(ConverseTurnTest, AnEarlyErrorIsReportedWhileTheAudioIsStillComing) {
  std::array<int, 2> ends{};
  ASSERT_EQ(::pipe(ends.data()), 0);
  const std::string frame(3200, 'a');
  ASSERT_EQ(::write(ends[1], frame.data(), frame.size()), 3200);  // and then nothing more comes
  engine.atFrame = 1;
  engine.reaction = [this] { recorder.turnEnded({.statusCode = 16, .statusMessage = "expired"}); };
  const Turn turn = run(RawAudioStream(ends[0], "standard input", wake.descriptor()));
  EXPECT_EQ(turn.outcome, Outcome::refused);
  EXPECT_EQ(turn.status, 16);
  EXPECT_EQ(turn.statusMessage, "expired");
  EXPECT_EQ(engine.ends, 0) << "there is nothing left to end";
  for (const int end : ends) ::close(end);
}

TEST_F(ConverseTurnTest, WithoutAudioNoCallIsOpened) {
  EXPECT_EQ(run(Silence(0)).outcome, Outcome::noAudio);
  EXPECT_TRUE(engine.volumes.empty());
}

}  // namespace
}  // namespace velmora
