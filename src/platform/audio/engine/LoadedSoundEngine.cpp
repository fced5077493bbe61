// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// For a program that is to be small while it is silent: part of that itself, so that the linker takes it and
// leaves the engine in its library.
#include "foundation/Log.h"
#include "platform/Plugin.h"
#include "platform/audio/AudioSource.h"
#include "platform/audio/SoundEngine.h"

namespace velmora {
namespace {

/// As where there is no sound server and never will be.
class NoServer final : public SoundServer {
 public:
  void async(Work /*work*/) override {}
  void retryNow() override {}
  [[nodiscard]] std::optional<SoundConnection::Inputs> inputs() override { return std::nullopt; }
  void addListener(SoundConnection::Listener & /*listener*/) override {}
  void removeListener(SoundConnection::Listener & /*listener*/) override {}
  void after(Clock::duration /*delay*/, Work /*work*/) override {}
  void refresh() override {}
  [[nodiscard]] const SoundConnection::Inputs *currentInputs() const override { return nullptr; }
  [[nodiscard]] bool lossIsLogged() const override { return true; }
  std::unique_ptr<SoundStream> capture(SoundStream::Owner & /*owner*/, const SoundStream::Source & /*source*/,
                                       int /*sampleRate*/, std::uint32_t /*frames*/) override {
    throw NoSound("there is no sound");
  }
  std::unique_ptr<SoundStream> playback(SoundStream::Owner & /*owner*/, int /*sampleRate*/,
                                        int /*channels*/) override {
    throw NoSound("there is no sound");
  }
};

class NoSoundEngine final : public SoundEngine {
 public:
  [[nodiscard]] std::unique_ptr<SoundServer> makeServer() const override {
    return std::make_unique<NoServer>();
  }
  [[nodiscard]] std::unique_ptr<Mp3Decoder::Feed> makeFeed(
      std::shared_ptr<const std::string> /*bytes*/) const override {
    throw NoSound("there is no sound");
  }
  [[nodiscard]] std::unique_ptr<Resampler::Filter> makeFilter(int /*fromRate*/, int /*toRate*/,
                                                              SampleType /*output*/,
                                                              Resampler::Blocks /*blocks*/) const override {
    throw NoSound("there is no sound");
  }
};

const SoundEngine &loadedEngine() {
  std::string problem;
  auto *const factory = Plugin("velmora-sound-engine").root<SoundEngineFactory>(problem);
  if (factory != nullptr) return factory->engine(logLine);
  log("Audio error: sound cannot be had: ", problem);
  static const NoSoundEngine none;
  return none;
}

}  // namespace

const SoundEngine &soundEngine() {
  static const SoundEngine &engine = loadedEngine();
  return engine;
}

}  // namespace velmora
