// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Where the sign-in is kept in the user's settings. Whoever writes false under `kLoggedInKey` signs the user
// out; the application then removes the other three.
#pragma once

#include <QLatin1String>

namespace velmora {

/// Boolean: the user has completed the sign-in.
inline constexpr QLatin1String kLoggedInKey("logged_in");
/// Text: the access token of the Converse service.
inline constexpr QLatin1String kAuthTokenKey("auth_token");
/// Text: what a new access token is asked for with.
inline constexpr QLatin1String kRefreshTokenKey("refresh_token");
/// Date: the instant at which the access token expires, and not for how long it holds.
inline constexpr QLatin1String kExpiresInKey("expires_in");

}  // namespace velmora
