// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "engine/API.h"

#include <string_view>

#include "auth/TokenStore.h"
#include "foundation/Log.h"
#include "foundation/fatal.h"

namespace velmora {
namespace {

using Request = Google_Assistant_Embedded_V1alpha1_ConverseRequest;
using Config = Google_Assistant_Embedded_V1alpha1_ConverseConfig;
using AudioInConfig = Google_Assistant_Embedded_V1alpha1_AudioInConfig;
using AudioOutConfig = Google_Assistant_Embedded_V1alpha1_AudioOutConfig;
using ConverseState = Google_Assistant_Embedded_V1alpha1_ConverseState;
using ConverseResult = Google_Assistant_Embedded_V1alpha1_ConverseResult;
using ConverseResponse = Google_Assistant_Embedded_V1alpha1_ConverseResponse;

std::string readRoots(const Deployment &deployment) {
  try {
    return readFile(deployment.resource("roots", "pem"));
  } catch (const std::exception &error) {
    fatal(std::string("The TLS roots cannot be read: ") + error.what());
  }
}

/// The error and its localised description, as every label of a raised error is followed.
std::string described(const std::exception &error) {
  std::string name = "error";
  if (const auto *client =
          dynamic_cast<const Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantClientError *>(&error)) {
    name = client->name();
  } else if (const auto *call = dynamic_cast<const CallError *>(&error)) {
    name = call->name();
  }
  return name + ":" + error.what();
}

std::string hex(std::string_view bytes) {
  constexpr auto digits = "0123456789abcdef";
  std::string text;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    text += {digits[byte >> 4], digits[byte & 15]};
  }
  return text;
}

Request configRequest(std::int32_t volumePercentage, const ConverseState &state) {
  AudioInConfig audioIn;
  audioIn.setEncoding(AudioInConfig::Encoding::linear16);
  audioIn.setSampleRateHertz(kServiceSampleRate);
  AudioOutConfig audioOut;
  audioOut.setEncoding(AudioOutConfig::Encoding::mp3);
  audioOut.setSampleRateHertz(kServiceSampleRate);
  audioOut.setVolumePercentage(volumePercentage);
  Config config;
  config.setAudioInConfig(audioIn);
  config.setAudioOutConfig(audioOut);
  config.setConverseState(state);  // present on the first turn too, then empty
  Request request;
  request.setConfig(config);
  return request;
}

}  // namespace

/// One turn. What is not said to be atomic is under the mutex of the `API`.
struct API::Turn {
  std::shared_ptr<ConverseCall> call;
  bool replaced = false;     // a later turn has begun: nothing of this one counts any more
  bool drainWanted = false;  // the sending side is closed
  bool drained = false;      // nothing more will come from the drain
  bool endReported = false;
  std::optional<CallResult> result;
};

API::API(ConversationTextDelegate &delegate, const Deployment &deployment, const UserDefaults &defaults,
         std::chrono::milliseconds linger)
    : ASSISTANT_API_ENDPOINT(deployment.host),
      m_address(deployment.address()),
      m_roots(readRoots(deployment)),
      // Read only here: a token that is refreshed later is for conversations that begin later.
      m_authorization("Bearer " + defaults.stringForKey(kAuthTokenKey).toStdString()),
      m_linger(linger),
      m_delegate(delegate) {
  openService();
}

void API::openService() {
  m_service = std::make_shared<Service>(m_address, m_roots, std::nullopt);
  m_service->metadata().emplace("authorization", m_authorization);
}

API::~API() {
  m_gate->close();
  {
    const std::lock_guard lock(m_mutex);
    m_stopping = true;
    if (m_turn && m_turn->call) m_turn->call->cancel();
  }
  m_drainWork.notify_all();
  if (m_drainer.joinable()) m_drainer.join();
}

