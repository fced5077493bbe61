// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "protocol/EmbeddedAssistantSession.h"

#include "foundation/Log.h"
#include "protocol/ServerCall.h"

namespace velmora {

using ConverseSession = Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantConverseSession;

const Metadata &ConverseSession::requestMetadata() const { return handler().metadata(); }

bool ConverseSession::cancelled() const { return handler().cancelled(); }

std::optional<ConverseSession::Request> ConverseSession::receive(
    std::optional<std::chrono::milliseconds> patience) {
  std::string bytes;
  switch (handler().receive(bytes, patience)) {
    case ServerCall::Received::nothingYet: return std::nullopt;
    case ServerCall::Received::endOfStream: throw ServerError{ServerError::endOfStream};
    case ServerCall::Received::message: break;
  }
  try {
    return Request::parse(bytes);
  } catch (const MessageError &error) {
    log("error ", error.what());
    throw;
  }
}

void ConverseSession::send(const Response &response) {
  if (!m_metadataSent) handler().addInitialMetadata(initialMetadata());
  m_metadataSent = true;
  if (!handler().send(response.serialize())) {
    throw CallError(CallError::Case::callEnded, "The client is gone");
  }
}

}  // namespace velmora
