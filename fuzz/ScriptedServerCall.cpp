// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// ServerCall without gRPC, recognisers without a model and a voice without sound: the linker takes these
// before it looks into the libraries.
#include "fuzz/ScriptedServerCall.h"

#include <flite/flite.h>

#include <algorithm>
#include <cstring>
#include <mutex>
#include <utility>

#include "assistant/hearing/RecogniserPool.h"

namespace velmora {
namespace {

std::mutex theMutex;
Recognition theRecognition;

}  // namespace

void fuzz::setHeard(std::string text, bool confident) {
  const std::lock_guard lock(theMutex);
  theRecognition = {.text = std::move(text), .confident = confident, .confidence = confident ? 1.0 : -1.0};
}

struct ServerCall::Implementation {
  fuzz::Client &client;
};

std::unique_ptr<ServerCall> fuzz::callOf(Client &client) {
  return std::make_unique<ServerCall>(
      std::unique_ptr<ServerCall::Implementation>(new ServerCall::Implementation{client}));
}

ServerCall::ServerCall(std::unique_ptr<Implementation> implementation)
    : m_implementation(std::move(implementation)) {}
ServerCall::~ServerCall() = default;
std::string ServerCall::host() const { return "localhost"; }
std::string ServerCall::method() const { return "/method"; }
std::string ServerCall::peer() const { return "peer"; }
const Metadata &ServerCall::metadata() const { return m_implementation->client.metadata; }
bool ServerCall::cancelled() { return m_implementation->client.takes == 0; }
ServerCall::Received ServerCall::receive(std::string &message, std::optional<std::chrono::milliseconds>) {
  auto &requests = m_implementation->client.requests;
  if (requests.empty()) return Received::endOfStream;
  message = std::move(requests.front());
  requests.pop_front();
  return Received::message;
}
bool ServerCall::send(const std::string &message) {
  if (m_implementation->client.takes == 0) return false;
  --m_implementation->client.takes;
  m_implementation->client.responses.push_back(message);
  return true;
}
void ServerCall::addInitialMetadata(const Metadata &) {}
void ServerCall::finish(int, const std::string &, const Metadata &) {}

RecogniserPool::RecogniserPool(std::size_t size) : m_mayMake(size) {}
void RecogniserPool::prepare() {}
Recognition RecogniserPool::recognise(std::span<const std::int16_t>, const std::string &) {
  const std::lock_guard lock(theMutex);
  return theRecognition;
}

}  // namespace velmora

/// A hundredth of a second of sound for each character.
extern "C" cst_wave *flite_text_to_wave(const char *text, cst_voice *) {
  cst_wave *const wave = new_wave();
  cst_wave_resize(wave, static_cast<int>(std::min<std::size_t>(std::strlen(text), 20) * 160), 1);
  wave->sample_rate = 16000;
  for (int i = 0; i < wave->num_samples; ++i) wave->samples[i] = static_cast<short>(i % 100 * 50);
  return wave;
}
