// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/audio/AudioPlayer.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <mutex>
#include <utility>

#include "platform/audio/AudioSource.h"
#include "platform/audio/CallbackThread.h"
#include "platform/audio/Playback.h"
#include "platform/audio/SoundConnection.h"

namespace velmora {

/// What outlives the player while a report of it is on its way.
class AudioPlayer::Core : public std::enable_shared_from_this<Core> {
 public:
  /// The connection is the player's: what holds it must not end on the sound thread, as this may.
  Core(AudioPlayer &player, SoundConnection &connection, std::string mp3)
      : m_player(player),
        m_connection(connection),
        m_mp3(std::make_shared<const std::string>(std::move(mp3))),
        m_decoder(std::make_unique<Mp3Decoder>(m_mp3)) {}

  void play() {
    const std::lock_guard lock(m_mutex);
    if (m_playback) return;
    if (!m_decoder) m_decoder = std::make_unique<Mp3Decoder>(m_mp3);
    m_playback = std::make_shared<Playback>(m_connection, std::move(m_decoder));
    m_connection.retryNow();
    m_connection.async([playback = m_playback, self = weak_from_this()] {
      playback->begin([self, which = playback.get()](const Playback::End &how) {
        if (const auto core = self.lock()) core->postReport(which, how);
      });
    });
  }

  void stop() {
    {
      const std::lock_guard lock(m_mutex);
      if (m_playback)
        m_connection.async([playback = std::exchange(m_playback, nullptr)] { playback->end(); });
    }
    waitForReport();
  }

  [[nodiscard]] bool isPlaying() const {
    const std::lock_guard lock(m_mutex);
    return m_playback != nullptr;
  }

  void setDelegate(AudioPlayerDelegate *delegate) {
    {
      const std::lock_guard lock(m_mutex);
      m_delegate = delegate;
    }
    waitForReport();
  }

 private:
  void postReport(const Playback *which, const Playback::End &how) {
    m_connection.playerCallbacks().async(
        [self = shared_from_this(), which, how] { self->report(which, how); });
  }

  void report(const Playback *which, const Playback::End &how) {
    const std::lock_guard report(m_report);
    AudioPlayerDelegate *delegate = nullptr;
    {
      const std::lock_guard lock(m_mutex);
      if (m_playback.get() != which) return;
      m_playback = nullptr;
      delegate = m_delegate;
    }
    if (!delegate) return;
    if (how.decodeError) {
      delegate->audioPlayerDecodeErrorDidOccur(m_player, *how.decodeError);
    } else {
      delegate->audioPlayerDidFinishPlaying(m_player, how.heard);
    }
  }

  /// Returns when no report is under way that was before; at once within one.
  void waitForReport() {
    if (m_connection.playerCallbacks().isCurrent()) return;
    const std::lock_guard report(m_report);
  }

  AudioPlayer &m_player;
  SoundConnection &m_connection;
  const std::shared_ptr<const std::string> m_mp3;
  std::mutex m_report;  // held during a report; taken before m_mutex
  mutable std::mutex m_mutex;
  // Guarded by m_mutex.
  std::unique_ptr<Mp3Decoder> m_decoder;  // made in advance, by the check of the bytes
  std::shared_ptr<Playback> m_playback;   // null: not playing
  AudioPlayerDelegate *m_delegate = nullptr;
};

AudioPlayer::AudioPlayer(std::string mp3)
    : m_connection(SoundConnection::shared()),
      m_core(std::make_shared<Core>(*this, *m_connection, std::move(mp3))) {}

AudioPlayer::~AudioPlayer() { stop(); }

std::unique_ptr<AudioPlayer> AudioPlayer::fromFile(const std::filesystem::path &file) {
  errno = 0;
  std::ifstream in(file, std::ios::binary);
  std::string bytes{std::istreambuf_iterator<char>(in), {}};
  if (!in || in.bad()) throw AudioError(file.string() + ": " + std::strerror(errno));
  try {
    return std::make_unique<AudioPlayer>(std::move(bytes));
  } catch (const AudioError &error) {
    throw AudioError(file.string() + ": " + error.what());
  }
}

void AudioPlayer::play() { m_core->play(); }
void AudioPlayer::stop() { m_core->stop(); }
bool AudioPlayer::isPlaying() const { return m_core->isPlaying(); }
void AudioPlayer::setDelegate(AudioPlayerDelegate *delegate) { m_core->setDelegate(delegate); }

}  // namespace velmora
