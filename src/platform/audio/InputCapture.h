// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/audio/SoundConnection.h"
#include "platform/audio/SoundStream.h"

namespace velmora {

/// Keeps a microphone open while the world changes around it: a microphone that is chosen, or the user's
/// default, is opened as soon as it is there, and again after whatever takes it away. On the sound thread
/// only.
class InputCapture final : public std::enable_shared_from_this<InputCapture>,
                           SoundConnection::Listener,
                           SoundStream::Owner {
 public:
  /// What it hears, on the sound thread.
  struct Hearer {
    /// The next samples, exactly as many as wanted.
    std::function<void(std::vector<float> block)> block;
    /// Samples have begun to come, or have ceased to.
    std::function<void(bool flowing)> flow;
  };
  struct Wanted {
    std::string device;        ///< its name; empty or not there: the default
    std::uint32_t frames = 0;  ///< in a block
  };

  /// The connection outlives the object, and stays on `end()`.
  InputCapture(SoundConnection &connection, int sampleRate);

  void begin(const Wanted &wanted, Hearer hearer);
  /// Other wishes for what has begun; what was heard of an incomplete block is dropped.
  void change(const Wanted &wanted);
  void end();

 private:
  void soundServerChanged() override { update(); }
  void streamOpened(const std::string &device) override;
  void streamMoved(const std::string &device) override;
  void streamCaptured(const float *samples, std::size_t count) override;
  void streamFailed(const std::string &reason) override;

  void update();
  [[nodiscard]] std::optional<SoundStream::Source> target() const;
  [[nodiscard]] bool hearsMicrophone() const;
  void open(const SoundStream::Source &source);
  void close();
  void setFlowing(bool flowing);
  void complain(const std::string &reason);
  void watch();

  SoundConnection &m_connection;
  const int m_sampleRate;
  bool m_begun = false;
  std::uint64_t m_turn = 0;  // of begin() and end(), so that an old timer knows itself
  Wanted m_wanted;
  Hearer m_hearer;
  std::unique_ptr<SoundStream> m_stream;
  SoundStream::Source m_opened;  // what was asked for
  std::string m_device;          // the one that the stream is on; empty until that is known
  std::vector<float> m_block;
  bool m_flowing = false;
  std::string m_complaint;  // the last one; empty once samples flow
  SoundConnection::Clock::time_point m_lastSamples;
};

}  // namespace velmora
