// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/AssistantProvider.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <optional>
#include <utility>

#include "assistant/Mp3Encoder.h"
#include "assistant/Voice.h"

namespace velmora {
namespace {

using Session = Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantConverseSession;
using Config = Google_Assistant_Embedded_V1alpha1_ConverseConfig;
using AudioInConfig = Google_Assistant_Embedded_V1alpha1_AudioInConfig;
using AudioOutConfig = Google_Assistant_Embedded_V1alpha1_AudioOutConfig;
using Result = Google_Assistant_Embedded_V1alpha1_ConverseResult;
using Response = Google_Assistant_Embedded_V1alpha1_ConverseResponse;
using ConverseRequest = Google_Assistant_Embedded_V1alpha1_ConverseRequest;

constexpr std::string_view kBearer = "Bearer ";
// A client that sends nothing for this long has lost its microphone or its mind; its thread is wanted back.
constexpr std::chrono::seconds kClientPatience{10};
// A piece of the answer: a tenth of a second of sound, and of MP3 about as much as a network packet holds.
constexpr std::size_t kSamplesAPiece = kSpeechRate / 5;
constexpr std::size_t kBytesAPiece = 1200;

/// Why a call cannot be served.
struct Refusal {
  StatusCode code;
  std::string message;
};

[[noreturn]] void refuse(std::string message) {
  throw Refusal{StatusCode::invalidArgument, std::move(message)};
}

ConverseRequest nextRequest(Session &session) {
  if (auto request = session.receive(kClientPatience)) return *std::move(request);
  throw Refusal{StatusCode::deadlineExceeded, "The client has sent nothing for ten seconds"};
}

Config configurationOf(Session &session) {
  std::optional<ConverseRequest> first;
  try {
    first = nextRequest(session);
  } catch (Session::ServerError) {
    refuse("The configuration is missing");
  }
  const auto held = first->converseRequest();
  const auto *config = std::get_if<Config>(&held);
  if (!config) refuse("The first request must hold the configuration");
  const auto in = config->audioInConfig();
  if (in.encoding() != AudioInConfig::Encoding::linear16 || in.sampleRateHertz() != kSpeechRate) {
    refuse("The request's audio must be LINEAR16 at 16000 Hz");
  }
  const auto out = config->audioOutConfig();
  if (out.encoding() != AudioOutConfig::Encoding::mp3 || out.sampleRateHertz() != kSpeechRate) {
    refuse("The answer's audio must be MP3 at 16000 Hz");
  }
  return *config;
}

/// Collects samples from bytes that may be cut anywhere.
class SampleReader {
 public:
  /// The samples that `bytes` complete, at the end of those read so far.
  std::span<const std::int16_t> append(const std::string &bytes) {
    m_bytes += bytes;
    const std::size_t before = m_samples.size();
    const std::size_t count = m_bytes.size() / sizeof(std::int16_t);
    m_samples.resize(before + count);
    std::memcpy(m_samples.data() + before, m_bytes.data(), count * sizeof(std::int16_t));
    m_bytes.erase(0, count * sizeof(std::int16_t));
    return std::span(m_samples).subspan(before);
  }
  [[nodiscard]] std::span<const std::int16_t> samples() const { return m_samples; }

 private:
  std::string m_bytes;
  std::vector<std::int16_t> m_samples;
};

void listen(Session &session, SampleReader &reader, EndOfUtterance &detector) {
  try {
    while (!detector.hasEnded()) {
      const auto request = nextRequest(session).converseRequest();
      const auto *audio = std::get_if<std::string>(&request);
      if (!audio) refuse("Only audio may follow the configuration");
      detector.feed(reader.append(*audio));
    }
  } catch (Session::ServerError) {
    detector.finish();
  }
}

void sendEndOfUtterance(Session &session) {
  Response response;
  response.setEventType(Response::EventType::endOfUtterance);
  session.send(response);
}

void sendResult(Session &session, const Result &result) {
  Response response;
  response.setResult(result);
  session.send(response);
}

void sendRequestText(Session &session, const std::string &text) {
  Result result;
  result.setSpokenRequestText(text);
  sendResult(session, result);
}

void sendAudio(Session &session, std::string bytes) {
  Google_Assistant_Embedded_V1alpha1_AudioOut audio;
  audio.setAudioData(std::move(bytes));
  Response response;
  response.setAudioOut(audio);
  session.send(response);
}

void sendSpeech(Session &session, const std::string &text, int volumePercentage) {
  std::vector<std::int16_t> samples = speak(text);
  applyVolume(samples, volumePercentage);
  Mp3Encoder encoder;
  std::string pending;
  for (auto rest = std::span<const std::int16_t>(samples); !rest.empty();) {
    const auto piece = rest.first(std::min(rest.size(), kSamplesAPiece));
    rest = rest.subspan(piece.size());
    pending += encoder.encode(piece);
    if (pending.size() >= kBytesAPiece) sendAudio(session, std::exchange(pending, {}));
  }
  pending += encoder.finish();
  if (!pending.empty()) sendAudio(session, std::move(pending));
}

void sendAnswer(Session &session, const Reply &reply) {
  // Clients take the state's bytes for a message of its own.
  Google_Assistant_Embedded_V1alpha1_ConverseState state;
  state.setConversationState(reply.state);
  Result result;
  result.setSpokenResponseText(reply.text);
  result.setConversationState(state.serialize());
  result.setMicrophoneMode(reply.followOn ? Result::MicrophoneMode::dialogFollowOn
                                          : Result::MicrophoneMode::closeMicrophone);
  sendResult(session, result);
}

}  // namespace

AssistantProvider::AssistantProvider(TokenCheck isLive, Dialogue dialogue)
    : m_isLive(std::move(isLive)), m_dialogue(std::move(dialogue)) {}

bool AssistantProvider::isAuthorised(const Metadata &metadata) const {
  const auto field = metadata.find("authorization");
  return field != metadata.end() && field->second.starts_with(kBearer) &&
         m_isLive(std::string_view(field->second).substr(kBearer.size()));
}

void AssistantProvider::converse(Session &session) {
  if (!isAuthorised(session.requestMetadata())) {
    return session.setStatus(StatusCode::unauthenticated, "The access token is missing or not valid");
  }
  try {
    const Config config = configurationOf(session);
    SampleReader reader;
    EndOfUtterance detector;
    listen(session, reader, detector);
    sendEndOfUtterance(session);
    const Reply reply =
        answerTo(session, reader.samples(), detector, config.converseState().conversationState());
    sendSpeech(session, reply.speech, config.audioOutConfig().volumePercentage());
    sendAnswer(session, reply);
  } catch (const Refusal &refusal) {
    session.setStatus(refusal.code, refusal.message);
  }
}

Reply AssistantProvider::answerTo(Session &session, std::span<const std::int16_t> samples,
                                  const EndOfUtterance &detector, const std::string &state) {
  if (detector.state() != EndOfUtterance::State::ended) return m_dialogue.answerToSilence(state);
  const EndOfUtterance::Range range = detector.utterance();
  const Recognition heard = m_recognisers.recognise(samples.subspan(range.begin, range.end - range.begin));
  // What was most likely not said is not shown as if it had been.
  if (!heard.confident) return m_dialogue.answerToUnclearSpeech(state);
  sendRequestText(session, heard.text);
  return m_dialogue.answer(heard.text, state);
}

}  // namespace velmora
