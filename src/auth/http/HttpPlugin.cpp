// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "auth/http/HttpPlugin.h"

#include "auth/http/NetworkSession.h"

namespace velmora {

std::unique_ptr<HttpSession> HttpPlugin::makeSession(const HttpLimits &limits) {
  return makeNetworkSession(limits);
}

}  // namespace velmora