void API::beginTurn(std::int32_t volumePercentage) {
  const auto turn = std::make_shared<Turn>();
  ConverseState state;
  {
    const std::lock_guard lock(m_mutex);
    if (m_converseState) state = *m_converseState;
    if (m_turn && !m_turn->drained) {
      m_turn->replaced = true;
      // Half an answer that nobody waits for is not played; what a failed close left behind still is.
      if (m_turn->drainWanted) m_buf.clear();
    }
    if (m_turn && m_turn->call) m_turn->call->cancel();
    m_turn = turn;
    m_closesAt.reset();
    if (!m_service) openService();
    if (!m_drainer.joinable()) m_drainer = std::thread([this] { drainTurns(); });
  }
  const Request request = configRequest(volumePercentage, state);
  if (logEnabled()) {
    log("audio request....", request.debugDescription());
    log("request config is ..", hex(request.config().converseState().conversationState()));
  }
  try {
    openCall(turn, request);
  } catch (const std::exception &error) {
    log("Initial catch: ", described(error));
    {
      const std::lock_guard lock(m_mutex);
      if (turn->call) return;  // the call's own end tells the rest
      turn->result =
          CallResult{.statusCode = static_cast<int>(StatusCode::internal), .statusMessage = error.what()};
    }
    endTurnIfOver(turn);
  }
}

void API::openCall(const std::shared_ptr<Turn> &turn, const Request &request) {
  const std::shared_ptr<Service> service = [this] {
    const std::lock_guard lock(m_mutex);
    return m_service;
  }();
  const auto call = service->converse([this, gate = m_gate, turn](const CallResult &result) {
    const CallbackGate::Pass pass(*gate);
    if (!pass) return;
    logCallResult(result);
    {
      const std::lock_guard lock(m_mutex);
      turn->result = result;
    }
    endTurnIfOver(turn);
  });
  {
    const std::lock_guard lock(m_mutex);
    turn->call = call;
  }
  call->send(request, [](const std::optional<CallError> &error) {
    if (error) log("Initial send error: ", described(*error));
  });
  call->receive([this, gate = m_gate, turn](const std::optional<Response> &response,
                                            const std::optional<ClientError> &error) {
    if (const CallbackGate::Pass pass(*gate); pass) handleResponse(*turn, response, error);
  });
}

void API::sendAudioFrame(const std::int16_t *samples, std::ptrdiff_t count) {
  if (count < 0) fatal("A negative number of samples was to be sent");
  Request request;
  if (logEnabled()) {
    log("request.......", request.debugDescription());
    log("request  __________", request.textFormat());
  }
  std::shared_ptr<ConverseCall> call;
  {
    const std::lock_guard lock(m_mutex);
    if (m_turn) call = m_turn->call;
  }
  if (!call) return;
  request.setAudioIn(
      {reinterpret_cast<const char *>(samples), static_cast<std::size_t>(count) * sizeof *samples});
  try {
    call->send(request, [](const std::optional<CallError> &error) {
      if (error) log("Frame send error: ", error->what());
    });
  } catch (const std::exception &error) {
    log("Frame catch: ", described(error));
  }
}

void API::endAudio() {
  std::shared_ptr<Turn> turn;
  bool first = false;
  {
    const std::lock_guard lock(m_mutex);
    if (!m_turn || !m_turn->call) return;
    turn = m_turn;
    // Before the close: a call that ends at this moment must not be reported while its answer is still read.
    first = !std::exchange(turn->drainWanted, true);
  }
  try {
    turn->call->closeSend([] { log("Closed send"); });
  } catch (const std::exception &error) {
    log("Close catch: ", described(error));
    if (!first) return;
    {
      const std::lock_guard lock(m_mutex);
      turn->drainWanted = false;
    }
    return endTurnIfOver(turn);
  }
  {
    const std::lock_guard lock(m_mutex);
    m_toDrain.push_back(turn);
  }
  m_drainWork.notify_one();
}

void API::drainTurns() {
  std::unique_lock lock(m_mutex);
  for (;;) {
    if (m_stopping) return;
    if (m_toDrain.empty()) {
      if (!m_closesAt) {
        m_drainWork.wait(lock);
      } else if (m_drainWork.wait_until(lock, *m_closesAt) == std::cv_status::timeout) {
        closeService(lock);
      }
      continue;
    }
    const std::shared_ptr<Turn> turn = std::move(m_toDrain.front());
    m_toDrain.pop_front();
    lock.unlock();
    drainResponses(*turn);
    if (const CallbackGate::Pass pass(*m_gate); pass) endTurnIfOver(turn);
    lock.lock();
  }
}

