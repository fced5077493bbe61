// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "tools/ServiceAccess.h"

#include <QTemporaryDir>

#include "auth/TokenStore.h"

namespace velmora {
namespace {

/// What the engine would end the program for, or what would fail only in the call with a text about
/// handshakes.
std::string readRoots(const std::filesystem::path &file) {
  std::string roots;
  try {
    roots = readFile(file);
  } catch (const std::runtime_error &error) {
    throw ServiceError(std::string("the TLS roots cannot be read: ") + error.what());
  }
  if (roots.find("-----BEGIN CERTIFICATE-----") == std::string::npos) {
    throw ServiceError("the TLS roots hold no PEM certificate: " + file.string());
  }
  return roots;
}

}  // namespace

ServiceAccess::ServiceAccess(const Options &options, int cancelDescriptor) {
  chooseDeployment(options, cancelDescriptor);
  if (options.endpoint) {
    m_deployment.host = options.endpoint->host;
    m_deployment.port = options.endpoint->port;
  }
  if (options.roots) useRoots(*options.roots);
  (void)readRoots(m_deployment.resource("roots", "pem"));
  chooseToken(options);
}

ServiceAccess::~ServiceAccess() = default;

void ServiceAccess::chooseDeployment(const Options &options, int cancelDescriptor) {
  const bool complete = options.endpoint && options.roots;
  const auto folder = options.local ? std::nullopt : Deployment::configuredFolder(options.deployment);
  if (folder && !(complete && !options.deployment)) {
    m_deployment = Deployment::load(*folder);
  } else if (!complete) {
    if (options.endpoint) throw UsageError("--endpoint needs --roots where no deployment is configured");
    if (options.roots) throw UsageError("--roots needs --endpoint where no deployment is configured");
    m_assistant =
        std::make_unique<LocalAssistant>(LocalAssistant::Settings{.cancelDescriptor = cancelDescriptor});
    m_deployment = m_assistant->deployment();
  }
}

/// The engine takes the roots from a deployment's folder: a private one with nothing else in it serves.
void ServiceAccess::useRoots(const std::filesystem::path &file) {
  const std::string roots = readRoots(file);
  m_rootsFolder = std::make_unique<QTemporaryDir>();
  if (!m_rootsFolder->isValid()) {
    throw ServiceError("the TLS roots cannot be copied: " + m_rootsFolder->errorString().toStdString());
  }
  m_deployment.folder = m_rootsFolder->path().toStdString();
  try {
    writeFile(m_deployment.resource("roots", "pem"), roots);
  } catch (const std::runtime_error &error) {
    throw ServiceError(std::string("the TLS roots cannot be copied: ") + error.what());
  }
}

void ServiceAccess::chooseToken(const Options &options) {
  if (!options.token && !m_assistant) {
    const std::string stored = UserDefaults::standard().stringForKey(kAuthTokenKey).toStdString();
    if (!fitsHeader(stored)) {
      throw ServiceError("the stored token is damaged: sign in anew, or give a valid one with --token");
    }
    m_tokenSource = stored.empty() ? TokenSource::none : TokenSource::stored;
    return;
  }
  const std::string token = options.token ? *options.token : m_assistant->token();
  m_tokenSource = options.token ? TokenSource::argument : TokenSource::localAssistant;
  m_ownDefaults = std::make_unique<UserDefaults>();
  m_ownDefaults->setObject(QString::fromStdString(token), kAuthTokenKey);
}

ServiceDescription ServiceAccess::description() const {
  return {.address = m_deployment.address(), .tokenSource = m_tokenSource};
}

}  // namespace velmora
