// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <optional>
#include <string>

namespace velmora {

class CompletionThread;

/// A connection to a service, made when the first call needs it and again after it broke. With the
/// last one of the process gRPC ends whatever it has running. Any thread.
class Channel {
 public:
  /// Plaintext. `address` is "host" or "host:port"; the port defaults to 443.
  [[nodiscard]] static std::shared_ptr<Channel> insecure(const std::string &address);
  /// TLS, trusting `rootCertificates` (PEM; without them, the system's). The server's certificate must be for
  /// `hostNameOverride` if given, which is then also the authority that calls name, else for the address.
  [[nodiscard]] static std::shared_ptr<Channel> secure(const std::string &address,
                                                       const std::optional<std::string> &rootCertificates,
                                                       const std::optional<std::string> &hostNameOverride);
  ~Channel();
  Channel(const Channel &) = delete;
  Channel &operator=(const Channel &) = delete;

  [[nodiscard]] const std::string &address() const { return m_address; }
  /// Where the operations of its calls complete.
  [[nodiscard]] CompletionThread &completions() const;
  /// The `std::shared_ptr<grpc::Channel>`.
  [[nodiscard]] const void *native() const;

 private:
  struct Implementation;
  Channel(std::string address, std::unique_ptr<Implementation> implementation);

  std::string m_address;
  std::unique_ptr<Implementation> m_implementation;
};

/// `address` with ":443" where an IP literal lacks a port; gRPC takes port 0 for these.
[[nodiscard]] std::string withDefaultPort(const std::string &address);
/// Whether `address` is this machine by its own name or number.
[[nodiscard]] bool isLoopback(const std::string &address);

}  // namespace velmora
