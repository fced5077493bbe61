// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// One incoming Converse call as the service sees it, and who serves it.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "protocol/CallResult.h"
#include "protocol/Messages.h"

namespace velmora {

enum class Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantServerError { endOfStream };

/// The transport's side of one incoming call.
class ServerCall;

/// What every incoming call has. Belongs to the thread that serves the call.
class Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantSession {
 public:
  explicit Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantSession(ServerCall &handler)
      : m_handler(handler) {}

  /// How the call is going to end; 0 and "OK" unless the provider changes them.
  [[nodiscard]] int statusCode() const { return m_statusCode; }
  [[nodiscard]] const std::string &statusMessage() const { return m_statusMessage; }
  void setStatus(StatusCode code, std::string message) {
    m_statusCode = static_cast<int>(code);
    m_statusMessage = std::move(message);
  }
  /// Sent with the first response.
  [[nodiscard]] Metadata &initialMetadata() { return m_initialMetadata; }
  /// Sent at the end.
  [[nodiscard]] Metadata &trailingMetadata() { return m_trailingMetadata; }

 protected:
  [[nodiscard]] ServerCall &handler() const { return m_handler; }

 private:
  ServerCall &m_handler;
  int m_statusCode = 0;
  std::string m_statusMessage = "OK";
  Metadata m_initialMetadata;
  Metadata m_trailingMetadata;
};

class Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantConverseSession;

/// Serves Converse calls.
class Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantProvider {
 public:
  virtual ~Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantProvider() = default;
  /// Serves one call to its end, blocking, on a thread of that call; several run at once. What it raises ends
  /// the call with an error. It returns soon once the session's operations raise or `cancelled()` holds.
  virtual void converse(Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantConverseSession &session) = 0;
};

/// One Converse call.
class Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantConverseSession
    : public Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantSession {
 public:
  using Provider = Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantProvider;
  using Request = Google_Assistant_Embedded_V1alpha1_ConverseRequest;
  using Response = Google_Assistant_Embedded_V1alpha1_ConverseResponse;
  using ServerError = Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantServerError;

  Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantConverseSession(ServerCall &handler, Provider &provider)
      : Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantSession(handler), m_provider(provider) {}

  [[nodiscard]] Provider &provider() const { return m_provider; }

  /// The header fields that the client sent.
  [[nodiscard]] const Metadata &requestMetadata() const;
  /// The client has given the call up, its connection broke, or the server is stopping.
  [[nodiscard]] bool cancelled() const;

  /// The next request; nothing when `patience` ran out first, without a limit if it is absent. Raises
  /// `ServerError::endOfStream` when the client has sent all, `MessageError` (after a line in the log) when a
  /// request cannot be parsed.
  [[nodiscard]] std::optional<Request> receive(
      std::optional<std::chrono::milliseconds> patience = std::nullopt);
  /// Returns when the transport has taken the response. Raises `CallError` when the client is gone.
  void send(const Response &response);

 private:
  Provider &m_provider;
  bool m_metadataSent = false;
};

}  // namespace velmora