/// Unless a turn has begun meanwhile. What the conversation has come to stays.
void API::closeService(std::unique_lock<std::mutex> &lock) {
  if (!m_closesAt || Clock::now() < *m_closesAt) return;
  m_closesAt.reset();
  std::shared_ptr<Service> service = std::exchange(m_service, nullptr);
  std::shared_ptr<ConverseCall> call;
  if (m_turn) call = std::exchange(m_turn->call, nullptr);
  // What goes with them must not find the lock held.
  lock.unlock();
  call.reset();
  service.reset();
  lock.lock();
}

void API::drainResponses(Turn &turn) {
  try {
    for (;;) {
      const Response response = turn.call->receive();
      if (const CallbackGate::Pass pass(*m_gate); pass) handleResponse(turn, response, std::nullopt);
    }
  } catch (const std::exception &error) {
    log("close catch ", described(error));
    // After a response that could not be understood nobody reads on: the call must not wait for a reader.
    const auto *client = dynamic_cast<const ClientError *>(&error);
    if (!client || client->errorCase() != ClientError::Case::endOfStream) turn.call->cancel();
  }
  std::string answer;
  {
    const std::lock_guard lock(m_mutex);
    turn.drained = true;
    if (!turn.replaced) answer.swap(m_buf);
  }
  const std::lock_guard oneAtATime(m_delivery);
  const CallbackGate::Pass pass(*m_gate);
  if (pass && !answer.empty()) m_delegate.playResponse(answer);
}

void API::handleResponse(const Turn &turn, const std::optional<Response> &response,
                         const std::optional<ClientError> &error) {
  const std::lock_guard oneAtATime(m_delivery);
  if (!response) {
    if (error) log("Initial receive error: ", described(*error));
    const std::lock_guard lock(m_mutex);
    if (!turn.replaced) m_followUp = false;
    return;
  }
  const ConverseResult result = response->result();
  const auto audioOut = response->audioOut();
  std::optional<ConverseState> state;
  try {
    state = ConverseState::parse(result.conversationState());
  } catch (const MessageError &) {
    // The next turn starts a fresh conversation.
  }
  {
    const std::lock_guard lock(m_mutex);
    if (turn.replaced) return;
    m_followUp = result.microphoneMode() == ConverseResult::MicrophoneMode::dialogFollowOn;
    m_converseState = std::move(state);
    m_buf += audioOut.audioData();
  }
  if (m_observer) m_observer->responseReceived(*response);
  if (!result.spokenRequestText().empty()) m_delegate.updateRequestText(result.spokenRequestText());
  m_delegate.updateResponseText(result.spokenResponseText().empty() ? kSpokenAnswerPlaceholder
                                                                    : result.spokenResponseText());
  if (response->eventType() == ConverseResponse::EventType::endOfUtterance) m_delegate.stopListening();
}

void API::continueIfFollowUp() {
  {
    // Cleared first: the new turn's responses may set it again before `startListening` returns.
    const std::lock_guard lock(m_mutex);
    if (!std::exchange(m_followUp, false)) return;
  }
  m_delegate.startListening();
}

bool API::followUp() const {
  const std::lock_guard lock(m_mutex);
  return m_followUp;
}

std::optional<ConverseState> API::converseState() const {
  const std::lock_guard lock(m_mutex);
  return m_converseState;
}

void API::logCallResult(const CallResult &result) {
  if (!logEnabled()) return;
  log("Result code ", result.statusCode);
  log("Result description ", result.description());
  log("Metadata ", description(result.trailingMetadata));
  log("Status message ", result.statusMessage.value_or("Error"));
  log("Obj description ", result.description());
  log("result ", result.description());
}

/// A turn is over when its call has ended and nobody is going to read from it.
void API::endTurnIfOver(const std::shared_ptr<Turn> &turn) {
  CallResult result;
  {
    const std::lock_guard lock(m_mutex);
    const bool over = turn->result && (turn->drainWanted ? turn->drained : !turn->result->succeeded());
    if (!over || turn->replaced || std::exchange(turn->endReported, true)) return;
    result = *turn->result;
    m_closesAt = Clock::now() + m_linger;
  }
  m_drainWork.notify_all();
  const std::lock_guard oneAtATime(m_delivery);
  if (m_observer) m_observer->turnEnded(result);
}

}  // namespace velmora
