// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>

#include "auth/HttpEngine.h"

namespace velmora {

/// By the toolkit's network library.
std::unique_ptr<HttpSession> makeNetworkSession(const HttpLimits &limits);

}  // namespace velmora
