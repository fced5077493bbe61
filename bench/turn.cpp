// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// A turn through `API` beside the same turn through the bare generated stub, on warm channels over loopback
// TLS to one server in a process of its own: a configuration, 50 frames of 3200 bytes, the half-close; the
// end of the utterance, a result, 20 chunks of 1600 bytes, the status. Rounds of the candidates alternate, so
// that a noisy moment of the machine hits all of them.
//
//   bench_turn [turns]        1000 by default
#include <fcntl.h>
#include <grpcpp/create_channel.h>
#include <grpcpp/security/credentials.h>
#include <grpcpp/security/server_credentials.h>
#include <grpcpp/server_builder.h>
#include <protocol/embedded_assistant.grpc.pb.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <semaphore>
#include <vector>

#include "engine/API.h"
#include "foundation/Log.h"
#include "protocol/Certificates.h"
#include "support/TemporaryFolder.h"

namespace {

using namespace velmora;
namespace wire = google::assistant::embedded::v1alpha1;
using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr int kFrames = 50;
constexpr int kChunks = 20;
constexpr std::size_t kChunkBytes = 1600;
const std::array<std::int16_t, 1600> kSamples{};

class Service final : public wire::EmbeddedAssistant::Service {
  grpc::Status Converse(
      grpc::ServerContext *,
      grpc::ServerReaderWriter<wire::ConverseResponse, wire::ConverseRequest> *stream) override {
    wire::ConverseRequest request;
    while (stream->Read(&request)) {
    }
    wire::ConverseResponse response;
    response.set_event_type(wire::ConverseResponse::END_OF_UTTERANCE);
    stream->Write(response);
    response.mutable_result()->set_spoken_request_text("what time is it");
    stream->Write(response);
    for (int i = 0; i < kChunks; ++i) {
      response.mutable_audio_out()->set_audio_data(std::string(kChunkBytes, 'm'));
      stream->Write(response);
    }
    return grpc::Status::OK;
  }
};

/// The server's process: says its port on standard output and serves until it is killed.
int serve(const std::filesystem::path &folder) {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  const Certificates files = makeCertificates(folder);
  grpc::SslServerCredentialsOptions options;
  options.pem_key_cert_pairs.push_back({readFile(files.key), readFile(files.chain)});
  Service service;
  int port = 0;
  grpc::ServerBuilder builder;
  builder.AddListeningPort("127.0.0.1:0", grpc::SslServerCredentials(options), &port);
  builder.RegisterService(&service);
  const auto server = builder.BuildAndStart();
  std::cout << port << std::endl;
  server->Wait();
  return 0;
}

struct Server {
  Server() {
    std::array<int, 2> pipe{};
    if (::pipe(pipe.data()) != 0) throw std::runtime_error("pipe");
    pid = ::fork();
    if (pid == 0) {
      ::dup2(pipe[1], STDOUT_FILENO);
      ::execl("/proc/self/exe", "bench_turn", "--serve", folder.path().c_str(), nullptr);
      std::_Exit(1);
    }
    ::close(pipe[1]);
    FILE *in = ::fdopen(pipe[0], "r");
    if (std::fscanf(in, "%d", &port) != 1) throw std::runtime_error("the server did not start");
    std::fclose(in);
  }
  ~Server() {
    ::kill(pid, SIGKILL);
    ::waitpid(pid, nullptr, 0);
  }
  velmora::tests::TemporaryFolder folder;
  pid_t pid = 0;
  int port = 0;
};

/// One turn each; both return the time to the first response's arrival.
class BareTurn {
 public:
  explicit BareTurn(const Server &server)
      : m_stub(wire::EmbeddedAssistant::NewStub(grpc::CreateChannel(
            "127.0.0.1:" + std::to_string(server.port),
            grpc::SslCredentials({readFile(server.folder.path() / "roots.pem"), {}, {}})))) {}

  Clock::time_point operator()() {
    grpc::ClientContext context;
    context.AddMetadata("authorization", "Bearer token");
    const auto stream = m_stub->Converse(&context);
    wire::ConverseRequest request;
    auto &config = *request.mutable_config();
    config.mutable_audio_in_config()->set_encoding(wire::AudioInConfig::LINEAR16);
    config.mutable_audio_in_config()->set_sample_rate_hertz(16000);
    config.mutable_audio_out_config()->set_encoding(wire::AudioOutConfig::MP3);
    config.mutable_audio_out_config()->set_sample_rate_hertz(16000);
    config.mutable_audio_out_config()->set_volume_percentage(100);
    config.mutable_converse_state();
    stream->Write(request);
    for (int i = 0; i < kFrames; ++i) {
      request.set_audio_in(kSamples.data(), sizeof kSamples);
      stream->Write(request);
    }
    stream->WritesDone();
    Clock::time_point first{};
    std::string answer;
    wire::ConverseResponse response;
    while (stream->Read(&response)) {
      if (first == Clock::time_point{}) first = Clock::now();
      answer += response.audio_out().audio_data();
    }
    if (!stream->Finish().ok() || answer.size() != kChunks * kChunkBytes)
      throw std::runtime_error("bare turn");
    return first;
  }

