// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace velmora {

/// Stands for the text of an answer while there is only sound.
inline constexpr auto kSpokenAnswerPlaceholder = "Speaking response...";

/// What a screen hears of its conversation. Called on threads of the engine, one call at a time, never on the
/// main thread but for `startListening`; a screen posts what concerns its widgets to the main queue. No call
/// waits for the thread that owns the `API`, which may be waiting for the call to return.
class ConversationTextDelegate {
 public:
  virtual ~ConversationTextDelegate() = default;

  /// The user's utterance as the service recognised it.
  virtual void updateRequestText(const std::string &text) = 0;
  /// The answer's text, or a placeholder while there is only sound.
  virtual void updateResponseText(const std::string &text) = 0;
  /// The service has heard the end of the utterance.
  virtual void stopListening() = 0;
  /// The answer asked back and has been played: begin a new turn. On the thread of `continueIfFollowUp`.
  virtual void startListening() = 0;
  /// The whole spoken answer of the turn.
  virtual void playResponse(const std::string &mp3) = 0;
};

}  // namespace velmora
