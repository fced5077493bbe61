// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// velmora-assistant: the local assistant as a program.
#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <QTemporaryDir>
#include <array>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <nlohmann/json.hpp>
#include <thread>

#include "assistant/AssistantProvider.h"
#include "assistant/signin/SignInProvider.h"
#include "foundation/Deployment.h"
#include "foundation/Log.h"
#include "protocol/Certificates.h"
#include "protocol/EmbeddedAssistantServer.h"

namespace {

using velmora::Certificates;
using Server = velmora::Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantServer;

constexpr int kFailed = 1;
constexpr int kUsage = 2;
constexpr auto kTokenVariable = "VELMORA_ASSISTANT_TOKEN";
// Calls under way get this long to end by themselves when the program is told to stop.
constexpr std::chrono::milliseconds kGrace{300};
// After this the program ends whatever a decoder may still be doing.
constexpr std::chrono::milliseconds kLongestStop{800};

/// Wrong arguments.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct Options {
  int port = 0;
  int signInPort = 0;
  std::string token = {};  // none when empty
  bool stopAtEof = false;
  bool verbose = false;
};

std::string tokenOf(const QCommandLineParser &parser) {
  std::string token;
  if (parser.isSet(QStringLiteral("token-file"))) {
    token = velmora::readFile(parser.value(QStringLiteral("token-file")).toStdString());
  } else if (const char *variable = std::getenv(kTokenVariable)) {
    token = variable;
  }
  while (!token.empty() && std::isspace(static_cast<unsigned char>(token.back()))) token.pop_back();
  return token;
}

int portOf(const QCommandLineParser &parser, const std::string &option) {
  bool isNumber = false;
  const int port = parser.value(QString::fromStdString(option)).toInt(&isNumber);
  if (!isNumber || port < 0 || port > 65535) {
    throw UsageError("--" + option + " takes a number from 0 to 65535");
  }
  return port;
}

/// The options; nothing when the program has said what it was asked and is done.
std::optional<Options> parse(const QStringList &arguments) {
  QCommandLineParser parser;
  parser.setApplicationDescription(
      QStringLiteral("The local assistant: a Converse service on 127.0.0.1 with offline speech.\n"
                     "Prints one line of JSON with its address and deployment folder when it is ready.\n"
                     "Clients sign in at its own pages, or present the access token that comes from\n"
                     "--token-file or the environment variable VELMORA_ASSISTANT_TOKEN."));
  const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")},
                                QStringLiteral("Show this help."));
  const QCommandLineOption version(QStringLiteral("version"), QStringLiteral("Show the version."));
  const QCommandLineOption port(QStringLiteral("port"),
                                QStringLiteral("Port to listen on; 0 takes a free one (default)."),
                                QStringLiteral("N"), QStringLiteral("0"));
  const QCommandLineOption signInPort(
      QStringLiteral("sign-in-port"),
      QStringLiteral("Port of the sign-in's pages; 0 takes a free one (default)."), QStringLiteral("N"),
      QStringLiteral("0"));
  const QCommandLineOption tokenFile(QStringLiteral("token-file"),
                                     QStringLiteral("File that holds an access token for this run."),
                                     QStringLiteral("FILE"));
  const QCommandLineOption stopAtEof(
      QStringLiteral("stop-at-eof"),
      QStringLiteral("End when standard input ends, as with the program that started this one."));
  const QCommandLineOption verbose(QStringLiteral("verbose"), QStringLiteral("Log calls to standard error."));
  parser.addOptions({help, version, port, signInPort, tokenFile, stopAtEof, verbose});
  if (!parser.parse(arguments)) {
    std::string text = parser.errorText().toStdString();
    if (text.ends_with('.')) text.pop_back();
    throw UsageError(text);
  }
  if (parser.isSet(help)) {
    std::cout << parser.helpText().toStdString();
    return std::nullopt;
  }
  if (parser.isSet(version)) {
    std::cout << "velmora-assistant " VELMORA_VERSION "\n";
    return std::nullopt;
  }
  if (!parser.positionalArguments().isEmpty()) {
    throw UsageError("unexpected argument '" + parser.positionalArguments().constFirst().toStdString() + "'");
  }
  Options options{.stopAtEof = parser.isSet(stopAtEof), .verbose = parser.isSet(verbose)};
  options.port = portOf(parser, "port");
  options.signInPort = portOf(parser, "sign-in-port");
  options.token = tokenOf(parser);
  return options;
}