 private:
  std::unique_ptr<wire::EmbeddedAssistant::Stub> m_stub;
};

class ApiTurn : ConversationTextDelegate, TurnObserver {
 public:
  ApiTurn(const Server &server)
      : m_api(*this, {.folder = server.folder.path(), .host = "127.0.0.1", .port = server.port}, defaults()) {
    m_api.setTurnObserver(this);
  }

  Clock::time_point operator()() {
    m_first = {};
    m_answerSize = 0;
    m_api.beginTurn(100);
    for (int i = 0; i < kFrames; ++i) m_api.sendAudioFrame(kSamples.data(), kSamples.size());
    m_api.endAudio();
    m_ended.acquire();
    if (m_answerSize != kChunks * kChunkBytes) throw std::runtime_error("turn through API");
    return m_first;
  }

 private:
  static const UserDefaults &defaults() {
    static UserDefaults defaults;
    defaults.setObject(QStringLiteral("token"), QStringLiteral("auth_token"));
    return defaults;
  }
  void updateRequestText(const std::string &) override {}
  void updateResponseText(const std::string &) override {}
  void stopListening() override {}
  void startListening() override {}
  void playResponse(const std::string &mp3) override { m_answerSize = mp3.size(); }
  void responseReceived(const Google_Assistant_Embedded_V1alpha1_ConverseResponse &) override {
    if (m_first == Clock::time_point{}) m_first = Clock::now();
  }
  void turnEnded(const CallResult &) override { m_ended.release(); }

  API m_api;
  Clock::time_point m_first;
  std::size_t m_answerSize = 0;
  std::binary_semaphore m_ended{0};
};

double cpuMilliseconds() {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  const auto ms = [](const timeval &time) { return 1e3 * double(time.tv_sec) + 1e-3 * double(time.tv_usec); };
  return ms(usage.ru_utime) + ms(usage.ru_stime);
}

struct Figures {
  std::vector<double> first;
  std::vector<double> total;
  double cpu = 0;
};

template <typename Turn>
void measure(Turn &turn, int turns, Figures &figures) {
  const double before = cpuMilliseconds();
  for (int i = 0; i < turns; ++i) {
    const auto begin = Clock::now();
    const auto first = turn();
    figures.total.push_back(Milliseconds(Clock::now() - begin).count());
    figures.first.push_back(Milliseconds(first - begin).count());
  }
  figures.cpu += cpuMilliseconds() - before;
}

double quantile(std::vector<double> &values, double q) {
  std::sort(values.begin(), values.end());
  return values[std::min(values.size() - 1, static_cast<std::size_t>(q * double(values.size())))];
}

void report(const char *name, Figures &figures, Figures &bare) {
  const double turns = double(figures.total.size());
  const double median = quantile(figures.total, 0.5);
  const double cpu = figures.cpu / turns;
  std::printf("%-30s %7.2f %7.2f   %7.2f %7.2f   %7.2f   %6.2f %6.2f\n", name, quantile(figures.first, 0.5),
              quantile(figures.first, 0.99), median, quantile(figures.total, 0.99), cpu,
              median / quantile(bare.total, 0.5), cpu / (bare.cpu / turns));
}

}  // namespace

int main(int argc, char *argv[]) {
  if (argc == 3 && std::strcmp(argv[1], "--serve") == 0) return serve(argv[2]);
  const int turns = argc > 1 ? std::max(1, std::atoi(argv[1])) : 1000;
  constexpr int kRounds = 10;

  const Server server;
  BareTurn bareTurn(server);
  ApiTurn apiTurn(server);
  const int null = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
  const LogSink discard = [null](std::string_view line) { (void)!::write(null, line.data(), line.size()); };

  Figures warmUp;
  setLogSink({});
  measure(bareTurn, 50, warmUp);
  measure(apiTurn, 50, warmUp);

  Figures bare;
  Figures api;
  Figures logging;
  for (int round = 0; round < kRounds; ++round) {
    setLogSink({});
    measure(bareTurn, turns / kRounds, bare);
    measure(apiTurn, turns / kRounds, api);
    setLogSink(discard);
    measure(apiTurn, turns / kRounds, logging);
  }
  std::printf(
      "%zu turns each; milliseconds         first response       whole turn       CPU   ratio to bare\n"
      "%-30s %7s %7s   %7s %7s   %7s   %6s %6s\n",
      bare.total.size(), "", "median", "p99", "median", "p99", "a turn", "median", "CPU");
  report("bare generated stub", bare, bare);
  report("API, log dropped", api, bare);
  report("API, log written to /dev/null", logging, bare);
  return 0;
}
