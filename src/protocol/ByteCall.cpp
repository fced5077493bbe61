// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "protocol/ByteCall.h"

#include <grpc/grpc.h>
#include <grpcpp/channel.h>
#include <grpcpp/generic/generic_stub.h>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <vector>

#include "protocol/CompletionThread.h"

namespace velmora {
namespace {

// How much is read before somebody asks for it. Above it the service is held back by flow control.
constexpr std::size_t kReadAhead = 256 * 1024;

grpc_slice asSlice(const std::string &text) {
  return grpc_slice_from_static_buffer(text.data(), text.size());
}

void checkLegal(const Metadata &metadata) {
  for (const auto &[key, value] : metadata) {
    const bool binary = key.ends_with("-bin");
    if (!grpc_header_key_is_legal(asSlice(key)) || key.starts_with("grpc-") ||
        (!binary && !grpc_header_nonbin_value_is_legal(asSlice(value)))) {
      // The value may be a secret.
      throw CallError(CallError::Case::illegalMetadata, "The header field \"" + key + "\" cannot be sent");
    }
  }
}

Metadata asMetadata(const std::multimap<grpc::string_ref, grpc::string_ref> &fields) {
  Metadata metadata;
  for (const auto &[key, value] : fields) {
    metadata.emplace(std::string(key.data(), key.size()), std::string(value.data(), value.size()));
  }
  return metadata;
}

/// Owns the message until the transport has done with it.
grpc::ByteBuffer asBuffer(std::string message) {
  auto *owned = new std::string(std::move(message));
  const grpc::Slice slice(
      owned->data(), owned->size(), [](void *text) { delete static_cast<std::string *>(text); }, owned);
  return grpc::ByteBuffer(&slice, 1);
}

std::string asString(grpc::ByteBuffer &buffer) {
  std::vector<grpc::Slice> slices;
  std::string message;
  if (!buffer.Dump(&slices).ok()) return message;
  message.reserve(buffer.Length());
  for (const grpc::Slice &slice : slices) {
    message.append(reinterpret_cast<const char *>(slice.begin()), slice.size());
  }
  return message;
}

CallError callEnded() { return {CallError::Case::callEnded, "The call has ended"}; }

/// Makes a completion's caller wait for it.
class Signal {
 public:
  void set() {
    const std::lock_guard lock(m_mutex);
    m_set = true;
    m_changed.notify_one();  // under the lock: the waiting side destroys this object as soon as it returns
  }
  void wait() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_set; });
  }

 private:
  std::mutex m_mutex;
  std::condition_variable m_changed;
  bool m_set = false;
};

/// Runs a completion with the lock released. It goes before the lock is taken again: what it holds may be the
/// last reference to the call, whose end needs the lock.
template <typename Completion, typename... Arguments>
void runUnlocked(std::unique_lock<std::mutex> &lock, Completion completion, Arguments &&...arguments) {
  if (!completion) return;
  lock.unlock();
  completion(std::forward<Arguments>(arguments)...);
  completion = nullptr;
  lock.lock();
}

void refuseOnCompletionThread() {
  if (CompletionThread::isCurrent()) {
    throw CallError(CallError::Case::completionThread, "A blocking operation would never end on this thread");
  }
}

}  // namespace

/// The call proper; operations under way keep it alive. Operations are issued under the mutex, completions
/// run outside it, on the completion thread only.
class ByteCall::Core : public std::enable_shared_from_this<Core> {
 public:
  Core(std::shared_ptr<Channel> channel, EndCompletion ended)
      : m_channel(std::move(channel)), m_ended(std::move(ended)) {}

  void start(const std::string &method, const Metadata &metadata);
  void send(std::string message, SendCompletion sent);
  void receive(ReceiveCompletion received);
  std::optional<std::string> receiveNow();
  void closeSend(std::function<void()> closed);
  void cancel();

 private:
  using Lock = std::unique_lock<std::mutex>;

  /// One kind of operation, of which at most one is under way.
  class Operation final : public CompletionTag {
   public:
    using Handler = void (Core::*)(Lock &lock, bool ok);
    Operation(Core &core, Handler handler) : m_core(core), m_handler(handler) {}

    [[nodiscard]] bool underWay() const { return m_alive != nullptr; }
    void *begin() {
      m_alive = m_core.shared_from_this();
      return asTag();
    }
    void complete(bool ok) override {
      std::shared_ptr<Core> alive;
      Lock lock(m_core.m_mutex);
      alive.swap(m_alive);
      (m_core.*m_handler)(lock, ok);
      lock.unlock();  // before the core may go
    }

   private:
    Core &m_core;
    Handler m_handler;
    std::shared_ptr<Core> m_alive;
  };

  struct Outgoing {
    std::string message;
    SendCompletion sent;
  };

