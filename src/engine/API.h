// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// A conversation with the assistant service, turn by turn.
//
//   API api(screen, deployment);
//   api.beginTurn(100);
//   api.sendAudioFrame(samples, 1600);   // on the audio thread, again and again
//   api.endAudio();                      // the answer comes to screen.playResponse()
//   api.continueIfFollowUp();            // once it has been played
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "engine/AudioConstants.h"
#include "engine/CallbackGate.h"
#include "engine/ConversationTextDelegate.h"
#include "foundation/Deployment.h"
#include "foundation/UserDefaults.h"
#include "protocol/EmbeddedAssistantService.h"

namespace velmora {

/// What a diagnostic tool sees of a turn beyond what the delegate hears. Called off the main thread, except
/// as said; one call at a time.
class TurnObserver {
 public:
  virtual ~TurnObserver() = default;
  /// Each response, before the delegate hears of it.
  virtual void responseReceived(const Google_Assistant_Embedded_V1alpha1_ConverseResponse &response) = 0;
  /// Once for each turn that no other turn replaced, after its last delegate call. A turn that could not be
  /// started ends inside `beginTurn`, with `StatusCode::internal` and the reason; one whose call failed at
  /// the moment of `endAudio` may end inside that.
  virtual void turnEnded(const CallResult &result) = 0;
};

/// Belongs to the thread that made it, but for `sendAudioFrame`, which one other thread may call. Errors of
/// the service and the network are a line in the log each.
class API {
 public:
  /// For so long after a turn the channel is kept open for the next one. Then everything of gRPC's goes,
  /// which would wake the processor several times a second; the next turn opens it anew.
  static constexpr std::chrono::milliseconds kLinger = std::chrono::seconds(30);

  /// Opens the channel to the deployment's service with the access token stored now. The delegate outlives
  /// the object. Fatal when the deployment's TLS roots cannot be read.
  API(ConversationTextDelegate &delegate, const Deployment &deployment,
      const UserDefaults &defaults = UserDefaults::standard(), std::chrono::milliseconds linger = kLinger);
  /// Cancels what is under way and waits for delegate calls that have begun; none comes afterwards. Not from
  /// within a delegate call.
  ~API();
  API(const API &) = delete;
  API &operator=(const API &) = delete;

  /// Host name of the service, without a port.
  const std::string ASSISTANT_API_ENDPOINT;

  /// Before the first turn; the observer outlives the object.
  void setTurnObserver(TurnObserver *observer) { m_observer = observer; }

  /// Opens a call and sends the configuration with the conversation's state. A turn that is still under way
  /// is given up: nothing more is heard of it.
  void beginTurn(std::int32_t volumePercentage);
  /// Sends `count` 16-bit mono samples at 16 kHz. Does not wait for the network. A frame that cannot be sent,
  /// or belongs to no turn, is dropped. Any thread. Fatal when `count` is negative.
  void sendAudioFrame(const std::int16_t *samples, std::ptrdiff_t count);
  /// Closes the sending side; the rest of the answer is collected in the background.
  void endAudio();
  /// Begins the next turn, through the delegate, if the last response asked back.
  void continueIfFollowUp();

  /// Whether the last response asked back. Any thread.
  [[nodiscard]] bool followUp() const;
  /// What the next turn will send as the conversation's state. Any thread.
  [[nodiscard]] std::optional<Google_Assistant_Embedded_V1alpha1_ConverseState> converseState() const;

 private:
  using Response = Google_Assistant_Embedded_V1alpha1_ConverseResponse;
  using ClientError = Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantClientError;
  using ConverseCall = Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantConverseCall;
  struct Turn;

  using Service = Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantService;
  using Clock = std::chrono::steady_clock;

  void openService();
  void openCall(const std::shared_ptr<Turn> &turn,
                const Google_Assistant_Embedded_V1alpha1_ConverseRequest &);
  void handleResponse(const Turn &turn, const std::optional<Response> &response,
                      const std::optional<ClientError> &error);
  void drainTurns();
  void drainResponses(Turn &turn);
  void closeService(std::unique_lock<std::mutex> &lock);
  void logCallResult(const CallResult &result);
  void endTurnIfOver(const std::shared_ptr<Turn> &turn);

  const std::string m_address;
  const std::string m_roots;
  const std::string m_authorization;
  const std::chrono::milliseconds m_linger;
  ConversationTextDelegate &m_delegate;
  TurnObserver *m_observer = nullptr;

  // Below: shared by the owner's thread, the audio thread, the completion thread and the drain's.
  mutable std::mutex m_mutex;
  std::shared_ptr<Service> m_service;           // null when nothing was asked for a while
  std::optional<Clock::time_point> m_closesAt;  // unless a turn begins
  std::shared_ptr<Turn> m_turn;
  std::optional<Google_Assistant_Embedded_V1alpha1_ConverseState> m_converseState;
  bool m_followUp = false;
  std::string m_buf;
  std::deque<std::shared_ptr<Turn>> m_toDrain;
  bool m_stopping = false;
  std::condition_variable m_drainWork;

  std::mutex m_delivery;  // held during a call of the delegate or the observer; taken before `m_mutex`
  const std::shared_ptr<CallbackGate> m_gate = std::make_shared<CallbackGate>();
  // A thread of its own, made by the first turn: a receive may block for as long as the service likes, which
  // in a pool of as many threads as processors would starve everybody else. It closes the channel, too.
  std::thread m_drainer;
};

}  // namespace velmora
