// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "tools/Conversation.h"

#include <unistd.h>

#include "engine/API.h"
#include "tools/AnswerFile.h"
#include "tools/ConverseTurn.h"
#include "tools/Report.h"
#include "tools/ServiceAccess.h"
#include "tools/StandardOutput.h"
#include "tools/TurnAudio.h"
#include "tools/TurnRecorder.h"
#include "tools/VoiceLine.h"

namespace velmora {
namespace {

class ApiEngine : public TurnEngine {
 public:
  ApiEngine(TurnRecorder &recorder, const ServiceAccess &service)
      : m_api(recorder, service.deployment(), service.defaults()) {
    m_api.setTurnObserver(&recorder);
  }

  void beginTurn(std::int32_t volumePercentage) override { m_api.beginTurn(volumePercentage); }
  void sendAudioFrame(const std::int16_t *samples, std::ptrdiff_t count) override {
    m_api.sendAudioFrame(samples, count);
  }
  void endAudio() override { m_api.endAudio(); }

 private:
  API m_api;
};

/// The same, closing the microphone with the turn's audio.
class VoiceEngine final : public ApiEngine {
 public:
  VoiceEngine(TurnRecorder &recorder, const ServiceAccess &service, VoiceLine &line)
      : ApiEngine(recorder, service), m_line(line) {}

  void endAudio() override {
    m_line.stopListening();
    ApiEngine::endAudio();
  }

 private:
  VoiceLine &m_line;
};

/// Prints a turn and saves its answer. `turns`: how many there may be in all. Throws when it failed.
void report(const Turn &turn, std::size_t number, std::size_t turns, const Options &options,
            const ServiceAccess &service) {
  const bool answered = turn.outcome == Turn::Outcome::answered;
  if (options.json) {
    writeAll(STDOUT_FILENO, jsonReport(turn), Interruption::arrived);
  } else if (answered) {
    writeAll(STDOUT_FILENO, textReport(turn), Interruption::arrived);
  }
  if (!answered) throw ServiceError(explain(turn, service.description()));
  if (!options.saveAnswer) return;
  if (turn.audio.empty()) throw std::runtime_error("the answer cannot be saved: it has no sound");
  saveAnswer(answerFile(*options.saveAnswer, number, turns), turn.audio);
}

}  // namespace

void converse(const Options &options, const Interruption &interruption) {
  const WakePipe &wake = interruption.wake();
  const ServiceAccess service(options, wake.descriptor());
  TurnRecorder recorder(wake);
  ApiEngine engine(recorder, service);
  ConverseTurn turns(engine, recorder, wake, Interruption::arrived,
                     {.volume = options.volume, .fast = options.fast, .timeout = options.timeout});
  for (std::size_t i = 0; i < options.audio.size(); ++i) {
    const Turn turn = turns.run(*turnAudio(options.audio[i], wake.descriptor()));
    report(turn, i + 1, options.audio.size(), options, service);
  }
}

void converseByVoice(const Options &options, const Interruption &interruption) {
  const WakePipe &wake = interruption.wake();
  VoiceLine line(options.device, wake, Interruption::arrived, options.verbose);
  const ServiceAccess service(options, wake.descriptor());
  TurnRecorder recorder(wake);
  VoiceEngine engine(recorder, service, line);
  // The microphone keeps the time itself.
  ConverseTurn turns(engine, recorder, wake, Interruption::arrived,
                     {.volume = options.volume, .fast = true, .timeout = options.timeout});
  for (std::size_t number = 1;; ++number) {
    line.listen();
    const Turn turn = turns.run(line);
    line.stopListening();
    report(turn, number, kVoiceTurns, options, service);
    if (!turn.audio.empty()) line.speak(turn.audio);
    if (Interruption::arrived()) throw std::runtime_error("interrupted");
    if (!turn.followOn) return;
  }
}

}  // namespace velmora
