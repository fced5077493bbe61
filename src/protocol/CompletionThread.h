// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The one thread on which the operations of all client calls complete, while there are channels.
#pragma once

#include <functional>
#include <memory>

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

/// There is one while anybody holds it; with the last channel it ends, and with it what gRPC has running by
/// itself. Every operation: any thread.
class CompletionThread {
 public:
  /// The one of this process, made when nobody has it. Who starts an operation holds it until that is over.
  static std::shared_ptr<CompletionThread> shared();
  /// Ends when what is waiting there has completed, which may be a moment later. When the process exits while
  /// it is still held, it stops at once, so that no completion runs while static objects go; calls that are
  /// under way then never end.
  ~CompletionThread();
  CompletionThread(const CompletionThread &) = delete;
  CompletionThread &operator=(const CompletionThread &) = delete;

  /// The `grpc::CompletionQueue`.
  [[nodiscard]] void *queue() const;
  /// Runs `work` on the thread, after what is already waiting there.
  void post(std::function<void()> work);
  /// True on the thread itself: blocking there for a completion would wait for ever.
  [[nodiscard]] static bool isCurrent();

 private:
  CompletionThread();
  struct Implementation;
  struct Running;
  Implementation *const m_implementation;  // the thread's
};

/// Initialises gRPC once: its own messages on standard error stay off unless GRPC_VERBOSITY asks for them.
/// Every constructor of the call layer calls it. Any thread.
void initialiseGrpc();

}  // namespace velmora