  void onStarted(Lock &lock, bool ok);
  void onInitialMetadata(Lock &, bool) {}
  void onWritten(Lock &lock, bool ok);
  void onClosed(Lock &lock, bool ok);
  void onRead(Lock &lock, bool ok);
  void onFinished(Lock &lock, bool ok);

  void write();
  void readAhead();
  void deliver(Lock &lock);
  void deliverSoon();
  void failOutgoing(Lock &lock);
  void completeClose(Lock &lock);

  const std::shared_ptr<Channel> m_channel;
  std::mutex m_mutex;
  grpc::ClientContext m_context;
  std::unique_ptr<grpc::GenericClientAsyncReaderWriter> m_stream;
  Operation m_start{*this, &Core::onStarted};
  Operation m_readMetadata{*this, &Core::onInitialMetadata};
  Operation m_write{*this, &Core::onWritten};
  Operation m_close{*this, &Core::onClosed};
  Operation m_read{*this, &Core::onRead};
  Operation m_finish{*this, &Core::onFinished};

  std::deque<Outgoing> m_outgoing;
  SendCompletion m_writing;
  bool m_sendFailed = false;
  bool m_closing = false;  // closeSend was called
  std::function<void()> m_closed;

  grpc::ByteBuffer m_incoming;
  std::deque<std::string> m_messages;
  std::size_t m_messageBytes = 0;
  std::deque<ReceiveCompletion> m_receivers;
  bool m_delivering = false;
  bool m_endOfStream = false;

  bool m_cancelled = false;
  grpc::Status m_status;
  bool m_finished = false;
  EndCompletion m_ended;
};

void ByteCall::Core::start(const std::string &method, const Metadata &metadata) {
  for (const auto &[key, value] : metadata) m_context.AddMetadata(key, value);
  grpc::GenericStub stub(*static_cast<const std::shared_ptr<grpc::Channel> *>(m_channel->native()));
  auto *queue = static_cast<grpc::CompletionQueue *>(m_channel->completions().queue());
  const Lock lock(m_mutex);
  m_stream = stub.PrepareCall(&m_context, method, queue);
  // Nothing may be written before the start has completed: `write` waits for it.
  m_stream->StartCall(m_start.begin());
  m_stream->ReadInitialMetadata(m_readMetadata.begin());
  m_stream->Finish(&m_status, m_finish.begin());
  readAhead();
}

void ByteCall::Core::send(std::string message, SendCompletion sent) {
  const Lock lock(m_mutex);
  if (m_closing) throw CallError(CallError::Case::sendingClosed, "The sending side of the call is closed");
  if (m_finished || m_cancelled || m_sendFailed) throw callEnded();
  m_outgoing.push_back({std::move(message), std::move(sent)});
  write();
}

void ByteCall::Core::write() {
  if (m_start.underWay() || m_write.underWay() || m_close.underWay() || m_sendFailed) return;
  if (!m_outgoing.empty()) {
    Outgoing next = std::move(m_outgoing.front());
    m_outgoing.pop_front();
    m_writing = std::move(next.sent);
    grpc::WriteOptions options;
    // What is queued goes out in one piece with what follows it.
    if (!m_outgoing.empty()) options.set_buffer_hint();
    m_stream->Write(asBuffer(std::move(next.message)), options, m_write.begin());
  } else if (m_closing && m_closed) {
    m_stream->WritesDone(m_close.begin());
  }
}

void ByteCall::Core::onStarted(Lock &lock, bool ok) {
  m_sendFailed = !ok;
  if (ok) {
    write();
  } else {
    failOutgoing(lock);
  }
}

void ByteCall::Core::onWritten(Lock &lock, bool ok) {
  SendCompletion sent = std::exchange(m_writing, {});
  m_sendFailed = m_sendFailed || !ok;
  write();
  runUnlocked(lock, std::move(sent),
              ok ? std::nullopt
                 : std::optional(CallError(CallError::Case::sendFailed, "The message could not be sent")));
  if (m_sendFailed) failOutgoing(lock);
}

/// The transport takes nothing any more. The call's end follows by itself.
void ByteCall::Core::failOutgoing(Lock &lock) {
  while (!m_outgoing.empty()) {
    SendCompletion sent = std::move(m_outgoing.front().sent);
    m_outgoing.pop_front();
    runUnlocked(lock, std::move(sent), callEnded());
  }
  completeClose(lock);
}

void ByteCall::Core::closeSend(std::function<void()> closed) {
  const Lock lock(m_mutex);
  if (m_closing) throw CallError(CallError::Case::sendingClosed, "The sending side is closed already");
  if (m_cancelled || (m_finished && !m_status.ok())) throw callEnded();
  m_closing = true;
  m_closed = closed ? std::move(closed) : [] {};
  if (m_finished || m_sendFailed) {
    m_channel->completions().post([alive = shared_from_this()] {
      Lock locked(alive->m_mutex);
      alive->completeClose(locked);
    });
  } else {
    write();
  }
}

