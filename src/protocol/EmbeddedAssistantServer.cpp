// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "protocol/EmbeddedAssistantServer.h"

#include <grpcpp/generic/async_generic_service.h>
#include <grpcpp/security/server_credentials.h>
#include <grpcpp/server.h>
#include <grpcpp/server_builder.h>

#include <array>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

#include "foundation/Deployment.h"
#include "foundation/Log.h"
#include "protocol/CompletionThread.h"
#include "protocol/EmbeddedAssistantService.h"
#include "protocol/ServerCall.h"

namespace velmora {
namespace {

using Server = Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantServer;
using Provider = Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantProvider;
using ConverseSession = Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantConverseSession;
// Each call has a thread; more than this many at once is no use of a machine that anybody intends.
constexpr int kMostCalls = 64;
/// A request is a tenth of a second of audio, a few kilobytes; no client has a use for more than this.
constexpr int kLargestRequest = 1 << 20;
constexpr int kHandshakeMilliseconds = 10'000;
/// Who is refused waits in nobody's way.
constexpr std::chrono::milliseconds kRefusalPatience{100};

gpr_timespec after(std::chrono::milliseconds duration) {
  return gpr_time_add(gpr_now(GPR_CLOCK_MONOTONIC), gpr_time_from_millis(duration.count(), GPR_TIMESPAN));
}

gpr_timespec atOnce() { return gpr_inf_past(GPR_CLOCK_MONOTONIC); }

gpr_timespec never() { return gpr_inf_future(GPR_CLOCK_MONOTONIC); }

std::string asString(grpc::ByteBuffer &buffer) {
  grpc::Slice slice;
  if (!buffer.TrySingleSlice(&slice).ok() && !buffer.DumpToSingleSlice(&slice).ok()) return {};
  return {reinterpret_cast<const char *>(slice.begin()), slice.size()};
}

}  // namespace

/// The call's own queue is polled by the thread that serves it, so that no message changes threads.
struct ServerCall::Implementation {
  enum Operation : std::size_t { kDone, kRead, kWrite, kFinish, kOperations };

  grpc::CompletionQueue queue;
  grpc::GenericServerContext context;
  grpc::GenericServerAsyncReaderWriter stream{&context};
  grpc::ByteBuffer incoming;
  Metadata metadata;
  bool reading = false;
  std::chrono::milliseconds patience;
  struct Outcome {
    bool known = false;
    bool ok = false;
  };
  std::array<Outcome, kOperations> outcomes;

  explicit Implementation(std::chrono::milliseconds sendPatience) : patience(sendPatience) {
    context.AsyncNotifyWhenDone(tag(kDone));
  }

  ~Implementation() {
    queue.Shutdown();
    void *ignored = nullptr;
    bool ok = false;
    while (queue.Next(&ignored, &ok)) {
    }
  }

  void *tag(Operation operation) { return &outcomes[operation]; }

  /// Whether `operation` is over before `deadline`; what else is over meanwhile is remembered.
  bool waitFor(Operation operation, gpr_timespec deadline) {
    while (!outcomes[operation].known) {
      void *pointer = nullptr;
      bool ok = false;
      if (queue.AsyncNext(&pointer, &ok, deadline) != grpc::CompletionQueue::GOT_EVENT) return false;
      *static_cast<Outcome *>(pointer) = {.known = true, .ok = ok};
    }
    return true;
  }

  /// Waits for something that is sent; breaks the call when the client does not take it.
  void waitForTransport(Operation operation) {
    if (waitFor(operation, after(patience))) return;
    context.TryCancel();
    (void)waitFor(operation, never());
  }

