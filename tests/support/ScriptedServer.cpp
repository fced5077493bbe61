// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "support/ScriptedServer.h"

#include <grpcpp/impl/codegen/method_handler.h>
#include <grpcpp/impl/codegen/rpc_service_method.h>
#include <grpcpp/impl/codegen/service_type.h>
#include <grpcpp/security/server_credentials.h>
#include <grpcpp/server.h>
#include <grpcpp/server_builder.h>

#include <chrono>
#include <stdexcept>
#include <thread>
#include <vector>

#include "protocol/Certificates.h"
#include "support/TemporaryFolder.h"

namespace velmora::tests {
namespace {

using Stream = grpc::ServerReaderWriter<grpc::ByteBuffer, grpc::ByteBuffer>;

class GrpcCall final : public ScriptedServer::Call {
 public:
  GrpcCall(grpc::ServerContext &context, Stream &stream) : m_context(context), m_stream(stream) {
    for (const auto &[key, value] : context.client_metadata()) {
      m_metadata.emplace(std::string(key.data(), key.size()), std::string(value.data(), value.size()));
    }
  }
  std::optional<std::string> read() override {
    grpc::ByteBuffer buffer;
    if (!m_stream.Read(&buffer)) return std::nullopt;
    std::vector<grpc::Slice> slices;
    (void)buffer.Dump(&slices);
    std::string bytes;
    for (const auto &slice : slices)
      bytes.append(reinterpret_cast<const char *>(slice.begin()), slice.size());
    return bytes;
  }
  bool write(const std::string &bytes) override {
    const grpc::Slice slice(bytes);
    return m_stream.Write(grpc::ByteBuffer(&slice, 1));
  }
  const Metadata &metadata() const override { return m_metadata; }
  void waitForCancel() const override {
    while (!m_context.IsCancelled()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }

 private:
  grpc::ServerContext &m_context;
  Stream &m_stream;
  Metadata m_metadata;
};

class RawService final : public grpc::Service {
 public:
  explicit RawService(ScriptedServer::Script script) : m_script(std::move(script)) {
    using Handler = grpc::internal::BidiStreamingHandler<RawService, grpc::ByteBuffer, grpc::ByteBuffer>;
    AddMethod(new grpc::internal::RpcServiceMethod(
        "/google.assistant.embedded.v1alpha1.EmbeddedAssistant/Converse",
        grpc::internal::RpcMethod::BIDI_STREAMING,
        new Handler([](RawService *self, grpc::ServerContext *context,
                       Stream *stream) { return self->run(*context, *stream); },
                    this)));
  }

 private:
  grpc::Status run(grpc::ServerContext &context, Stream &stream) const {
    GrpcCall call(context, stream);
    const ScriptedServer::End end = m_script(call);
    return {static_cast<grpc::StatusCode>(end.code), end.message};
  }

  ScriptedServer::Script m_script;
};

}  // namespace

struct ScriptedServer::Implementation {
  explicit Implementation(Script script) : service(std::move(script)) {}

  TemporaryFolder folder;
  RawService service;
  std::unique_ptr<grpc::Server> server;
};

ScriptedServer::ScriptedServer(Script script)
    : m_implementation(std::make_unique<Implementation>(std::move(script))) {
  Implementation &self = *m_implementation;
  const Certificates certificates = makeCertificates(self.folder.path());
  grpc::SslServerCredentialsOptions options;
  options.pem_key_cert_pairs.push_back(
      {.private_key = readFile(certificates.key), .cert_chain = readFile(certificates.chain)});
  grpc::ServerBuilder builder;
  int port = 0;
  builder.AddListeningPort("127.0.0.1:0", grpc::SslServerCredentials(options), &port);
  builder.RegisterService(&self.service);
  builder.SetMaxReceiveMessageSize(-1);
  self.server = builder.BuildAndStart();
  if (!self.server) throw std::runtime_error("the scripted server did not start");
  m_deployment = {
      .folder = self.folder.path(), .host = "127.0.0.1", .port = static_cast<std::uint16_t>(port)};
}

ScriptedServer::~ScriptedServer() { m_implementation->server->Shutdown(std::chrono::system_clock::now()); }

std::string ScriptedServer::roots() const { return readFile(m_deployment.resource("roots", "pem")); }

}  // namespace velmora::tests
