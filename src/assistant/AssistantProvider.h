// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The local assistant as a Converse service: a spoken request in, its text and a spoken answer out.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "assistant/Dialogue.h"
#include "assistant/EndOfUtterance.h"
#include "assistant/RecogniserPool.h"
#include "protocol/EmbeddedAssistantSession.h"

namespace velmora {

/// Serves any number of calls at once. To each it sends, in this order: the end of the utterance, the
/// request's text, the answer's sound in pieces, and last a result with the answer's text, the conversation's
/// state and what the microphone is to do; a client that keeps only the last response's state keeps the right
/// one.
class AssistantProvider : public Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantProvider {
 public:
  /// Whether the bearer of `token` may be served now. Called on the threads of the calls.
  using TokenCheck = std::function<bool(std::string_view token)>;

  AssistantProvider(TokenCheck isLive, Dialogue dialogue);

  /// Loads the recogniser. Throws `std::runtime_error` when its installation is incomplete.
  void prepare() { m_recognisers.prepare(); }

  void converse(Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantConverseSession &session) override;

 private:
  using Session = Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantConverseSession;
  using Config = Google_Assistant_Embedded_V1alpha1_ConverseConfig;

  [[nodiscard]] bool isAuthorised(const Metadata &metadata) const;
  Reply answerTo(Session &session, std::span<const std::int16_t> samples, const EndOfUtterance &detector,
                 const std::string &state);

  const TokenCheck m_isLive;
  const Dialogue m_dialogue;
  RecogniserPool m_recognisers;
};

}  // namespace velmora
