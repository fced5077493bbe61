// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The one thread on which the operations of all client calls complete.
#pragma once

#include <functional>

namespace velmora {

/// An operation under way. It is handed to the completion queue as a `void *` made by `asTag`.
class CompletionTag {
 public:
  /// The operation is over; `ok` is gRPC's. Completion thread.
  virtual void complete(bool ok) = 0;

  /// The pointer for the queue. Tells ThreadSanitizer that what was written before is handed over.
  void *asTag();

 protected:
  ~CompletionTag() = default;
};

/// Started on first use. It stops when the process exits, so that no completion runs while static objects go;
/// calls that are still under way then never end. Every operation: any thread.
class CompletionThread {
 public:
  static CompletionThread &instance();

  /// The `grpc::CompletionQueue`.
  [[nodiscard]] void *queue() const;
  /// Runs `work` on the thread, after what is already waiting there.
  void post(std::function<void()> work);
  /// True on the thread itself: blocking there for a completion would wait for ever.
  [[nodiscard]] static bool isCurrent();

 private:
  CompletionThread();
  ~CompletionThread();
  struct Implementation;
  Implementation *m_implementation;  // never deleted: calls may be given up after the thread has stopped
};

/// Initialises gRPC once: its own messages on standard error stay off unless GRPC_VERBOSITY asks for them.
/// Every constructor of the call layer calls it. Any thread.
void initialiseGrpc();

}  // namespace velmora
