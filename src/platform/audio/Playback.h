// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/audio/Mp3Decoder.h"
#include "platform/audio/SoundConnection.h"
#include "platform/audio/SoundStream.h"

namespace velmora {

/// One sound on its way to the loudspeaker. On the sound thread only.
class Playback final : public std::enable_shared_from_this<Playback>,
                       SoundConnection::Listener,
                       SoundStream::Owner {
 public:
  struct End {
    bool heard = false;                      ///< to its end, or to the place that cannot be decoded
    std::optional<std::string> decodeError;  ///< that place's
  };

  /// The connection outlives the object.
  Playback(SoundConnection &connection, std::unique_ptr<Mp3Decoder> decoder);

  /// `ended` is called once, on the sound thread, unless `end()` comes first.
  void begin(std::function<void(const End &)> ended);
  void end();

 private:
  void soundServerChanged() override;
  void streamWants(std::size_t bytes) override;
  void streamDrained() override;
  void streamFailed(const std::string &reason) override;

  void finish(bool heard);
  void fail(const std::string &reason);
  void watch();

  SoundConnection &m_connection;
  const std::unique_ptr<Mp3Decoder> m_decoder;
  std::function<void(const End &)> m_ended;  // empty: not begun or over
  std::unique_ptr<SoundStream> m_stream;
  std::vector<std::int16_t> m_samples;
  bool m_allWritten = false;
  std::optional<std::string> m_decodeError;
  SoundConnection::Clock::time_point m_lastSign;  // of life
};

}  // namespace velmora
