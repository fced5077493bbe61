// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "protocol/EmbeddedAssistantConverseCall.h"

namespace velmora {

using ConverseCall = Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantConverseCall;
using ClientError = Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantClientError;

ClientError ClientError::error(CallResult result) {
  ClientError error(Case::error, "The call " + result.description());
  error.m_result = std::move(result);
  return error;
}

ClientError ClientError::endOfStream() { return {Case::endOfStream, "The stream of responses has ended"}; }

ClientError ClientError::invalidMessageReceived() {
  return {Case::invalidMessageReceived, "A response could not be understood"};
}

const char *ClientError::name() const {
  switch (m_case) {
    case Case::error: return "error";
    case Case::endOfStream: return "endOfStream";
    case Case::invalidMessageReceived: return "invalidMessageReceived";
  }
  return "unknown";
}

void ConverseCall::send(const Request &message, ByteCall::SendCompletion sent) {
  m_call->send(message.serialize(), std::move(sent));
}

void ConverseCall::receive(ReceiveCompletion received) {
  m_call->receive([received = std::move(received)](std::optional<std::string> bytes) {
    if (!bytes) return received(std::nullopt, ClientError::endOfStream());
    std::optional<Response> response;
    try {
      response = Response::parse(*bytes);
    } catch (const MessageError &) {
      return received(std::nullopt, ClientError::invalidMessageReceived());
    }
    received(std::move(response), std::nullopt);
  });
}

ConverseCall::Response ConverseCall::receive() {
  const std::optional<std::string> bytes = m_call->receive();
  if (!bytes) throw ClientError::endOfStream();
  try {
    return Response::parse(*bytes);
  } catch (const MessageError &) {
    throw ClientError::invalidMessageReceived();
  }
}

void ConverseCall::closeSend(std::function<void()> closed) { m_call->closeSend(std::move(closed)); }

void ConverseCall::closeSend() { m_call->closeSend(); }

void ConverseCall::cancel() { m_call->cancel(); }

}  // namespace velmora
