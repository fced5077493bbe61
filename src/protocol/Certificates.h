// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The TLS identity of the local assistant, made anew each time it starts.
#pragma once

#include <filesystem>

namespace velmora {

/// The files that `makeCertificates` leaves in its folder.
struct Certificates {
  std::filesystem::path roots;  ///< roots.pem: the certificate authority, what a client trusts
  std::filesystem::path chain;  ///< server.pem: the server's certificate, then the authority's
  std::filesystem::path key;    ///< server.key: the server's private key, readable by its owner only
};

/// Makes a certificate authority and a server certificate of it (EC P-256) for localhost and 127.0.0.1, and
/// writes them into `folder`, which must exist; files of these names are replaced. The authority's key is
/// forgotten, so that nothing else can ever be signed with it. Throws `std::runtime_error` with one line.
Certificates makeCertificates(const std::filesystem::path &folder);

}  // namespace velmora
