// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The client's view of the assistant service: a channel, and the metadata that goes with every call.
//
//   Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantService service("assistant.example", roots, {});
//   service.metadata().emplace("authorization", "Bearer " + token);
//   auto call = service.converse([](const CallResult &result) { … });
//   call->send(config);
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "protocol/EmbeddedAssistantConverseCall.h"

namespace velmora {

/// Serves any number of calls. Belongs to one thread; the calls do not.
class Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantService {
 public:
  using ConverseCall = Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantConverseCall;
  static constexpr const char *kConverseMethod =
      "/google.assistant.embedded.v1alpha1.EmbeddedAssistant/Converse";

  /// Plaintext to `address` ("host" or "host:port").
  explicit Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantService(const std::string &address);
  /// TLS to `address`, trusting `certificates` (PEM; without them the system's roots). `host` replaces the
  /// name that the server's certificate must bear and that calls are addressed to.
  Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantService(const std::string &address,
                                                              const std::optional<std::string> &certificates,
                                                              const std::optional<std::string> &host);

  [[nodiscard]] const std::shared_ptr<Channel> &channel() const { return m_channel; }
  /// Sent with every call started afterwards.
  [[nodiscard]] Metadata &metadata() { return m_metadata; }
  [[nodiscard]] const Metadata &metadata() const { return m_metadata; }

  /// Starts a call. `ended` gets its end exactly once, on the completion thread, and must not raise. Raises
  /// `CallError` when the metadata cannot be sent; there is no call then and `ended` is not called.
  [[nodiscard]] std::shared_ptr<ConverseCall> converse(ByteCall::EndCompletion ended) const;

 private:
  std::shared_ptr<Channel> m_channel;
  Metadata m_metadata;
};

}  // namespace velmora
