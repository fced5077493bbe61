// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>

#include "auth/HttpEngine.h"

namespace velmora {

class HttpPlugin : public QObject, public HttpEngine {
  Q_OBJECT
  Q_PLUGIN_METADATA(IID "velmora.HttpEngine/1")
  Q_INTERFACES(velmora::HttpEngine)

 public:
  [[nodiscard]] std::unique_ptr<HttpSession> makeSession(const HttpLimits &limits) override;
};

}  // namespace velmora
