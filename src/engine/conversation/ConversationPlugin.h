// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>

#include "engine/Conversation.h"

namespace velmora {

class ConversationPlugin : public QObject, public ConversationPluginRoot {
  Q_OBJECT
  Q_PLUGIN_METADATA(IID "velmora.ConversationPluginRoot/1")
  Q_INTERFACES(velmora::ConversationPluginRoot)

 public:
  ConversationFactory &factory(const std::function<void(std::string_view line)> &log) override;
};

}  // namespace velmora
