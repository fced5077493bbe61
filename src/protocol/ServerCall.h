// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "protocol/CallResult.h"

namespace velmora {

/// One incoming call of any method, as bytes. Once accepted it belongs to one thread, which also does the
/// call's network work while it waits in one of the operations.
class ServerCall {
 public:
  struct Implementation;
  explicit ServerCall(std::unique_ptr<Implementation> implementation);
  ~ServerCall();
  ServerCall(const ServerCall &) = delete;
  ServerCall &operator=(const ServerCall &) = delete;

  [[nodiscard]] std::string host() const;
  [[nodiscard]] std::string method() const;
  [[nodiscard]] std::string peer() const;
  /// The header fields that the client sent.
  [[nodiscard]] const Metadata &metadata() const;
  /// The client gave the call up, its connection broke, or the server is stopping.
  [[nodiscard]] bool cancelled();

  enum class Received { message, endOfStream, nothingYet };
  /// Waits for the next message until `patience` has run out; without one, for as long as it takes.
  [[nodiscard]] Received receive(std::string &message, std::optional<std::chrono::milliseconds> patience);
  /// Returns when the transport has taken the message; false when the client is gone, or was cut off because
  /// it did not take what was sent to it within the server's patience.
  [[nodiscard]] bool send(const std::string &message);
  /// Before the first message, with which it goes.
  void addInitialMetadata(const Metadata &metadata);
  /// Ends the call; cuts a client off that does not take the end within the server's patience. The last
  /// operation.
  void finish(int statusCode, const std::string &statusMessage, const Metadata &trailingMetadata);

 private:
  std::unique_ptr<Implementation> m_implementation;
};

}  // namespace velmora
