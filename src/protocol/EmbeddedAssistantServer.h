// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The service's side of the Converse call.
#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>

#include "protocol/EmbeddedAssistantSession.h"

namespace velmora {

/// Listens on one address and gives every Converse call to a provider, on a thread of the call's own. Calls
/// of other methods are refused. Each call is logged with one line that names it. Belongs to one thread.
class Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantServer {
 public:
  using Provider = Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantProvider;

  /// Plaintext on `address` ("host:port"; port 0 takes a free one). Raises `std::runtime_error` with a line
  /// that says what to do when it cannot listen there.
  explicit Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantServer(const std::string &address);
  /// TLS with a private key and a certificate chain, both PEM files. Raises `std::runtime_error` too when one
  /// cannot be read or used.
  Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantServer(
      const std::string &address, const std::filesystem::path &keyFile,
      const std::filesystem::path &certificateChainFile);
  /// Stops, waiting as long as the provider takes to notice.
  ~Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantServer();

  [[nodiscard]] const std::string &address() const { return m_address; }
  /// The port in use.
  [[nodiscard]] int port() const;
  [[nodiscard]] Provider *provider() const { return m_provider; }

  /// How long a client may leave a response unread before its call is cut off; 10 seconds. Before the start.
  void setPatience(std::chrono::milliseconds patience);
  /// Starts to serve and returns at once. `provider` outlives the server. Once.
  void start(Provider &provider);
  /// Takes no new calls, cancels those that do not end within `grace`, and waits up to the same time again
  /// for the provider to return from them. Whether it did.
  bool stop(std::chrono::milliseconds grace);

 private:
  class Implementation;
  std::string m_address;
  Provider *m_provider = nullptr;
  std::unique_ptr<Implementation> m_implementation;
};

}  // namespace velmora
