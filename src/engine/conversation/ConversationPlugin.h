// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>

#include "engine/Conversation.h"

namespace velmora {

class ConversationPlugin : public QObject, public ConversationFactory {
  Q_OBJECT
  Q_PLUGIN_METADATA(IID "velmora.ConversationFactory/1")
  Q_INTERFACES(velmora::ConversationFactory)

 public:
  std::unique_ptr<Conversation> make(ConversationTextDelegate &delegate, ConversationObserver &observer,
                                     const Deployment &deployment, const UserDefaults &defaults,
                                     const std::function<void(std::string_view line)> &log) override;
};

}  // namespace velmora