/// A folder that only this user can enter, for the keys and the deployment; removed with the object.
std::unique_ptr<QTemporaryDir> makePrivateFolder() {
  const char *runtime = std::getenv("XDG_RUNTIME_DIR");
  QString parent = QString::fromLocal8Bit(runtime ? runtime : "");
  if (parent.isEmpty() || !QDir(parent).mkpath(QStringLiteral("velmora"))) {
    parent = QDir::tempPath();
  } else {
    parent += QLatin1String("/velmora");
  }
  auto folder = std::make_unique<QTemporaryDir>(parent + QLatin1String("/velmora-assistant-XXXXXX"));
  if (!folder->isValid())
    throw std::runtime_error("cannot make a folder: " + folder->errorString().toStdString());
  return folder;
}

void writeDeployment(const QString &folder, int port) {
  const nlohmann::json deployment{{"host", "127.0.0.1"},
                                  {"port", port},
                                  {"scope", velmora::SignInProvider::scope()},
                                  {"loopback_prefix", "http://localhost"}};
  QSaveFile file(folder + QLatin1String("/deployment.json"));
  const QByteArray text = QByteArray::fromStdString(deployment.dump(2) + '\n');
  if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size() || !file.commit()) {
    throw std::runtime_error("cannot write the deployment: " + file.errorString().toStdString());
  }
}

/// Ends the waiting of `poll` when the program is told to stop. Made before any thread, which inherit the
/// mask.
int stopSignals() {
  std::signal(SIGPIPE, SIG_IGN);
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGHUP);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  return ::signalfd(-1, &signals, SFD_CLOEXEC);
}

void waitForStop(int signals, bool stopAtEof) {
  std::array<pollfd, 2> waits{{{.fd = signals, .events = POLLIN, .revents = 0},
                               {.fd = stopAtEof ? STDIN_FILENO : -1, .events = POLLIN, .revents = 0}}};
  for (;;) {
    if (::poll(waits.data(), waits.size(), -1) < 0) continue;
    if (waits[0].revents != 0) return;
    std::array<char, 256> ignored;
    if (waits[1].revents != 0 && ::read(STDIN_FILENO, ignored.data(), ignored.size()) <= 0) return;
  }
}

void run(const Options &options, int signals) {
  velmora::SignInProvider signIn(velmora::SignInProvider::forThisUser(options.signInPort));
  if (!options.token.empty()) signIn.acceptForThisRun(options.token);
  velmora::AssistantProvider provider([&](std::string_view token) { return signIn.isLive(token); },
                                      velmora::Dialogue());
  provider.prepare();
  const auto folder = makePrivateFolder();
  const Certificates certificates = velmora::makeCertificates(folder->path().toStdString());
  Server server("127.0.0.1:" + std::to_string(options.port), certificates.key, certificates.chain);
  // It is in the server's memory now.
  std::filesystem::remove(certificates.key);
  writeDeployment(folder->path(), server.port());
  signIn.writeClientDescription(folder->path().toStdString());
  signIn.start();
  server.start(provider);

  const nlohmann::json ready{{"address", "127.0.0.1:" + std::to_string(server.port())},
                             {"deployment", folder->path().toStdString()}};
  std::cout << ready.dump() << std::endl;
  waitForStop(signals, options.stopAtEof);

  std::thread([path = folder->path()] {
    std::this_thread::sleep_for(kLongestStop);
    QDir(path).removeRecursively();
    std::_Exit(0);
  }).detach();
  server.stop(kGrace);
}

}  // namespace

int main(int argc, char *argv[]) {
  const int signals = stopSignals();
  const QCoreApplication application(argc, argv);
  try {
    const auto options = parse(QCoreApplication::arguments());
    if (!options) return 0;
    velmora::setLogSink(options->verbose ? velmora::standardErrorSink() : velmora::LogSink());
    run(*options, signals);
    return 0;
  } catch (const UsageError &error) {
    std::cerr << "velmora-assistant: " << error.what() << "; see velmora-assistant --help\n";
    return kUsage;
  } catch (const std::exception &error) {
    std::cerr << "velmora-assistant: " << error.what() << '\n';
    return kFailed;
  }
}
