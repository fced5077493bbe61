// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "engine/LocalAssistant.h"

#include <QByteArray>
#include <QRandomGenerator>
#include <array>
#include <nlohmann/json.hpp>
#include <sstream>
#include <system_error>

#include "foundation/Endpoint.h"
#include "foundation/Log.h"
#include "platform/process/ChildProcess.h"

namespace velmora {
namespace {

using Json = nlohmann::json;

constexpr auto kProgram = "velmora-assistant";
constexpr std::size_t kLongestQuote = 300;  // of what the child wrote, in an error
constexpr std::chrono::milliseconds kOnItsWayOut{500};
constexpr std::chrono::hours kForEver{24 * 365};

/// 256 bits from the system's generator, in characters that a header takes.
std::string freshToken() {
  std::array<quint32, 8> random{};
  QRandomGenerator::system()->fillRange(random.data(), static_cast<qsizetype>(random.size()));
  return QByteArray::fromRawData(reinterpret_cast<const char *>(random.data()), sizeof random)
      .toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals)
      .toStdString();
}

std::string shortened(const std::string &text) {
  return text.size() <= kLongestQuote ? text : text.substr(0, kLongestQuote) + "…";
}

std::filesystem::path programOf(const LocalAssistant::Settings &settings) {
  if (settings.program) return *settings.program;
  if (auto found = findProgram(kProgram)) return *std::move(found);
  throw LocalAssistantError("the local assistant is not installed: " + std::string(kProgram) +
                            " is neither beside this program nor in PATH");
}

std::string textMember(const Json &object, const char *name) {
  const auto found = object.find(name);
  return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

/// "0.3 s" for a limit that people set in seconds.
std::string inSeconds(std::chrono::milliseconds limit) {
  std::ostringstream text;
  text << std::chrono::duration<double>(limit).count() << " s";
  return text.str();
}

}  // namespace

LocalAssistant::LocalAssistant(const Settings &settings) : m_settings(settings), m_token(freshToken()) {
  const std::filesystem::path program = programOf(settings);
  try {
    m_child = std::make_unique<ChildProcess>(
        ChildProcess::Setup{.program = program,
                            .arguments = {"--port", "0", "--stop-at-eof"},
                            .environment = {{"VELMORA_ASSISTANT_TOKEN", m_token}},
                            .errorLine = [](std::string_view line) { log(kProgram, ": ", line); }});
  } catch (const std::system_error &error) {
    throw LocalAssistantError("the local assistant could not be started: " + program.string() + ": " +
                              error.code().message());
  }
  const std::string line = waitUntilReady();
  const Json ready = Json::parse(line, nullptr, false);
  const auto endpoint = Endpoint::parse(ready.is_object() ? textMember(ready, "address") : std::string());
  const std::filesystem::path folder = ready.is_object() ? textMember(ready, "deployment") : std::string();
  if (!endpoint || !endpoint->port || !folder.is_absolute()) {
    fail("did not say where it listens but \"" + shortened(line) + "\"");
  }
  if (!endpoint->isLoopback()) fail("listens outside this machine, at " + endpoint->host);
  try {
    m_deployment = Deployment::load(folder);
  } catch (const DeploymentError &error) {
    fail(std::string("gave a deployment that cannot be used: ") + error.what());
  }
  m_deployment.host = endpoint->host;
  m_deployment.port = endpoint->port;
}

LocalAssistant::~LocalAssistant() {
  if (m_child) m_child->stop(m_settings.stopLimit);
}

std::optional<std::string> LocalAssistant::waitForEnd(int wakeDescriptor) {
  if (!m_child->endsWithin(kForEver, wakeDescriptor)) return std::nullopt;
  return m_child->ending();
}

std::string LocalAssistant::waitUntilReady() {
  std::string line;
  const auto deadline = ChildProcess::Clock::now() + m_settings.startLimit;
  switch (m_child->readFirstLine(line, deadline, m_settings.cancelDescriptor)) {
    case ChildProcess::Wait::line: return line;
    case ChildProcess::Wait::closed:
      // It is most likely on its way out, and how it ended tells most.
      (void)m_child->endsWithin(kOnItsWayOut);
      fail((m_child->ending().empty() ? "closed its output" : m_child->ending()) + " before it was ready");
    case ChildProcess::Wait::tooLong: fail("did not say where it listens but \"" + shortened(line) + "\"");
    case ChildProcess::Wait::timedOut: fail("was not ready within " + inSeconds(m_settings.startLimit));
    case ChildProcess::Wait::woken: fail("was stopped before it was ready");
  }
  return line;
}

/// Stops the child first, so that its last words are complete.
void LocalAssistant::fail(const std::string &what) {
  m_child->stop(m_settings.stopLimit);
  const std::string said = m_child->lastErrorLine();
  throw LocalAssistantError("the local assistant " + what + (said.empty() ? "" : ": " + shortened(said)));
}

}  // namespace velmora
