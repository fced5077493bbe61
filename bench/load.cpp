// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// How many speakers at once one local assistant serves: N streams say spoken questions in real time, over
// TLS, to a server in a process of its own; what counts is the time from the last spoken sample to the first
// byte of the answer's sound. N grows until that is over 1.5 s at p95.
//
//   bench_load [seconds for each N]        30 by default
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "foundation/File.h"
#include "protocol/EmbeddedAssistantService.h"
#include "support/Program.h"
#include "support/Speech.h"
#include "support/TemporaryFolder.h"

namespace velmora {
namespace {

using Clock = std::chrono::steady_clock;
using tests::Samples;

constexpr double kLimit = 1500.0;  // ms until the first byte, at p95
constexpr std::size_t kFrame = 1600;
constexpr std::chrono::milliseconds kFrameTime{100};
constexpr auto kToken = "load";

/// A question in a quiet room, as a microphone gives it.
struct Question {
  Samples samples;
  std::size_t end = 0;  ///< of the speech
};

std::vector<Question> questions() {
  using tests::Speaker;
  std::vector<Question> all;
  unsigned seed = 0;
  for (const char *const text :
       {"what time is it", "how many days until christmas", "what is seven plus five", "flip a coin",
        "what is the third of may", "how do you spell elephant", "how many miles is ten kilometers"}) {
    for (const Speaker speaker : {Speaker::slt, Speaker::awb}) {
      Samples speech = tests::spoken(text, speaker);
      const double level = tests::levelOf(speech);
      while (speech.size() > 160 && tests::levelOf(std::span(speech).last(160)) < level - 40.0)
        speech.resize(speech.size() - 160);
      const std::size_t end = 16 * 400 + speech.size();
      Samples room = tests::joined({tests::silence(400), speech, tests::silence(8000)});
      const std::size_t size = room.size();
      all.push_back({tests::mixed(std::move(room), tests::pinkNoise(size, level - 40.0, ++seed)), end});
    }
  }
  return all;
}

/// velmora-assistant in a process of its own.
class Server {
 public:
  Server()
      : m_program(VELMORA_ASSISTANT, {"--streams", "60", "--stop-at-eof"},
                  {{"VELMORA_ASSISTANT_TOKEN", kToken},
                   {"XDG_RUNTIME_DIR", m_folder.path()},
                   {"XDG_STATE_HOME", m_folder.path()}}) {
    if (!m_program.waitForOut("\n"))
      throw std::runtime_error("the assistant does not start: " + m_program.err());
  }

  [[nodiscard]] std::string address() { return field("\"address\":\""); }
  [[nodiscard]] std::string roots() { return readFile(field("\"deployment\":\"") + "/roots.pem"); }
  /// "VmRSS" or another line of the kernel's account of it, in MB.
  [[nodiscard]] double memory(const std::string &what) const {
    std::ifstream status("/proc/" + std::to_string(m_program.pid()) + "/status");
    for (std::string line; std::getline(status, line);)
      if (line.starts_with(what + ":")) return std::stod(line.substr(what.size() + 1)) / 1024.0;
    return 0.0;
  }

 private:
  std::string field(const std::string &begin) {
    const std::string line = m_program.out();
    const std::size_t at = line.find(begin);
    if (at == std::string::npos)
      throw std::runtime_error("the assistant does not say " + begin + " in " + line);
    const std::size_t from = at + begin.size();
    return line.substr(from, line.find('"', from) - from);
  }

