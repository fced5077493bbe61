// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "tools/ConverseTurn.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <thread>

#include "platform/audio/RawAudioStream.h"

namespace velmora {
namespace {

using namespace std::chrono_literals;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::Ge;
using Clock = std::chrono::steady_clock;
using Outcome = Turn::Outcome;
using Response = Google_Assistant_Embedded_V1alpha1_ConverseResponse;
using Result = Google_Assistant_Embedded_V1alpha1_ConverseResult;

Response resultOf(std::string request, std::string answer, bool followOn = false) {
  Result result;
  result.setSpokenRequestText(std::move(request));
  result.setSpokenResponseText(std::move(answer));
  if (followOn) result.setMicrophoneMode(Result::MicrophoneMode::dialogFollowOn);
  Response response;
  response.setResult(std::move(result));
  return response;
}

Response sound(std::string bytes) {
  Google_Assistant_Embedded_V1alpha1_AudioOut audio;
  audio.setAudioData(std::move(bytes));
  Response response;
  response.setAudioOut(std::move(audio));
  return response;
}

Response endOfUtterance() {
  Response response;
  response.setEventType(Response::EventType::endOfUtterance);
  return response;
}

class Samples : public AudioSource {
 public:
  explicit Samples(std::size_t count, bool damaged = false) : m_left(count), m_damaged(damaged) {}
  AudioRead read(std::span<std::int16_t> frame) override {
    if (m_damaged && m_left < frame.size()) throw AudioError("a.wav: is damaged");
    const std::size_t count = std::min(m_left, frame.size());
    m_left -= count;
    return {.samples = count, .ended = m_left == 0};
  }

 private:
  std::size_t m_left;
  bool m_damaged;
};

/// Does what the test says when it is called, on a thread of its own as the engine does.
class ScriptedEngine : public TurnEngine {
 public:
  ~ScriptedEngine() override { join(); }

  void beginTurn(std::int32_t volumePercentage) override { volumes.push_back(volumePercentage); }
  void sendAudioFrame(const std::int16_t * /*samples*/, std::ptrdiff_t count) override {
    frames.push_back(count);
    sent.push_back(Clock::now());
    if (frames.size() == atFrame) react();
  }
  void endAudio() override {
    ++ends;
    if (atFrame == 0) react();
  }

  std::size_t atFrame = 0;  // 0: at the end of the audio
  bool waitForReaction = true;
  std::function<void()> reaction;

  std::vector<std::int32_t> volumes;
  std::vector<std::ptrdiff_t> frames;
  std::vector<Clock::time_point> sent;
  int ends = 0;

 private:
  void react() {
    join();
    m_thread = std::thread(reaction);
    if (waitForReaction) join();
  }
  void join() {
    if (m_thread.joinable()) m_thread.join();
  }

  std::thread m_thread;
};

class ConverseTurnTest : public ::testing::Test {
 protected:
  Turn run(AudioSource &&source,
           ConverseTurn::Settings settings = {.volume = 40, .fast = true, .timeout = 10s}) {
    ConverseTurn turn(
        m_engine, m_recorder, m_wake, [this] { return m_interrupted.load(); }, settings);
    return turn.run(source);
  }

