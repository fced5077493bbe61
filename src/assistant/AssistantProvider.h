// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The local assistant as a Converse service: a spoken request in, its text and a spoken answer out.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "assistant/Statistics.h"
#include "assistant/dialogue/Dialogue.h"
#include "assistant/hearing/Listener.h"
#include "assistant/hearing/RecogniserPool.h"
#include "protocol/EmbeddedAssistantSession.h"

namespace velmora {

/// Serves several calls at once. To each it sends, in this order: the end of the utterance, the request's
/// text, the answer's sound in pieces, and last a result with the answer's text, the conversation's state and
/// what the microphone is to do; a client that keeps only the last response's state keeps the right one.
/// A stream costs at most some 4 MB beside the recognisers, which are shared.
class AssistantProvider : public Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantProvider {
 public:
  /// Whether the bearer of `token` may be served now. Called on the threads of the calls.
  using TokenCheck = std::function<bool(std::string_view token)>;

  struct Limits {
    int streams = 16;  ///< more at once are refused
    std::chrono::milliseconds clientSilence{
        10'000};  ///< a client that sends nothing for so long has lost its microphone
    std::chrono::milliseconds longestListening{45'000};  ///< wall-clock time until a request must have ended
    int pieces = 6000;  ///< of audio in one request; most of them are then empty
  };

  AssistantProvider(TokenCheck isLive, Dialogue dialogue)
      : AssistantProvider(std::move(isLive), std::move(dialogue), Limits()) {}
  AssistantProvider(TokenCheck isLive, Dialogue dialogue, const Limits &limits);

  /// Loads the recogniser. Throws `std::runtime_error` when its installation is incomplete.
  void prepare() { m_recognisers.prepare(); }

  /// Keeps each request's sound and words in `folder`, which nothing else does. Before the first call.
  void recordIn(std::filesystem::path folder) { m_recordings = std::move(folder); }

  [[nodiscard]] const Statistics &statistics() const { return m_statistics; }

  void converse(Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantConverseSession &session) override;

 private:
  using Session = Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantConverseSession;
  using Config = Google_Assistant_Embedded_V1alpha1_ConverseConfig;

  [[nodiscard]] bool isAuthorised(const Metadata &metadata) const;
  void serve(Session &session);
  void listen(Session &session, Listener &listener) const;
  [[nodiscard]] Reply answerTo(Session &session, Listener &listener, const Config &config) const;

  const TokenCheck m_isLive;
  const Dialogue m_dialogue;
  const Limits m_limits;
  mutable RecogniserPool m_recognisers;
  Statistics m_statistics;
  std::filesystem::path m_recordings;  // empty: nothing is kept
};

}  // namespace velmora
