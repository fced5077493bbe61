// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "tools/ConverseTurn.h"

#include <algorithm>
#include <array>
#include <sstream>
#include <utility>

namespace velmora {
namespace {

constexpr std::chrono::milliseconds kFrame{1000 * AudioSource::frameSamples / AudioSource::sampleRate};

// The numbers gRPC has for what a client decides by itself.
constexpr int kCancelled = 1;
constexpr int kInvalidArgument = 3;
constexpr int kDeadlineExceeded = 4;

// How long a service that has all the audio may take to say that it ended the utterance before.
constexpr std::chrono::milliseconds kLastWord{5000};
// A source that brings nothing for so long has stalled; one that keeps time has a frame every 100 ms.
constexpr std::chrono::seconds kStalled{2};

std::string silence(std::chrono::milliseconds timeout) {
  std::ostringstream text;
  text << "no answer within " << std::chrono::duration<double>(timeout).count() << " s of the last audio";
  return text.str();
}

}  // namespace

ConverseTurn::ConverseTurn(TurnEngine &engine, TurnRecorder &recorder, const WakePipe &wake,
                           std::function<bool()> interrupted, const Settings &settings)
    : m_engine(engine),
      m_recorder(recorder),
      m_wake(wake),
      m_interrupted(std::move(interrupted)),
      m_settings(settings) {}

Turn ConverseTurn::run(AudioSource &source) {
  m_recorder.begin();
  m_lastFrame.reset();
  m_stalled.reset();
  try {
    sendAudio(source);
  } catch (const AudioError &error) {
    return turn(Turn::Outcome::noAudio, error.what());
  }
  const auto deadline = m_lastFrame.value_or(Clock::now()) + m_settings.timeout;
  while (!m_recorder.hasEnded()) {
    if (m_interrupted()) return turn(Turn::Outcome::interrupted, "interrupted");
    if (Clock::now() >= deadline) return turn(Turn::Outcome::timedOut, silence(m_settings.timeout));
    m_wake.waitUntil(deadline);
  }
  const TurnRecorder::Record record = m_recorder.record();
  if (record.result->statusCode != 0) return turn(Turn::Outcome::refused, {});
  return turn(record.answered ? Turn::Outcome::answered : Turn::Outcome::unanswered, {});
}

void ConverseTurn::sendAudio(AudioSource &source) {
  try {
    sendFrames(source);
  } catch (const AudioTooLong &) {
    // The utterance may have ended long before: audio can be sent faster than the service says so.
    if (!endedByService()) throw;
    endAudio();
  }
}

void ConverseTurn::endAudio() {
  if (!m_recorder.hasEnded() && !m_interrupted()) m_engine.endAudio();
}

/// Gives the service a moment to end the utterance, or the call, by itself.
bool ConverseTurn::endedByService() const {
  const auto deadline = Clock::now() + std::min(m_settings.timeout, kLastWord);
  while (!stopped() && Clock::now() < deadline) m_wake.waitUntil(deadline);
  return stopped();
}

/// Begins the turn with the first frame at hand, so that a call is never opened for audio that is not there.
void ConverseTurn::sendFrames(AudioSource &source) {
  std::array<std::int16_t, AudioSource::frameSamples> frame{};
  AudioRead read = readFrame(source, frame);
  if (read.samples == 0 && read.ended) throw AudioError("the audio holds no samples");
  if (stopped()) return;
  m_engine.beginTurn(m_settings.volume);
  // Each frame is due at a multiple from the start, not from the frame before: delays do not add up.
  auto due = Clock::now();
  while (read.samples > 0) {
    if (!m_settings.fast) waitForFrame(due);
    if (stopped()) break;
    m_engine.sendAudioFrame(frame.data(), static_cast<std::ptrdiff_t>(read.samples));
    m_lastFrame = Clock::now();
    due += kFrame;
    if (read.ended) break;
    read = readFrame(source, frame);
  }
  endAudio();
}

/// Without samples only at the end of the audio and when the turn is to be stopped.
AudioRead ConverseTurn::readFrame(AudioSource &source, std::span<std::int16_t> frame) {
  const auto begun = Clock::now();
  for (;;) {
    const AudioRead read = source.read(frame);
    if (read.samples > 0 || read.ended) return read;
    if (stopped()) {
      const auto waited = std::chrono::floor<std::chrono::seconds>(Clock::now() - begun);
      if (m_recorder.hasEnded() && waited >= kStalled) m_stalled = waited;
      return read;
    }
    // The read was broken off for something that does not concern it.
    m_wake.waitUntil(Clock::now());
  }
}

void ConverseTurn::waitForFrame(Clock::time_point due) const {
  while (!stopped() && Clock::now() < due) m_wake.waitUntil(due);
}

Turn ConverseTurn::turn(Turn::Outcome outcome, const std::string &why) const {
  const TurnRecorder::Record record = m_recorder.record();
  Turn turn{.outcome = outcome,
            .request = record.request,
            .answer = record.answer,
            .audio = record.audio,
            .followOn = record.followOn,
            .stalled = m_stalled,
            .statusMessage = why};
  switch (outcome) {
    case Turn::Outcome::timedOut: turn.status = kDeadlineExceeded; break;
    case Turn::Outcome::interrupted: turn.status = kCancelled; break;
    case Turn::Outcome::noAudio: turn.status = kInvalidArgument; break;
    default:
      turn.status = record.result->statusCode;
      turn.statusMessage = record.result->statusMessage;
      break;
  }
  const auto sinceLastFrame = [&](std::optional<Clock::time_point> moment) -> std::optional<double> {
    if (!moment || !m_lastFrame) return std::nullopt;
    return std::chrono::duration<double, std::milli>(*moment - *m_lastFrame).count();
  };
  turn.endOfUtterance = sinceLastFrame(record.endOfUtterance);
  turn.firstAudio = sinceLastFrame(record.firstAudio);
  turn.done = sinceLastFrame(record.ended);
  return turn;
}

}  // namespace velmora