  tests::TemporaryFolder m_folder;
  tests::Program m_program;
};

using Service = Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantService;
using Request = Google_Assistant_Embedded_V1alpha1_ConverseRequest;
using ClientError = Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantClientError;

Request configuration() {
  Google_Assistant_Embedded_V1alpha1_AudioInConfig in;
  in.setEncoding(decltype(in)::Encoding::linear16);
  in.setSampleRateHertz(16000);
  Google_Assistant_Embedded_V1alpha1_AudioOutConfig out;
  out.setEncoding(decltype(out)::Encoding::mp3);
  out.setSampleRateHertz(16000);
  out.setVolumePercentage(100);
  Google_Assistant_Embedded_V1alpha1_ConverseConfig config;
  config.setAudioInConfig(in);
  config.setAudioOutConfig(out);
  Request request;
  request.setConfig(config);
  return request;
}

/// One turn in real time; the ms from the last spoken sample to the first sound of the answer, less than 0
/// when there was none.
double converse(Service &service, const Question &question) {
  const auto call = service.converse([](const CallResult &) {});
  call->send(configuration());
  std::atomic<bool> hasEnd = false;
  const auto start = Clock::now();
  const auto lastSpoken = start + std::chrono::microseconds(question.end * 125 / 2);
  std::jthread microphone([&] {
    for (std::size_t fed = 0; !hasEnd && fed + kFrame <= question.samples.size(); fed += kFrame) {
      std::this_thread::sleep_until(start + kFrameTime * (fed / kFrame + 1));
      Request audio;
      audio.setAudioIn({reinterpret_cast<const char *>(question.samples.data() + fed), 2 * kFrame});
      try {
        call->send(audio);
      } catch (const CallError &) {
        return;  // it has ended
      }
    }
  });
  double first = -1.0;
  try {
    for (;;) {
      const auto response = call->receive();
      hasEnd = true;
      if (first < 0.0 && !response.audioOut().audioData().empty())
        first = std::chrono::duration<double, std::milli>(Clock::now() - lastSpoken).count();
    }
  } catch (const ClientError &) {
    hasEnd = true;
  }
  return first;
}

struct Round {
  std::vector<double> first;
  int unanswered = 0;
};

Round hold(Service &service, const std::vector<Question> &all, int streams, std::chrono::seconds duration) {
  Round round;
  std::mutex mutex;
  {
    const auto end = Clock::now() + duration;
    std::vector<std::jthread> speakers;
    for (int i = 0; i < streams; ++i) {
      speakers.emplace_back([&, i] {
        // Nobody begins at the same moment as somebody else.
        std::this_thread::sleep_for(std::chrono::milliseconds(3000) * i / streams);
        for (auto next = static_cast<std::size_t>(i); Clock::now() < end; ++next) {
          const double first = converse(service, all[next % all.size()]);
          const std::lock_guard lock(mutex);
          if (first < 0.0) {
            ++round.unanswered;
          } else {
            round.first.push_back(first);
          }
        }
      });
    }
  }
  std::sort(round.first.begin(), round.first.end());
  return round;
}

void measure(std::chrono::seconds duration) {
  const auto all = questions();
  Server server;
  Service service(server.address(), server.roots(), std::nullopt);
  service.metadata().emplace("authorization", std::string("Bearer ") + kToken);
  const double atStart = server.memory("VmRSS");
  std::printf("the assistant at start: %.0f MB\n%7s %6s %11s %23s %9s %11s\n", atStart, "streams", "turns",
              "unanswered", "first byte p50 / p95 ms", "MB", "MB a stream");
  int largest = 0;
  for (const int streams : {1, 2, 3, 4, 5, 6, 8, 10, 12, 16, 24, 32}) {
    const Round round = hold(service, all, streams, duration);
    const auto quantile = [&](double q) {
      return round.first.empty() ? 1e9
                                 : round.first[static_cast<std::size_t>(
                                       q * static_cast<double>(round.first.size() - 1) + 0.5)];
    };
    const double memory = server.memory("VmRSS");
    std::printf("%7d %6zu %11d %11.0f / %8.0f %9.0f %11.1f\n", streams, round.first.size(), round.unanswered,
                quantile(0.5), quantile(0.95), memory, (memory - atStart) / streams);
    std::fflush(stdout);
    if (round.unanswered > 0 || quantile(0.95) > kLimit) break;
    largest = streams;
  }
  std::printf("the first byte is under %.1f s at p95 for up to %d streams at once\n", kLimit / 1000.0,
              largest);
}

}  // namespace
}  // namespace velmora

int main(int argc, char **argv) {
  int seconds = 30;
  for (int i = 1; i < argc; ++i)
    if (const int number = std::atoi(argv[i]); number > 0) seconds = number;
  try {
    velmora::measure(std::chrono::seconds(seconds));
  } catch (const std::exception &error) {
    std::fprintf(stderr, "bench_load: %s\n", error.what());
    return 1;
  }
}
