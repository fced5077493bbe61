// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "engine/conversation/ConversationPlugin.h"

#include "foundation/Log.h"

namespace velmora {

ConversationFactory &ConversationPlugin::factory(const std::function<void(std::string_view line)> &log) {
  // What the plugin has of the log is its own, with one sink: the program's log.
  setLogSink(log);
  std::string problem;
  return *conversationFactory(problem);
}

}  // namespace velmora
