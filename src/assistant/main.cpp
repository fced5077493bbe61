// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// velmora-assistant: the local assistant as a program.
#include <poll.h>
#include <sys/resource.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <QCoreApplication>
#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <iostream>
#include <nlohmann/json.hpp>
#include <system_error>
#include <thread>

#include "assistant/AssistantOptions.h"
#include "assistant/AssistantProvider.h"
#include "assistant/RunningFolder.h"
#include "assistant/StatusSocket.h"
#include "assistant/dialogue/SystemServices.h"
#include "assistant/signin/SignInProvider.h"
#include "foundation/Descriptor.h"
#include "foundation/File.h"
#include "foundation/Heaps.h"
#include "foundation/Log.h"
#include "foundation/StandardStreams.h"
#include "foundation/StateFolder.h"
#include "protocol/Certificates.h"
#include "protocol/EmbeddedAssistantServer.h"

namespace velmora {
namespace {

using Server = Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantServer;

constexpr int kFailed = 1;
constexpr int kUsage = 2;
// Answers that are under way get this long to be finished when the program is told to stop.
constexpr std::chrono::milliseconds kGrace{2000};
// After this the program ends whatever a decoder may still be doing.
constexpr std::chrono::milliseconds kLongestStop{2500};
// ms until a caller at the status socket is looked at again who could not be answered.
constexpr int kDeafness = 200;

void writeDeployment(const std::filesystem::path &folder, int port) {
  const nlohmann::json deployment{{"host", "127.0.0.1"},
                                  {"port", port},
                                  {"scope", SignInProvider::scope()},
                                  {"loopback_prefix", "http://localhost"}};
  writeFile(folder / "deployment.json", deployment.dump(2) + '\n');
}

/// Ends the waiting of `poll` when the program is told to stop. Made before any thread, which inherit the
/// mask. Throws `std::runtime_error`.
Descriptor stopSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGHUP);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  Descriptor descriptor(::signalfd(-1, &signals, SFD_CLOEXEC));
  if (descriptor.number() < 0)
    throw std::runtime_error("cannot wait for signals: " + std::generic_category().message(errno));
  return descriptor;
}

/// A listener that once found no descriptor for a connection never accepts another one; the usual soft limit
/// is one that a single careless client reaches.
void raiseDescriptorLimit() {
  constexpr rlim_t kEnough = 65'536;
  rlimit limit{};
  if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
  limit.rlim_cur = std::max(limit.rlim_cur, std::min(limit.rlim_max, kEnough));
  (void)::setrlimit(RLIMIT_NOFILE, &limit);
}

/// Returns when the program is to stop; tells `statistics` to whoever asks meanwhile.
void serveStatus(int signals, bool stopAtEof, const StatusSocket &socket, const Statistics &statistics) {
  std::array<pollfd, 3> waits{{{.fd = signals, .events = POLLIN, .revents = 0},
                               {.fd = stopAtEof ? STDIN_FILENO : -1, .events = POLLIN, .revents = 0},
                               {.fd = socket.descriptor(), .events = POLLIN, .revents = 0}}};
  bool isDeaf = false;
  for (;;) {
    // Without a free descriptor nobody can be answered, and the caller would still stand at the socket.
    waits[2].fd = isDeaf ? -1 : socket.descriptor();
    if (::poll(waits.data(), waits.size(), isDeaf ? kDeafness : -1) < 0) continue;
    isDeaf = false;
    if (waits[0].revents != 0) return;
    std::array<char, 256> ignored;
    if (waits[1].revents != 0 && ::read(STDIN_FILENO, ignored.data(), ignored.size()) <= 0) return;
    if (waits[2].revents != 0) isDeaf = !socket.answer(statistics.text() + '\n');
  }
}

void run(const AssistantOptions &options) {
  const Descriptor signals = stopSignals();
  raiseDescriptorLimit();
  SystemServices services(stateFolder());
  SignInProvider signIn(SignInProvider::forThisUser(options.signInPort, !options.recordings.empty()));
  if (!options.token.empty()) signIn.acceptForThisRun(options.token);
  AssistantProvider provider([&](std::string_view token) { return signIn.isLive(token); },
                             Dialogue(services.services(), services.seal()), {.streams = options.streams});
  if (!options.recordings.empty()) provider.recordIn(options.recordings);
  provider.prepare();

  const RunningFolder folder;
  const StatusSocket status(folder.path());
  // Apart from the socket and the lock: a deployment is a folder of files, which may be copied.
  const std::filesystem::path deployment = folder.makePrivate("deployment");
  const Certificates certificates = makeCertificates(deployment);
  Server server("127.0.0.1:" + std::to_string(options.port), certificates.key, certificates.chain);
  // It is in the server's memory now.
  std::filesystem::remove(certificates.key);
  writeDeployment(deployment, server.port());
  signIn.writeClientDescription(deployment);
  signIn.start();
  server.start(provider);

  const nlohmann::json ready{{"address", "127.0.0.1:" + std::to_string(server.port())},
                             {"deployment", deployment.string()}};
  std::cout << ready.dump() << std::endl;
  if (!std::cout) throw std::runtime_error("standard output cannot be written");
  serveStatus(signals.number(), options.stopAtEof, status, provider.statistics());

  std::thread([&folder] {
    std::this_thread::sleep_for(kLongestStop);
    folder.remove();
    std::_Exit(0);
  }).detach();
  server.stop(kGrace);
}

/// Prints what each running service says of itself.
int printStatus() {
  int answered = 0;
  const auto running = RunningFolder::all();
  for (const auto &folder : running) {
    const auto text = StatusSocket::ask(folder);
    if (!text) continue;
    ++answered;
    std::cout << *text << '\n';
  }
  std::cout << std::flush;
  if (!std::cout) throw std::runtime_error("standard output cannot be written");
  if (running.empty()) throw std::runtime_error("no local assistant of this user is running");
  if (answered == 0) throw std::runtime_error("the local assistant of this user does not answer");
  return 0;
}

int runProgram(int argc, char *argv[]) {
  shareHeaps();
  std::signal(SIGPIPE, SIG_IGN);
  const QCoreApplication application(argc, argv);
  try {
    const auto options = AssistantOptions::parse(QCoreApplication::arguments());
    if (!options) return 0;
    if (options->status) return printStatus();
    setLogSink(options->verbose ? standardErrorSink() : LogSink());
    run(*options);
    return 0;
  } catch (const UsageError &error) {
    std::cerr << "velmora-assistant: " << error.what() << "; see velmora-assistant --help\n";
    return kUsage;
  } catch (const std::exception &error) {
    std::cerr << "velmora-assistant: " << error.what() << '\n';
    return kFailed;
  }
}

}  // namespace
}  // namespace velmora

int main(int argc, char *argv[]) { return velmora::runProgram(argc, argv); }