  bool take(Operation operation) {
    const bool ok = outcomes[operation].ok;
    outcomes[operation] = {};
    return ok;
  }
};

ServerCall::ServerCall(std::unique_ptr<Implementation> implementation)
    : m_implementation(std::move(implementation)) {
  for (const auto &[key, value] : m_implementation->context.client_metadata()) {
    m_implementation->metadata.emplace(std::string(key.data(), key.size()),
                                       std::string(value.data(), value.size()));
  }
}

ServerCall::~ServerCall() = default;

std::string ServerCall::host() const { return m_implementation->context.host(); }

std::string ServerCall::method() const { return m_implementation->context.method(); }

std::string ServerCall::peer() const { return m_implementation->context.peer(); }

const Metadata &ServerCall::metadata() const { return m_implementation->metadata; }

bool ServerCall::cancelled() {
  return m_implementation->waitFor(Implementation::kDone, atOnce()) &&
         m_implementation->context.IsCancelled();
}

ServerCall::Received ServerCall::receive(std::string &message,
                                         std::optional<std::chrono::milliseconds> patience) {
  Implementation &call = *m_implementation;
  if (!call.reading) {
    call.stream.Read(&call.incoming, call.tag(Implementation::kRead));
    call.reading = true;
  }
  if (!call.waitFor(Implementation::kRead, patience ? after(*patience) : never()))
    return Received::nothingYet;
  call.reading = false;
  if (!call.take(Implementation::kRead)) return Received::endOfStream;
  message = asString(call.incoming);
  return Received::message;
}

bool ServerCall::send(const std::string &message) {
  const grpc::Slice slice(message);
  m_implementation->stream.Write(grpc::ByteBuffer(&slice, 1), m_implementation->tag(Implementation::kWrite));
  m_implementation->waitForTransport(Implementation::kWrite);
  return m_implementation->take(Implementation::kWrite);
}

void ServerCall::addInitialMetadata(const Metadata &metadata) {
  for (const auto &[key, value] : metadata) m_implementation->context.AddInitialMetadata(key, value);
}

void ServerCall::finish(int statusCode, const std::string &statusMessage, const Metadata &trailingMetadata) {
  for (const auto &[key, value] : trailingMetadata) {
    m_implementation->context.AddTrailingMetadata(key, value);
  }
  // gRPC takes no text with a success.
  const grpc::Status status = statusCode == 0
                                  ? grpc::Status()
                                  : grpc::Status(static_cast<grpc::StatusCode>(statusCode), statusMessage);
  m_implementation->stream.Finish(status, m_implementation->tag(Implementation::kFinish));
  m_implementation->waitForTransport(Implementation::kFinish);
}

class Server::Implementation {
 public:
  Implementation(const std::string &address, const std::shared_ptr<grpc::ServerCredentials> &credentials) {
    grpc::ServerBuilder builder;
    builder.AddListeningPort(address, credentials, &m_port);
    builder.RegisterAsyncGenericService(&m_service);
    // Two servers on one port would share its calls by chance.
    builder.AddChannelArgument(GRPC_ARG_ALLOW_REUSEPORT, 0);
    // Our clients ask every ten seconds whether we are there; and a client that vanished frees its thread.
    builder.AddChannelArgument(GRPC_ARG_HTTP2_MIN_RECV_PING_INTERVAL_WITHOUT_DATA_MS, 5'000);
    builder.AddChannelArgument(GRPC_ARG_KEEPALIVE_TIME_MS, 20'000);
    builder.AddChannelArgument(GRPC_ARG_KEEPALIVE_TIMEOUT_MS, 10'000);
    // A connection that says nothing is not kept.
    builder.AddChannelArgument(GRPC_ARG_SERVER_HANDSHAKE_TIMEOUT_MS, kHandshakeMilliseconds);
    builder.SetMaxReceiveMessageSize(kLargestRequest);
    m_queue = builder.AddCompletionQueue();
    m_server = builder.BuildAndStart();
    if (!m_server || m_port == 0) {
      // The queue of a server that never started must be drained all the same.
      m_server.reset();
      drain();
      throw std::runtime_error("Cannot listen on " + address +
                               ": the address is in use or not this machine's, or the certificate is bad");
    }
  }

  ~Implementation() {
    stop(std::chrono::milliseconds(0));
    std::unique_lock lock(m_calls->mutex);
    m_calls->changed.wait(lock, [this] { return m_calls->running == 0; });
  }

  [[nodiscard]] int port() const { return m_port; }
  void setPatience(std::chrono::milliseconds patience) { m_patience = patience; }

  void start(Provider &provider) {
    m_provider = &provider;
    request();
    m_acceptor = std::thread([this] { accept(); });
  }

  bool stop(std::chrono::milliseconds grace) {
    if (!m_stopped) {
      m_stopped = true;
      m_server->Shutdown(after(grace));
      m_queue->Shutdown();
      if (m_acceptor.joinable()) {
        m_acceptor.join();
      } else {
        drain();
      }
    }
    std::unique_lock lock(m_calls->mutex);
    return m_calls->changed.wait_for(lock, grace, [this] { return m_calls->running == 0; });
  }

 private:
  /// Shared with the calls' threads, which leave it last.
  struct Calls {
    std::mutex mutex;
    std::condition_variable changed;
    int running = 0;
  };

  void request() {
    m_next = std::make_unique<ServerCall::Implementation>(m_patience);
    m_service.RequestCall(&m_next->context, &m_next->stream, &m_next->queue, m_queue.get(), this);
  }

  void accept() {
    void *tag = nullptr;
    bool ok = false;
    while (m_queue->Next(&tag, &ok)) {
      if (!ok) continue;  // stopping
      std::unique_ptr<ServerCall::Implementation> call = std::move(m_next);
      request();
      begin(std::move(call));
    }
  }

  void drain() {
    m_queue->Shutdown();
    void *tag = nullptr;
    bool ok = false;
    while (m_queue->Next(&tag, &ok)) {
    }
  }

  void begin(std::unique_ptr<ServerCall::Implementation> incoming) {
    const bool isRefused = [this] {
      const std::lock_guard lock(m_calls->mutex);
      if (m_calls->running == kMostCalls) return true;
      ++m_calls->running;
      return false;
    }();
    if (isRefused) incoming->patience = kRefusalPatience;
    auto call = std::make_unique<ServerCall>(std::move(incoming));
    if (isRefused) {
      return call->finish(static_cast<int>(StatusCode::resourceExhausted), "Too many calls at once", {});
    }
    // Held here too, as a thread that cannot be made takes what it was given with it.
    const auto held = std::make_shared<std::unique_ptr<ServerCall>>(std::move(call));
    try {
      std::thread([calls = m_calls, provider = m_provider, held] {
        serve(**held, *provider);
        held->reset();
        leave(*calls);
      }).detach();
    } catch (const std::system_error &error) {
      log("Server error: ", error.what());
      (*held)->finish(static_cast<int>(StatusCode::resourceExhausted), "No thread is left for the call", {});
      leave(*m_calls);
    }
  }

  static void leave(Calls &calls) {
    const std::lock_guard lock(calls.mutex);
    --calls.running;
    calls.changed.notify_all();
  }

  static void serve(ServerCall &call, Provider &provider);

  int m_port = 0;
  bool m_stopped = false;
  std::chrono::milliseconds m_patience{10'000};
  grpc::AsyncGenericService m_service;
  std::unique_ptr<grpc::ServerCompletionQueue> m_queue;
  std::unique_ptr<grpc::Server> m_server;
  std::unique_ptr<ServerCall::Implementation> m_next;
  std::thread m_acceptor;
  Provider *m_provider = nullptr;
  std::shared_ptr<Calls> m_calls = std::make_shared<Calls>();
};

void Server::Implementation::serve(ServerCall &call, Provider &provider) {
  log("Server received request to ", call.host(), " calling ", call.method(), " from ", call.peer(), " with ",
      description(call.metadata()));
  if (call.method() != Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantService::kConverseMethod) {
    return call.finish(static_cast<int>(StatusCode::unimplemented), "Unknown method " + call.method(), {});
  }
  ConverseSession session(call, provider);
  try {
    session.provider().converse(session);
  } catch (ConverseSession::ServerError) {
    log("Server error: endOfStream");
  } catch (const MessageError &error) {
    log("Server error: ", error.what());
    session.setStatus(StatusCode::invalidArgument, "A request could not be parsed");
  } catch (const std::exception &error) {
    log("Server error: ", error.what());
    session.setStatus(StatusCode::internal, "The assistant failed");
  }
  call.finish(session.statusCode(), session.statusMessage(), session.trailingMetadata());
}

namespace {

std::shared_ptr<grpc::ServerCredentials> tlsCredentials(const std::filesystem::path &keyFile,
                                                        const std::filesystem::path &certificateChainFile) {
  grpc::SslServerCredentialsOptions options;
  options.pem_key_cert_pairs.push_back(
      {.private_key = readFile(keyFile), .cert_chain = readFile(certificateChainFile)});
  return grpc::SslServerCredentials(options);
}

}  // namespace

Server::Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantServer(const std::string &address)
    : m_address(address) {
  initialiseGrpc();
  m_implementation = std::make_unique<Implementation>(address, grpc::InsecureServerCredentials());
}

Server::Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantServer(
    const std::string &address, const std::filesystem::path &keyFile,
    const std::filesystem::path &certificateChainFile)
    : m_address(address) {
  initialiseGrpc();
  m_implementation = std::make_unique<Implementation>(address, tlsCredentials(keyFile, certificateChainFile));
}

Server::~Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantServer() = default;

int Server::port() const { return m_implementation->port(); }

void Server::setPatience(std::chrono::milliseconds patience) { m_implementation->setPatience(patience); }

void Server::start(Provider &provider) {
  m_provider = &provider;
  m_implementation->start(provider);
}

bool Server::stop(std::chrono::milliseconds grace) { return m_implementation->stop(grace); }

}  // namespace velmora
