// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "tools/ConverseTurn.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <thread>

#include "platform/audio/RawAudioStream.h"
#include "tools/TurnAudio.h"

namespace velmora {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
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

  std::size_t atFrame = 0;  // 0: at the end of the audio
  std::function<void()> reaction;
  std::vector<std::int32_t> volumes;
  std::vector<std::ptrdiff_t> frames;
  std::vector<Clock::time_point> sent;
  int ends = 0;

 private:
  std::jthread m_thread;
};

class ConverseTurnTest : public ::testing::Test {
 protected:
  Turn run(AudioSource &&source, bool fast = true, std::chrono::milliseconds timeout = 30s) {
    ConverseTurn turn(m_engine, m_recorder, m_wake, [this] { return m_interrupted.load(); },
                      {40, fast, timeout});
    return turn.run(source);
  }

  WakePipe m_wake;
  TurnRecorder m_recorder{m_wake};
  std::atomic<bool> m_interrupted = false;
  ScriptedEngine m_engine;
};

TEST_F(ConverseTurnTest, SendsTheWholeFileAndReportsWhatCame) {
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
  const Turn turn = run(Silence(3 * 1600 + 7));
  EXPECT_THAT(m_engine.volumes, ElementsAre(40));
  EXPECT_THAT(m_engine.frames, ElementsAre(1600, 1600, 1600, 7));
  EXPECT_EQ(m_engine.ends, 1);
  EXPECT_EQ(turn.outcome, Outcome::answered);
  EXPECT_EQ(turn.request + "; " + turn.answer + "; " + turn.audio, "a request; an answer; ABCD");
  EXPECT_TRUE(turn.followOn);
  EXPECT_LE(0, turn.endOfUtterance);
  EXPECT_LE(turn.endOfUtterance, turn.firstAudio);
  EXPECT_LE(turn.firstAudio, turn.done);

  // The next turn begins with nothing of this one. A good end without an answer is no answer.
  m_engine.reaction = [this] {
    m_recorder.responseReceived(resultOf("", "", true));
    m_recorder.responseReceived(endOfUtterance());
    m_recorder.turnEnded({});
  };
  const Turn next = run(Silence(1));
  EXPECT_EQ(next.outcome, Outcome::unanswered);
  EXPECT_EQ(next.request + next.answer + next.audio, "");
  EXPECT_FALSE(next.followOn) << "the last response decides";
  EXPECT_FALSE(next.firstAudio);
}

TEST_F(ConverseTurnTest, TheServiceEndsTheAudioAndThenKeepsSilent) {
  m_engine.atFrame = 2;
  m_engine.reaction = [this] {
    m_recorder.responseReceived(resultOf("heard", ""));
    m_recorder.stopListening();
  };
  const Turn turn = run(Silence(1000 * 1600), false, 50ms);
  EXPECT_LT(m_engine.frames.size(), 900U);
  EXPECT_EQ(m_engine.ends, 1);
  EXPECT_EQ(turn.outcome, Outcome::timedOut);
  EXPECT_EQ(turn.request, "heard");
  EXPECT_FALSE(turn.done);
  EXPECT_GE(Clock::now() - m_engine.sent.back(), 50ms);
}

TEST_F(ConverseTurnTest, AnEarlyErrorIsReportedWhileTheAudioIsStillComing) {
  std::array<int, 2> ends{};
  ASSERT_EQ(::pipe(ends.data()), 0);
  const std::string frame(3200, 'a');
  ASSERT_EQ(::write(ends[1], frame.data(), frame.size()), 3200);  // and then nothing more comes
  m_engine.atFrame = 1;
  m_engine.reaction = [this] { m_recorder.turnEnded({.statusCode = 16, .statusMessage = "expired"}); };
  const Turn turn = run(RawAudioStream(ends[0], "standard input", m_wake.descriptor()));
  EXPECT_EQ(turn.outcome, Outcome::refused);
  EXPECT_EQ(turn.status, 16);
  EXPECT_EQ(turn.statusMessage, "expired");
  EXPECT_EQ(m_engine.ends, 0) << "there is nothing left to end";
  for (const int end : ends) ::close(end);
}

TEST_F(ConverseTurnTest, AudioThatIsTooLongIsNoFailureOnceTheUtteranceHasEnded) {
  class TooLong : public Silence {
   public:
    TooLong() : Silence(1600 * 3) {}
    AudioRead read(std::span<std::int16_t> frame) override {
      const AudioRead read = Silence::read(frame);
      if (read.ended) throw AudioTooLong("too long");
      return read;
    }
  };
  EXPECT_EQ(run(TooLong(), true, 20ms).statusMessage, "too long");
  EXPECT_EQ(m_engine.ends, 0);
  m_engine.atFrame = 4;
  m_engine.reaction = [this] {
    // Later than the last frame, as it is for audio that is sent at once.
    std::this_thread::sleep_for(20ms);
    m_recorder.stopListening();
    m_recorder.responseReceived(resultOf("heard", "an answer"));
    m_recorder.turnEnded({.statusCode = 0});
  };
  EXPECT_EQ(run(TooLong()).outcome, Outcome::answered);
}

TEST_F(ConverseTurnTest, TheUserEndsIt) {
  m_engine.reaction = [this] {
    m_interrupted = true;
    m_wake.wake();
  };
  EXPECT_EQ(run(Silence(1)).outcome, Outcome::interrupted) << "while waiting for the answer";
  m_interrupted = false;
  m_engine.atFrame = 2 + m_engine.frames.size();
  EXPECT_EQ(run(Silence(1000 * 1600), false).outcome, Outcome::interrupted) << "while sending";
  EXPECT_LT(m_engine.frames.size(), 900U);
}

TEST_F(ConverseTurnTest, WithoutAudioNoCallIsOpened) {
  EXPECT_EQ(run(Silence(0)).outcome, Outcome::noAudio);
  // A file that was there when it was checked.
  const Turn gone = run(std::move(*turnAudio("/none/gone.wav", -1)));
  EXPECT_EQ(gone.outcome, Outcome::noAudio);
  EXPECT_EQ(gone.statusMessage, "/none/gone.wav: No such file or directory");
  EXPECT_TRUE(m_engine.volumes.empty());
}

TEST_F(ConverseTurnTest, InRealTimeNoFrameIsEarly) {
  m_engine.reaction = [this] { m_recorder.turnEnded({}); };
  (void)run(Silence(4 * 1600), false);
  ASSERT_EQ(m_engine.sent.size(), 4U);
  for (std::size_t i = 1; i < 4; ++i) EXPECT_GE(m_engine.sent[i] - m_engine.sent[0], i * 100ms - 1ms);
}

}  // namespace
}  // namespace velmora
