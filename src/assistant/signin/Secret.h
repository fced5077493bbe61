// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Secrets of the sign-in: how they are made, kept and compared. Any thread.
#pragma once

#include <string>
#include <string_view>

namespace velmora {

/// 256 bits of OpenSSL's generator in 43 characters of base64url, which addresses and headers carry as they
/// are. Throws `std::runtime_error` when there is no randomness.
[[nodiscard]] std::string newSecret();

/// A second secret that whoever holds `secret` can make again, and from which nobody can tell the first one.
[[nodiscard]] std::string secretDerivedFrom(std::string_view secret);

/// SHA-256 in 64 hexadecimal digits: what is kept of a secret.
[[nodiscard]] std::string digestOf(std::string_view text);

/// SHA-256 in base64, as a content security policy names a style.
[[nodiscard]] std::string base64DigestOf(std::string_view text);

/// Whether `secret` is the one that `digest` was made of; takes as long when it is not.
[[nodiscard]] bool matchesDigest(std::string_view secret, std::string_view digest);

}  // namespace velmora
