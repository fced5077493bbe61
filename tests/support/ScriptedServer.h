// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "foundation/Deployment.h"
#include "protocol/CallResult.h"

namespace velmora::tests {

/// A Converse service over real TLS on loopback that does what a test tells it, byte by byte. It is made of
/// gRPC's own parts only, so that our server cannot hide a fault of our client.
class ScriptedServer {
 public:
  /// One call, on a thread of the server.
  class Call {
   public:
    virtual ~Call() = default;
    /// The bytes of the next request; nothing when the client has sent all or is gone.
    virtual std::optional<std::string> read() = 0;
    /// Sends bytes as one response, whatever they are. False when the client is gone.
    virtual bool write(const std::string &bytes) = 0;
    /// The header fields of the call.
    [[nodiscard]] virtual const Metadata &metadata() const = 0;
    /// Reads until the client closes its side or is gone.
    void readAll() {
      while (read()) {
      }
    }
    /// Blocks until the client gives the call up.
    virtual void waitForCancel() const = 0;
  };
  struct End {
    StatusCode code = StatusCode::ok;
    std::string message = {};
  };
  using Script = std::function<End(Call &call)>;

  explicit ScriptedServer(Script script);
  ~ScriptedServer();

  /// One that has what turns need: the roots and the address.
  [[nodiscard]] const Deployment &deployment() const { return m_deployment; }
  [[nodiscard]] std::string roots() const;  ///< PEM

 private:
  struct Implementation;
  std::unique_ptr<Implementation> m_implementation;
  Deployment m_deployment;
};

}  // namespace velmora::tests
