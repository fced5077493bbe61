// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>

#include "platform/web/WebEngine.h"

namespace velmora {

class WebEnginePlugin : public QObject, public WebEngineFactory {
  Q_OBJECT
  Q_PLUGIN_METADATA(IID "velmora.WebEngineFactory/1")
  Q_INTERFACES(velmora::WebEngineFactory)

 public:
  std::unique_ptr<WebEngine> make(const WebEngineSettings &settings, WebEngineClient &client) override;
};

}  // namespace velmora
