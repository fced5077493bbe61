// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Between a screen and what speaks with the service for it. That brings sixty libraries along: the program in
// the status bar loads them when the user is about to talk, the others are linked with them.
#pragma once

#include <QtPlugin>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
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

/// Main thread.
class ConversationFactory {
 public:
  virtual ~ConversationFactory() = default;
  /// The delegate and the observer outlive the conversation. Fatal as `API` is.
  virtual std::unique_ptr<Conversation> make(ConversationTextDelegate &delegate,
                                             ConversationObserver &observer, const Deployment &deployment,
                                             const UserDefaults &defaults) = 0;
};

/// The root of the plugin.
class ConversationPluginRoot {
 public:
  virtual ~ConversationPluginRoot() = default;
  /// `log` gets the lines of the plugin from now on, on any thread.
  virtual ConversationFactory &factory(const std::function<void(std::string_view line)> &log) = 0;
};

/// What makes the conversations of this process: what is linked, unless the program brings another definition
/// of this and the next. Null, with the reason, when there can be none. Main thread.
ConversationFactory *conversationFactory(std::string &problem);
/// Has it made ready on another thread, for who is about to ask for it. Any thread.
void preloadConversations();

}  // namespace velmora

Q_DECLARE_INTERFACE(velmora::ConversationPluginRoot, "velmora.ConversationPluginRoot/1")
