// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Between sound as the program knows it and the libraries that carry, decode and convert it. Those bring
// twenty others along, for a program that is silent most of the time: the one in the status bar loads them
// with its first sound, the others are linked with them.
#pragma once

#include <QtPlugin>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/audio/Mp3Decoder.h"
#include "platform/audio/Resampler.h"
#include "platform/audio/SoundConnection.h"
#include "platform/audio/SoundStream.h"

namespace velmora {

/// What a `SoundConnection` connects with; the contracts are that class's.
class SoundServer {
 public:
  using Clock = SoundConnection::Clock;
  using Work = SoundConnection::Work;

  virtual ~SoundServer() = default;
  virtual void async(Work work) = 0;
  virtual void retryNow() = 0;
  [[nodiscard]] virtual std::optional<SoundConnection::Inputs> inputs() = 0;

  // Below: on the sound thread only.

  virtual void addListener(SoundConnection::Listener &listener) = 0;
  virtual void removeListener(SoundConnection::Listener &listener) = 0;
  virtual void after(Clock::duration delay, Work work) = 0;
  virtual void refresh() = 0;
  [[nodiscard]] virtual const SoundConnection::Inputs *currentInputs() const = 0;
  [[nodiscard]] virtual bool lossIsLogged() const = 0;
  /// Throws as `SoundStream` does.
  virtual std::unique_ptr<SoundStream> capture(SoundStream::Owner &owner, const SoundStream::Source &source,
                                               int sampleRate, std::uint32_t frames) = 0;
  virtual std::unique_ptr<SoundStream> playback(SoundStream::Owner &owner, int sampleRate, int channels) = 0;
};

/// Any thread. Throws as the classes do that it makes the insides of.
class SoundEngine {
 public:
  virtual ~SoundEngine() = default;
  [[nodiscard]] virtual std::unique_ptr<SoundServer> makeServer() const = 0;
  [[nodiscard]] virtual std::unique_ptr<Mp3Decoder::Feed> makeFeed(
      std::shared_ptr<const std::string> bytes) const = 0;
  [[nodiscard]] virtual std::unique_ptr<Resampler::Filter> makeFilter(int fromRate, int toRate,
                                                                      SampleType output,
                                                                      Resampler::Blocks blocks) const = 0;
};

/// The root of the plugin.
class SoundEngineFactory {
 public:
  virtual ~SoundEngineFactory() = default;
  /// `log` gets the lines of the plugin from now on, on any thread.
  virtual const SoundEngine &engine(const std::function<void(std::string_view line)> &log) = 0;
};

/// The engine of this process: the one that is linked, unless the program brings another definition of this.
/// Any thread.
const SoundEngine &soundEngine();

}  // namespace velmora

Q_DECLARE_INTERFACE(velmora::SoundEngineFactory, "velmora.SoundEngineFactory/1")
