// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/AssistantProvider.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <optional>
#include <utility>

#include "assistant/Recording.h"
#include "assistant/speech/SpeechStream.h"
#include "assistant/speech/Voice.h"
#include "foundation/Heaps.h"

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

/// Why a call cannot be served.
struct Refusal {
  StatusCode code;
  std::string message;
};

[[noreturn]] void refuse(std::string message) {
  throw Refusal{StatusCode::invalidArgument, std::move(message)};
}

ConverseRequest nextRequest(Session &session, std::chrono::milliseconds patience) {
  if (auto request = session.receive(patience)) return *std::move(request);
  throw Refusal{StatusCode::deadlineExceeded,
                "The client has sent nothing for " + std::to_string(patience.count() / 1000) + " seconds"};
}

Config configurationOf(Session &session, std::chrono::milliseconds patience) {
  std::optional<ConverseRequest> first;
  try {
    first = nextRequest(session, patience);
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
  const bool canSpeak =
      out.encoding() == AudioOutConfig::Encoding::mp3 || out.encoding() == AudioOutConfig::Encoding::linear16;
  if (!canSpeak || out.sampleRateHertz() != kSpeechRate)
    refuse("The answer's audio must be MP3 or LINEAR16 at 16000 Hz");
  return *config;
}

/// Makes samples of bytes that may be cut anywhere.
class SampleReader {
 public:
  /// The samples that `bytes` complete, valid until the next call.
  std::span<const std::int16_t> read(const std::string &bytes) {
    m_bytes += bytes;
    m_samples.resize(m_bytes.size() / sizeof(std::int16_t));
    const std::size_t complete = m_samples.size() * sizeof(std::int16_t);
    if (complete > 0) std::memcpy(m_samples.data(), m_bytes.data(), complete);
    m_bytes.erase(0, complete);
    return m_samples;
  }

 private:
  std::string m_bytes;
  std::vector<std::int16_t> m_samples;
};

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

void sendAnswer(Session &session, const Reply &reply) {
  // Clients take the state's bytes for a message of its own.
  Google_Assistant_Embedded_V1alpha1_ConverseState state;
  state.setConversationState(reply.state);
  Result result;
  result.setSpokenResponseText(reply.text);
  result.setConversationState(state.serialize());
  if (reply.volume) result.setVolumePercentage(*reply.volume);
  result.setMicrophoneMode(reply.followOn ? Result::MicrophoneMode::dialogFollowOn
                                          : Result::MicrophoneMode::closeMicrophone);
  sendResult(session, result);
}

SpeechEncoding encodingOf(const Config &config) {
  return config.audioOutConfig().encoding() == AudioOutConfig::Encoding::linear16 ? SpeechEncoding::linear16
                                                                                  : SpeechEncoding::mp3;
}

}  // namespace

AssistantProvider::AssistantProvider(TokenCheck isLive, Dialogue dialogue, const Limits &limits)
    : m_isLive(std::move(isLive)), m_dialogue(std::move(dialogue)), m_limits(limits) {}

bool AssistantProvider::isAuthorised(const Metadata &metadata) const {
  const auto field = metadata.find("authorization");
  return field != metadata.end() && field->second.starts_with(kBearer) &&
         m_isLive(std::string_view(field->second).substr(kBearer.size()));
}

void AssistantProvider::converse(Session &session) {
  try {
    if (!isAuthorised(session.requestMetadata()))
      throw Refusal{StatusCode::unauthenticated, "The access token is missing or not valid"};
    serve(session);
    // Ten to twenty megabytes, until somebody speaks again.
    if (m_statistics.streams() == 0) trimHeaps();
  } catch (const Refusal &refusal) {
    m_statistics.addRefusal();
    session.setStatus(refusal.code, refusal.message);
  } catch (const MessageError &) {
    m_statistics.addRefusal();
    throw;
  }
}

void AssistantProvider::serve(Session &session) {
  const auto place = m_statistics.takePlace(m_limits.streams);
  if (!place) throw Refusal{StatusCode::resourceExhausted, "Too many conversations at once; try again later"};
  const Config config = configurationOf(session, m_limits.clientSilence);
  const std::string state = config.converseState().conversationState();
  Listener listener(m_recognisers, Language::instance(), m_dialogue.pendingQuestion(state));
  listen(session, listener);
  const auto ended = std::chrono::steady_clock::now();
  sendEndOfUtterance(session);
  const Reply reply = answerTo(session, listener, config);
  bool isFirst = true;
  streamSpeech(
      reply.speech, config.audioOutConfig().volumePercentage(), encodingOf(config), [&](std::string bytes) {
        sendAudio(session, std::move(bytes));
        if (!std::exchange(isFirst, false)) return;
        m_statistics.addTurn(
            std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - ended));
      });
  sendAnswer(session, reply);
}

void AssistantProvider::listen(Session &session, Listener &listener) const {
  SampleReader reader;
  const auto latest = std::chrono::steady_clock::now() + m_limits.longestListening;
  int pieces = 0;
  try {
    while (!listener.hasEnded()) {
      const auto request = nextRequest(session, m_limits.clientSilence).converseRequest();
      const auto *audio = std::get_if<std::string>(&request);
      if (!audio) refuse("Only audio may follow the configuration");
      if (++pieces > m_limits.pieces)
        throw Refusal{StatusCode::resourceExhausted, "The audio comes in too many pieces"};
      if (std::chrono::steady_clock::now() > latest)
        throw Refusal{StatusCode::deadlineExceeded,
                      "The request takes too long; the audio must come in real time"};
      listener.feed(reader.read(*audio));
    }
  } catch (Session::ServerError) {
    listener.finish();
  }
}

Reply AssistantProvider::answerTo(Session &session, Listener &listener, const Config &config) const {
  const std::string state = config.converseState().conversationState();
  const Dialogue::Context context{.state = state, .volume = config.audioOutConfig().volumePercentage()};
  const auto heard = listener.result();
  if (heard && !m_recordings.empty()) record(m_recordings, listener.utterance(), *heard);
  if (!heard) return m_dialogue.answerToSilence(context);
  // What was most likely not said is not shown as if it had been.
  if (!heard->confident) return m_dialogue.answerToUnclearSpeech(context);
  sendRequestText(session, heard->text);
  return m_dialogue.answer(heard->text, context);
}

}  // namespace velmora
