// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// A deployment: the folder that tells Velmora which assistant service it talks to.
//
//   deployment.json       {"host": "…", "port": 443, "scope": "…", "loopback_prefix": "http://localhost",
//                          "links": {"forum": "https://…", "fan_page": "…", "microblog": "…", "home": "…"}}
//   roots.pem             the TLS roots
//   google_oauth2.json    the client description of the sign-in
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "foundation/File.h"

namespace velmora {

/// Says in one line which file of a deployment is wrong and how.
class DeploymentError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Pages of those who run a service, for people: http or https, or empty where there is none.
struct DeploymentLinks {
  std::string forum = {};
  std::string fanPage = {};
  std::string microblog = {};
  std::string home = {};
};

/// An immutable record; safe to copy between threads.
struct Deployment {
  std::filesystem::path folder;
  std::string host;                        ///< name or IP literal, without a port
  std::optional<std::uint16_t> port = {};  ///< absent: the default TLS port
  std::string scope = {};                  ///< what a sign-in asks for
  std::string loopbackPrefix = {};         ///< how the address begins to which a sign-in redirects
  DeploymentLinks links = {};

  /// Reads `folder`/deployment.json. Throws `DeploymentError`; `host` is the only member that must be there.
  [[nodiscard]] static Deployment load(const std::filesystem::path &folder);

  /// Where the user's deployment is: `named` (a program's argument) if given, else the environment variable
  /// VELMORA_DEPLOYMENT, else velmora/deployment in the user's configuration folder if that exists.
  [[nodiscard]] static std::optional<std::filesystem::path> configuredFolder(
      const std::optional<std::filesystem::path> &named);

  /// The file that the deployment brings as `name`.`type`; it may be missing.
  [[nodiscard]] std::filesystem::path resource(std::string_view name, std::string_view type) const;

  /// "host" or "host:port", with an IPv6 literal in brackets where a port follows.
  [[nodiscard]] std::string address() const;
};

}  // namespace velmora
