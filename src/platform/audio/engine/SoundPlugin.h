// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>

#include "platform/audio/SoundEngine.h"

namespace velmora {

class SoundPlugin : public QObject, public SoundEngineFactory {
  Q_OBJECT
  Q_PLUGIN_METADATA(IID "velmora.SoundEngineFactory/1")
  Q_INTERFACES(velmora::SoundEngineFactory)

 public:
  const SoundEngine &engine(const std::function<void(std::string_view line)> &log) override;
};

}  // namespace velmora
