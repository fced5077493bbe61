// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "protocol/EmbeddedAssistantService.h"

namespace velmora {

using Service = Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantService;

Service::Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantService(const std::string &address)
    : m_channel(Channel::insecure(address)) {}

Service::Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantService(
    const std::string &address, const std::optional<std::string> &certificates,
    const std::optional<std::string> &host)
    : m_channel(Channel::secure(address, certificates, host)) {}

std::shared_ptr<Service::ConverseCall> Service::converse(ByteCall::EndCompletion ended) const {
  return std::make_shared<ConverseCall>(
      std::make_unique<ByteCall>(m_channel, kConverseMethod, m_metadata, std::move(ended)));
}

}  // namespace velmora
