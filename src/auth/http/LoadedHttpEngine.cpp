// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// For a program that is to be small while nothing is asked of a provider: part of that itself, so that the
// linker takes it and leaves the engine in its library.
#include "auth/HttpEngine.h"
#include "platform/Plugin.h"

namespace velmora {

HttpEngine *httpEngine(std::string &problem) {
  return Plugin("velmora-http-engine").root<HttpEngine>(problem);
}

}  // namespace velmora
