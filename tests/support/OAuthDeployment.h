// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "foundation/Deployment.h"
#include "support/TemporaryFolder.h"

namespace velmora::tests {

/// A deployment's folder whose client description names `authUrl` and `tokenUrl`.
inline Deployment oauthDeployment(const TemporaryFolder &folder, const std::string &authUrl,
                                  const std::string &tokenUrl) {
  (void)folder.write("google_oauth2.json",
                     R"({"installed": {"auth_uri": ")" + authUrl + R"(", "token_uri": ")" + tokenUrl + R"(",
      "redirect_uris": ["urn:ietf:wg:oauth:2.0:oob", "http://localhost/"],
      "client_id": "me & you+1", "client_secret": "s=ü/"}})");
  return {.folder = folder.path(),
          .host = "127.0.0.1",
          .scope = "https://scope/a b",
          .loopbackPrefix = "http://localhost"};
}

}  // namespace velmora::tests
