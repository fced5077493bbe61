// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/audio/Playback.h"

#include <utility>

#include "foundation/Log.h"
#include "platform/audio/AudioSource.h"

namespace velmora {
namespace {

using namespace std::chrono_literals;

/// A server buffers two seconds and a sound card at most as much again, in which nothing is heard of them.
constexpr auto kLongestSilence = 5s;
constexpr auto kWatch = 500ms;

}  // namespace

Playback::Playback(SoundConnection &connection, std::unique_ptr<Mp3Decoder> decoder)
    : m_connection(connection), m_decoder(std::move(decoder)) {}

void Playback::begin(std::function<void(const End &)> ended) {
  m_ended = std::move(ended);
  m_lastSign = SoundConnection::Clock::now();
  m_connection.addListener(*this);
  soundServerChanged();
  watch();
}

void Playback::end() {
  if (!std::exchange(m_ended, nullptr)) return;
  m_connection.removeListener(*this);
  m_stream.reset();
}

void Playback::finish(bool heard) {
  const auto self = shared_from_this();  // who hears of it may let it go
  const auto ended = m_ended;
  const End how{.heard = heard, .decodeError = heard ? m_decodeError : std::nullopt};
  end();
  if (ended) ended(how);
}

void Playback::fail(const std::string &reason) {
  log("Audio output error: ", reason);
  finish(false);
}

void Playback::soundServerChanged() {
  if (!m_ended) return;
  if (!m_connection.currentInputs()) {
    if (m_stream) finish(false);  // why is in the log already
    return;
  }
  if (m_stream) return;
  try {
    m_stream = SoundStream::playback(m_connection, *this, m_decoder->sampleRate(), m_decoder->channels());
  } catch (const AudioError &error) {
    fail(error.what());
  }
}

void Playback::streamWants(std::size_t bytes) {
  m_lastSign = SoundConnection::Clock::now();
  if (m_allWritten) return;
  const std::size_t frame = static_cast<std::size_t>(m_decoder->channels()) * sizeof(std::int16_t);
  m_samples.resize(bytes / frame * static_cast<std::size_t>(m_decoder->channels()));
  std::size_t count = 0;
  try {
    count = m_decoder->decode(m_samples);
    m_allWritten = count < m_samples.size();
    if (m_allWritten) m_decoder->decode(std::span(m_samples).subspan(count));  // why it is less
  } catch (const AudioError &error) {
    m_allWritten = true;
    m_decodeError = error.what();
  }
  if (count > 0) m_stream->write(std::span(m_samples).first(count));
  if (m_allWritten) m_stream->drain();
}

void Playback::streamDrained() { finish(true); }

void Playback::streamFailed(const std::string &reason) {
  if (m_connection.currentInputs()) {
    fail(reason);
  } else {
    finish(false);  // why is in the log already
  }
}

void Playback::watch() {
  m_connection.after(kWatch, [weak = weak_from_this()] {
    const auto self = weak.lock();
    if (!self || !self->m_ended) return;
    if (SoundConnection::Clock::now() - self->m_lastSign <= kLongestSilence) {
      self->watch();
    } else if (self->m_connection.lossIsLogged()) {
      self->finish(false);
    } else {
      self->fail("the sound server does not answer");
    }
  });
}

}  // namespace velmora
