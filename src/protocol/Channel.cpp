// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "protocol/Channel.h"

#include <grpcpp/create_channel.h>
#include <grpcpp/security/credentials.h>

#include "foundation/Endpoint.h"
#include "protocol/CompletionThread.h"

namespace velmora {
namespace {

// A server that vanishes in mid-turn is noticed after at most the sum of these two; it costs a ping whenever
// nothing else has come for the first.
constexpr int kKeepaliveMs = 10'000;
constexpr int kKeepaliveTimeoutMs = 5'000;
// Far above any answer, far below what would endanger the machine.
constexpr int kLargestResponse = 128 * 1024 * 1024;

std::shared_ptr<grpc::Channel> connect(CompletionThread &completions, const std::string &address,
                                       const std::optional<std::string> &authority,
                                       const std::shared_ptr<grpc::ChannelCredentials> &credentials) {
  grpc::ChannelArguments arguments;
  arguments.SetMaxReceiveMessageSize(kLargestResponse);
  arguments.SetInt(GRPC_ARG_KEEPALIVE_TIME_MS, kKeepaliveMs);
  arguments.SetInt(GRPC_ARG_KEEPALIVE_TIMEOUT_MS, kKeepaliveTimeoutMs);
  arguments.SetInt(GRPC_ARG_HTTP2_MAX_PINGS_WITHOUT_DATA, 0);  // no limit of our own
  // The proxy variables of a user's session mean the world outside, never this machine.
  if (isLoopback(address)) arguments.SetInt(GRPC_ARG_ENABLE_HTTP_PROXY, 0);
  if (authority) arguments.SetSslTargetNameOverride(*authority);
  auto channel = grpc::CreateCustomChannel(address, credentials, arguments);
  // Reading many roots takes tens of milliseconds, which the first call's thread should not pay.
  completions.post([channel] { channel->GetState(true); });
  return channel;
}

}  // namespace

struct Channel::Implementation {
  Implementation(const std::string &address, const std::optional<std::string> &authority,
                 const std::shared_ptr<grpc::ChannelCredentials> &credentials)
      : channel(connect(*completions, address, authority, credentials)) {}

  const std::shared_ptr<CompletionThread> completions = CompletionThread::shared();
  const std::shared_ptr<grpc::Channel> channel;
};

Channel::Channel(std::string address, std::unique_ptr<Implementation> implementation)
    : m_address(std::move(address)), m_implementation(std::move(implementation)) {}

Channel::~Channel() = default;

CompletionThread &Channel::completions() const { return *m_implementation->completions; }

const void *Channel::native() const { return &m_implementation->channel; }

std::shared_ptr<Channel> Channel::insecure(const std::string &address) {
  initialiseGrpc();
  const std::string target = withDefaultPort(address);
  return std::shared_ptr<Channel>(new Channel(
      target, std::make_unique<Implementation>(target, std::nullopt, grpc::InsecureChannelCredentials())));
}

std::shared_ptr<Channel> Channel::secure(const std::string &address,
                                         const std::optional<std::string> &rootCertificates,
                                         const std::optional<std::string> &hostNameOverride) {
  initialiseGrpc();
  const std::string target = withDefaultPort(address);
  grpc::SslCredentialsOptions options;
  // An empty text would mean the system's roots; roots that were given but are empty trust nobody.
  if (rootCertificates) options.pem_root_certs = rootCertificates->empty() ? "\n" : *rootCertificates;
  const auto credentials = grpc::SslCredentials(options);
  return std::shared_ptr<Channel>(
      new Channel(target, std::make_unique<Implementation>(target, hostNameOverride, credentials)));
}

std::string withDefaultPort(const std::string &address) {
  auto endpoint = Endpoint::parse(address);
  if (!endpoint || endpoint->port || !endpoint->isLiteral()) return address;
  endpoint->port = 443;
  return endpoint->address();
}

bool isLoopback(const std::string &address) {
  const auto endpoint = Endpoint::parse(address);
  return endpoint && endpoint->isLoopback();
}

}  // namespace velmora