void ByteCall::Core::onClosed(Lock &lock, bool) { completeClose(lock); }

void ByteCall::Core::completeClose(Lock &lock) {
  if (m_close.underWay()) return;
  runUnlocked(lock, std::exchange(m_closed, {}));
}

void ByteCall::Core::readAhead() {
  if (m_read.underWay() || m_endOfStream || m_messageBytes >= kReadAhead) return;
  m_stream->Read(&m_incoming, m_read.begin());
}

void ByteCall::Core::onRead(Lock &lock, bool ok) {
  if (ok) {
    m_messages.push_back(asString(m_incoming));
    m_incoming.Clear();
    // An empty message costs memory too.
    m_messageBytes += m_messages.back().size() + sizeof(std::string);
    readAhead();
  } else {
    m_endOfStream = true;
  }
  deliver(lock);
}

/// Hands messages to receivers in order. Completion thread only.
void ByteCall::Core::deliver(Lock &lock) {
  while (!m_receivers.empty() && (!m_messages.empty() || m_endOfStream)) {
    ReceiveCompletion receiver = std::move(m_receivers.front());
    m_receivers.pop_front();
    m_delivering = true;
    std::optional<std::string> message;
    if (!m_messages.empty()) {
      message = std::move(m_messages.front());
      m_messages.pop_front();
      m_messageBytes -= message->size() + sizeof(std::string);
      readAhead();
    }
    runUnlocked(lock, std::move(receiver), std::move(message));
    m_delivering = false;
  }
}

void ByteCall::Core::deliverSoon() {
  m_channel->completions().post([alive = shared_from_this()] {
    Lock lock(alive->m_mutex);
    alive->deliver(lock);
  });
}

void ByteCall::Core::receive(ReceiveCompletion received) {
  const Lock lock(m_mutex);
  m_receivers.push_back(std::move(received));
  // Inside a delivery its loop finds the new receiver.
  if (!m_delivering && (!m_messages.empty() || m_endOfStream)) deliverSoon();
}

std::optional<std::string> ByteCall::Core::receiveNow() {
  refuseOnCompletionThread();
  Signal arrived;
  std::optional<std::string> message;
  {
    const Lock lock(m_mutex);
    // What is there is taken at once, unless somebody who asked earlier is still to be served.
    if (m_receivers.empty() && !m_delivering) {
      if (!m_messages.empty()) {
        message = std::move(m_messages.front());
        m_messages.pop_front();
        m_messageBytes -= message->size() + sizeof(std::string);
        readAhead();
        return message;
      }
      if (m_endOfStream) return std::nullopt;
    }
    m_receivers.emplace_back([&](std::optional<std::string> next) {
      message = std::move(next);
      arrived.set();
    });
  }
  arrived.wait();
  return message;
}

void ByteCall::Core::onFinished(Lock &lock, bool) {
  m_finished = true;
  CallResult result{.statusCode = m_status.error_code(),
                    .trailingMetadata = asMetadata(m_context.GetServerTrailingMetadata())};
  if (!m_readMetadata.underWay()) result.initialMetadata = asMetadata(m_context.GetServerInitialMetadata());
  if (!m_status.error_message().empty()) result.statusMessage = m_status.error_message();
  if (!m_status.error_details().empty()) result.resultData = m_status.error_details();
  if (!m_write.underWay()) failOutgoing(lock);
  runUnlocked(lock, std::exchange(m_ended, {}), result);
}

void ByteCall::Core::cancel() {
  {
    const Lock lock(m_mutex);
    m_cancelled = true;
  }
  m_context.TryCancel();
}

ByteCall::ByteCall(const std::shared_ptr<Channel> &channel, const std::string &method,
                   const Metadata &metadata, EndCompletion ended) {
  checkLegal(metadata);
  m_core = std::make_shared<Core>(channel, std::move(ended));
  m_core->start(method, metadata);
}

ByteCall::~ByteCall() { m_core->cancel(); }

void ByteCall::send(std::string message, SendCompletion sent) {
  m_core->send(std::move(message), std::move(sent));
}

void ByteCall::receive(ReceiveCompletion received) { m_core->receive(std::move(received)); }

std::optional<std::string> ByteCall::receive() {
  const std::shared_ptr<Core> core = m_core;  // another thread may destroy the call meanwhile
  return core->receiveNow();
}

void ByteCall::closeSend(std::function<void()> closed) { m_core->closeSend(std::move(closed)); }

void ByteCall::closeSend() {
  refuseOnCompletionThread();
  Signal closed;
  m_core->closeSend([&] { closed.set(); });
  closed.wait();
}

void ByteCall::cancel() { m_core->cancel(); }

}  // namespace velmora
