// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// One bidirectional Converse call: requests out, responses in.
#pragma once

#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "protocol/ByteCall.h"
#include "protocol/Messages.h"

namespace velmora {

/// What a receive may end with instead of a response.
class Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantClientError : public std::exception {
 public:
  enum class Case {
    error,                   ///< a call's end, for callers that keep it beside the other two
    endOfStream,             ///< no further response will come
    invalidMessageReceived,  ///< a response that cannot be parsed; the stream goes on
  };

  [[nodiscard]] static Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantClientError error(
      CallResult result);
  [[nodiscard]] static Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantClientError endOfStream();
  [[nodiscard]] static Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantClientError
  invalidMessageReceived();

  [[nodiscard]] Case errorCase() const { return m_case; }
  /// The name of the case.
  [[nodiscard]] const char *name() const;
  /// The call's end in the case `error`.
  [[nodiscard]] const std::optional<CallResult> &result() const { return m_result; }
  /// What happened, for a person.
  [[nodiscard]] const char *what() const noexcept override { return m_text.c_str(); }

 private:
  Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantClientError(Case errorCase, std::string text)
      : m_case(errorCase), m_text(std::move(text)) {}

  Case m_case;
  std::string m_text;
  std::optional<CallResult> m_result;
};

/// A started call. Every operation may be called on any thread; completions run on the completion thread, one
/// at a time, must not raise, and each runs exactly once. Destroying the call cancels it; completions that
/// are still due then see its end.
class Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantConverseCall {
 public:
  using Request = Google_Assistant_Embedded_V1alpha1_ConverseRequest;
  using Response = Google_Assistant_Embedded_V1alpha1_ConverseResponse;
  using ClientError = Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantClientError;
  /// Exactly one of the two is there.
  using ReceiveCompletion =
      std::function<void(std::optional<Response> response, std::optional<ClientError> error)>;

  explicit Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantConverseCall(std::unique_ptr<ByteCall> call)
      : m_call(std::move(call)) {}

  /// Queues `message` behind those sent before. `sent` is told when the transport has it, or why not.
  /// Raises `CallError` after the end or after `closeSend`, `MessageError` if it cannot be serialised.
  void send(const Request &message, ByteCall::SendCompletion sent = {});

  /// Asks for one response.
  void receive(ReceiveCompletion received);
  /// The next response; blocks without a limit. Raises `ClientError`, or `CallError` on the completion
  /// thread.
  [[nodiscard]] Response receive();

  /// Ends the sending side behind what was sent. Raises `CallError` when that is done already or the call has
  /// failed; a call that the service has ended well counts as closed.
  void closeSend(std::function<void()> closed);
  /// The same, blocking without a limit.
  void closeSend();

  /// The service's completion then gets the final status.
  void cancel();

 private:
  std::unique_ptr<ByteCall> m_call;
};

}  // namespace velmora