  WakePipe m_wake;
  TurnRecorder m_recorder{m_wake};
  std::atomic<bool> m_interrupted = false;
  ScriptedEngine m_engine;
};

TEST_F(ConverseTurnTest, SendsTheWholeFileAndReportsWhatCame) {
  m_engine.waitForReaction = false;
  m_engine.reaction = [this] {
    m_recorder.responseReceived(endOfUtterance());
    m_recorder.stopListening();
    m_recorder.responseReceived(resultOf("a request", ""));
    m_recorder.responseReceived(sound("AB"));
    m_recorder.responseReceived(sound("CD"));
    m_recorder.responseReceived(resultOf("", "an answer", true));
    m_recorder.playResponse("ABCD");
    m_recorder.turnEnded({.statusCode = 0, .statusMessage = "OK"});
  };
  const Turn turn = run(Samples(3 * 1600 + 7));
  EXPECT_THAT(m_engine.volumes, ElementsAre(40));
  EXPECT_THAT(m_engine.frames, ElementsAre(1600, 1600, 1600, 7));
  EXPECT_EQ(m_engine.ends, 1);
  EXPECT_EQ(turn.outcome, Outcome::answered);
  EXPECT_EQ(turn.request, "a request");
  EXPECT_EQ(turn.answer, "an answer");
  EXPECT_EQ(turn.audio, "ABCD");
  EXPECT_TRUE(turn.followOn);
  EXPECT_EQ(turn.status, 0);
  EXPECT_LE(0, turn.endOfUtterance);
  EXPECT_LE(turn.endOfUtterance, turn.firstAudio);
  EXPECT_LE(turn.firstAudio, turn.done);

  // The next turn begins with nothing of this one.
  m_engine.reaction = [this] {
    m_recorder.responseReceived(resultOf("", "again", true));
    m_recorder.responseReceived(endOfUtterance());
    m_recorder.turnEnded({});
  };
  const Turn next = run(Samples(1));
  EXPECT_EQ(next.request, "");
  EXPECT_EQ(next.answer, "again");
  EXPECT_EQ(next.audio, "");
  EXPECT_FALSE(next.followOn) << "the last response decides";
  EXPECT_FALSE(next.firstAudio);
}

TEST_F(ConverseTurnTest, TheServiceEndsTheAudio) {
  m_engine.atFrame = 2;
  m_engine.reaction = [this] {
    m_recorder.responseReceived(endOfUtterance());
    m_recorder.stopListening();
  };
  const Turn turn = run(Samples(100 * 1600), {.volume = 100, .fast = true, .timeout = 1ms});
  EXPECT_EQ(m_engine.frames.size(), 2U);
  EXPECT_EQ(m_engine.ends, 1);
  EXPECT_TRUE(turn.endOfUtterance);
}

TEST_F(ConverseTurnTest, AnEarlyErrorIsReportedWhileTheAudioIsStillComing) {
  std::array<int, 2> ends{};
  ASSERT_EQ(::pipe(ends.data()), 0);
  const std::string frame(3200, 'a');
  ASSERT_EQ(::write(ends[1], frame.data(), frame.size()), 3200);  // and then nothing more comes
  m_engine.atFrame = 1;
  m_engine.waitForReaction = false;
  m_engine.reaction = [this] { m_recorder.turnEnded({.statusCode = 16, .statusMessage = "expired"}); };
  const Turn turn = run(RawAudioStream(ends[0], "standard input", m_wake.descriptor()));
  EXPECT_EQ(turn.outcome, Outcome::refused);
  EXPECT_EQ(turn.status, 16);
  EXPECT_EQ(turn.statusMessage, "expired");
  EXPECT_TRUE(turn.done);
  EXPECT_EQ(m_engine.ends, 0) << "there is nothing left to end";
  for (const int end : ends) ::close(end);
}

TEST_F(ConverseTurnTest, ASilentServiceIsGivenUp) {
  m_engine.reaction = [this] { m_recorder.responseReceived(resultOf("heard", "")); };
  const Turn turn = run(Samples(1), {.volume = 100, .fast = true, .timeout = 50ms});
  EXPECT_EQ(turn.outcome, Outcome::timedOut);
  EXPECT_EQ(turn.status, 4);
  EXPECT_EQ(turn.statusMessage, "no answer within 0.05 s of the last audio");
  EXPECT_EQ(turn.request, "heard");
  EXPECT_FALSE(turn.done);
  EXPECT_GE(Clock::now() - m_engine.sent.back(), 50ms);
}

TEST_F(ConverseTurnTest, TheUserEndsIt) {
  const auto interrupt = [this] {
    m_interrupted = true;
    m_wake.wake();
  };
  m_engine.waitForReaction = false;
  m_engine.reaction = interrupt;
  EXPECT_EQ(run(Samples(1)).outcome, Outcome::interrupted) << "while waiting for the answer";
  m_interrupted = false;
  m_engine.atFrame = 2 + m_engine.frames.size();
  const Turn turn = run(Samples(1000 * 1600), {.volume = 100, .fast = false, .timeout = 10s});
  EXPECT_EQ(turn.outcome, Outcome::interrupted) << "while sending";
  EXPECT_EQ(turn.status, 1);
  EXPECT_LT(m_engine.frames.size(), 900U);
}

TEST_F(ConverseTurnTest, AGoodEndWithoutAnAnswerIsNoAnswer) {
  m_engine.reaction = [this] {
    m_recorder.responseReceived(endOfUtterance());
    m_recorder.responseReceived(resultOf("", ""));
    m_recorder.turnEnded({});
  };
  EXPECT_EQ(run(Samples(1)).outcome, Outcome::unanswered);
  m_engine.reaction = [this] {
    m_recorder.responseReceived(sound("A"));
    m_recorder.turnEnded({});
  };
  EXPECT_EQ(run(Samples(1)).outcome, Outcome::answered);
}

TEST_F(ConverseTurnTest, WithoutAudioNoCallIsOpened) {
  const Turn empty = run(Samples(0));
  EXPECT_EQ(empty.outcome, Outcome::noAudio);
  EXPECT_EQ(empty.status, 3);
  EXPECT_TRUE(m_engine.volumes.empty());
  const Turn damaged = run(Samples(2 * 1600 + 1, true));
  EXPECT_EQ(damaged.outcome, Outcome::noAudio);
  EXPECT_EQ(damaged.statusMessage, "a.wav: is damaged");
  EXPECT_FALSE(damaged.done);
}

TEST_F(ConverseTurnTest, InRealTimeNoFrameIsEarly) {
  m_engine.reaction = [this] { m_recorder.turnEnded({}); };
  (void)run(Samples(4 * 1600), {.volume = 100, .fast = false, .timeout = 10s});
  ASSERT_EQ(m_engine.sent.size(), 4U);
  for (int i = 1; i < 4; ++i)
    EXPECT_GE(m_engine.sent[static_cast<std::size_t>(i)] - m_engine.sent[0], i * 100ms - 1ms);
}

}  // namespace
}  // namespace velmora
