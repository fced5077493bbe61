// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/AssistantOptions.h"

#include <QCommandLineParser>
#include <cctype>
#include <cstdlib>
#include <iostream>

#include "foundation/Deployment.h"

namespace velmora {
namespace {

constexpr auto kTokenVariable = "VELMORA_ASSISTANT_TOKEN";

QCommandLineOption option(const char *name, const char *description, const char *value = "",
                          const char *initially = "") {
  return {QString::fromLatin1(name), QString::fromUtf8(description), QString::fromLatin1(value),
          QString::fromLatin1(initially)};
}

std::string tokenOf(const QCommandLineParser &parser, const QCommandLineOption &file) {
  std::string token;
  if (parser.isSet(file)) {
    token = readFile(parser.value(file).toStdString());
  } else if (const char *variable = std::getenv(kTokenVariable)) {
    token = variable;
  }
  while (!token.empty() && std::isspace(static_cast<unsigned char>(token.back()))) token.pop_back();
  return token;
}

int numberOf(const QCommandLineParser &parser, const QCommandLineOption &option, int low, int high) {
  bool isNumber = false;
  const int number = parser.value(option).toInt(&isNumber);
  if (!isNumber || number < low || number > high) {
    throw UsageError("--" + option.names().constFirst().toStdString() + " takes a number from " +
                     std::to_string(low) + " to " + std::to_string(high));
  }
  return number;
}

std::filesystem::path recordingsOf(const QCommandLineParser &parser, const QCommandLineOption &option) {
  if (!parser.isSet(option)) return {};
  std::filesystem::path folder = parser.value(option).toStdString();
  if (!std::filesystem::is_directory(folder))
    throw UsageError("--record: " + folder.string() + " is no folder");
  return folder;
}

void say(const std::string &text) {
  std::cout << text << std::flush;
  if (!std::cout) throw std::runtime_error("standard output cannot be written");
}

}  // namespace

std::optional<AssistantOptions> AssistantOptions::parse(const QStringList &arguments) {
  QCommandLineParser parser;
  parser.setApplicationDescription(
      QStringLiteral("The local assistant: a Converse service on 127.0.0.1 with offline speech.\n"
                     "Prints one line of JSON with its address and deployment folder when it is ready.\n"
                     "Clients sign in at its own pages, or present the access token that comes from\n"
                     "--token-file or the environment variable VELMORA_ASSISTANT_TOKEN.\n"
                     "Nothing that is said is kept on disk unless --record is given, but for what is put\n"
                     "on the shopping list."));
  const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")},
                                QStringLiteral("Show this help."));
  const auto version = option("version", "Show the version.");
  const auto port = option("port", "Port to listen on; 0 takes a free one (default).", "N", "0");
  const auto signInPort =
      option("sign-in-port", "Port of the sign-in's pages; 0 takes a free one (default).", "N", "0");
  const auto streams =
      option("streams", "How many conversations at once are served (default 16, up to 60).", "N", "16");
  const auto tokenFile = option("token-file", "File that holds an access token for this run.", "FILE");
  const auto record = option("record", "Keep the sound and the words of each request in this folder.", "DIR");
  const auto status = option("status", "Print what the running services have done so far, a line each.");
  const auto stopAtEof =
      option("stop-at-eof", "End when standard input ends, as with the program that started this one.");
  const auto verbose = option("verbose", "Log calls to standard error.");
  parser.addOptions(
      {help, version, port, signInPort, streams, tokenFile, record, status, stopAtEof, verbose});
  if (!parser.parse(arguments)) {
    std::string text = parser.errorText().toStdString();
    if (text.ends_with('.')) text.pop_back();
    throw UsageError(text);
  }
  if (parser.isSet(help)) {
    say(parser.helpText().toStdString());
    return std::nullopt;
  }
  if (parser.isSet(version)) {
    say("velmora-assistant " VELMORA_VERSION "\n");
    return std::nullopt;
  }
  if (!parser.positionalArguments().isEmpty()) {
    throw UsageError("unexpected argument '" + parser.positionalArguments().constFirst().toStdString() + "'");
  }
  return AssistantOptions{.port = numberOf(parser, port, 0, 65535),
                          .signInPort = numberOf(parser, signInPort, 0, 65535),
                          .streams = numberOf(parser, streams, 1, 60),
                          .token = tokenOf(parser, tokenFile),
                          .recordings = recordingsOf(parser, record),
                          .status = parser.isSet(status),
                          .stopAtEof = parser.isSet(stopAtEof),
                          .verbose = parser.isSet(verbose)};
}

}  // namespace velmora
