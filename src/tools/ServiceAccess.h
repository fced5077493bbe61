// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <stdexcept>

#include "engine/LocalAssistant.h"
#include "foundation/Deployment.h"
#include "foundation/UserDefaults.h"
#include "tools/Options.h"
#include "tools/Report.h"

class QTemporaryDir;

namespace velmora {

/// Says in one line why no service can be talked to.
class ServiceError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The service that a command line asks for, and the token for it; with the local assistant running when that
/// is the one.
class ServiceAccess {
 public:
  /// The start of the local assistant is given up when `cancelDescriptor` becomes readable. Throws
  /// `UsageError` when the arguments leave open which service, and `ServiceError`, `DeploymentError` or
  /// `LocalAssistantError` when it cannot be used.
  ServiceAccess(const Options &options, int cancelDescriptor);
  ~ServiceAccess();

  /// Its roots are readable and hold a certificate.
  [[nodiscard]] const Deployment &deployment() const { return m_deployment; }
  /// Holds the token under "auth_token". The user's own store, unless a token came from elsewhere.
  [[nodiscard]] const UserDefaults &defaults() const {
    return m_ownDefaults ? *m_ownDefaults : UserDefaults::standard();
  }
  [[nodiscard]] ServiceDescription description() const;

 private:
  void chooseDeployment(const Options &options, int cancelDescriptor);
  void useRoots(const std::filesystem::path &file);
  void chooseToken(const Options &options);

  std::unique_ptr<LocalAssistant> m_assistant;
  std::unique_ptr<QTemporaryDir> m_rootsFolder;
  Deployment m_deployment;
  std::unique_ptr<UserDefaults> m_ownDefaults;
  TokenSource m_tokenSource = TokenSource::none;
};

}  // namespace velmora
