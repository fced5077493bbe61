// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Between a screen and what speaks with the service for it. That brings sixty libraries along, so it lives in
// a plugin, which is loaded when the user first wants to talk.
#pragma once

#include <QtPlugin>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

#include "engine/ConversationTextDelegate.h"
#include "protocol/CallResult.h"

namespace velmora {

struct Deployment;
class UserDefaults;

/// What a screen learns of a turn beyond its texts. Called as the `ConversationTextDelegate` is.
class ConversationObserver {
 public:
  /// The user asked for answers of another loudness, 1 to 100.
  virtual void volumeAsked(int percent) = 0;
  /// As `TurnObserver` has it.
  virtual void turnEnded(const CallResult &result) = 0;

 protected:
  ~ConversationObserver() = default;
};

/// A conversation with the service, turn by turn: an `API`, which says what each of these does.
class Conversation {
 public:
  virtual ~Conversation() = default;
  virtual void beginTurn(std::int32_t volumePercentage) = 0;
  virtual void sendAudioFrame(const std::int16_t *samples, std::ptrdiff_t count) = 0;
  virtual void endAudio() = 0;
  virtual void continueIfFollowUp() = 0;
};

/// The root of the plugin. Main thread.
class ConversationFactory {
 public:
  virtual ~ConversationFactory() = default;
  /// The delegate and the observer outlive the conversation. `log` gets the lines of the whole plugin from
  /// now on, on any thread. Fatal as `API` is.
  virtual std::unique_ptr<Conversation> make(ConversationTextDelegate &delegate,
                                             ConversationObserver &observer, const Deployment &deployment,
                                             const UserDefaults &defaults,
                                             const std::function<void(std::string_view line)> &log) = 0;
};

}  // namespace velmora

Q_DECLARE_INTERFACE(velmora::ConversationFactory, "velmora.ConversationFactory/1")
