// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "tools/Interruption.h"
#include "tools/Options.h"

namespace velmora {

// Both work on `UserDefaults::standard()`, under the keys "logged_in", "auth_token", "refresh_token" and
// "expires_in", and return the line to print. They throw what `ServiceAccess` does, and `ServiceError` with
// the one line to show.

/// Signs in at a deployment on this machine as a browser and a user would who allows it. Only a complete
/// answer changes what is stored.
[[nodiscard]] std::string signIn(const Options &options, const Interruption &interruption);

/// Forgets the tokens, and has them revoked where the deployment says where that is done; an error when that
/// fails comes after they are forgotten.
[[nodiscard]] std::string signOut(const Options &options, const Interruption &interruption);

}  // namespace velmora
