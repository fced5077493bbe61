// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// One bidirectional streaming call that carries messages as bytes. It accepts sends at any rate and keeps
// them in order, and reads a bounded amount ahead, so that a reader who takes the messages one by one does
// not pay a change of threads for each.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "protocol/CallResult.h"
#include "protocol/Channel.h"

namespace velmora {

/// Every operation may be called on any thread. Completions run on the completion thread, one at a time and
/// in the order of what they complete; each given one runs exactly once, also when the call is destroyed
/// first.
class ByteCall {
 public:
  using EndCompletion = std::function<void(const CallResult &result)>;
  /// The next message, or nothing at the end of the stream.
  using ReceiveCompletion = std::function<void(std::optional<std::string> message)>;
  /// Nothing when the transport has taken the message.
  using SendCompletion = std::function<void(const std::optional<CallError> &error)>;

  /// Starts the call. Raises `CallError::Case::illegalMetadata`; everything else is told by `ended`.
  ByteCall(const std::shared_ptr<Channel> &channel, const std::string &method, const Metadata &metadata,
           EndCompletion ended);
  /// Cancels what is under way. Does not wait.
  ~ByteCall();
  ByteCall(const ByteCall &) = delete;
  ByteCall &operator=(const ByteCall &) = delete;

  /// Raises `CallError` once the call has ended or its sending side is closed.
  void send(std::string message, SendCompletion sent);

  void receive(ReceiveCompletion received);
  /// Blocks without a limit. Raises `CallError` on the completion thread.
  [[nodiscard]] std::optional<std::string> receive();

  /// Ends the sending side after what was given to `send`. A call that has ended well needs no closing: it is
  /// completed at once. Raises `CallError` when closed before or when the call has failed.
  void closeSend(std::function<void()> closed);
  /// Blocks without a limit. Raises `CallError`, also on the completion thread.
  void closeSend();

  void cancel();

 private:
  class Core;
  std::shared_ptr<Core> m_core;
};

}  // namespace velmora
