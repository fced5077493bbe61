// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// For a program that is to be small while nobody talks with it: part of that itself, so that the linker takes
// it and leaves the conversations in their library.
#include "engine/Conversation.h"
#include "foundation/Log.h"
#include "platform/Plugin.h"

namespace velmora {
namespace {

Plugin thePlugin() { return Plugin("velmora-conversation"); }

}  // namespace

ConversationFactory *conversationFactory(std::string &problem) {
  auto *const root = thePlugin().root<ConversationPluginRoot>(problem);
  return root != nullptr ? &root->factory(logLine) : nullptr;
}

void preloadConversations() { thePlugin().preload(); }

}  // namespace velmora
