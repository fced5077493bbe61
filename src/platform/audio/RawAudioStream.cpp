// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/audio/RawAudioStream.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <string_view>
#include <utility>

namespace velmora {

RawAudioStream::RawAudioStream(int descriptor, std::string name, int wakeDescriptor)
    : m_descriptor(descriptor), m_wakeDescriptor(wakeDescriptor), m_name(std::move(name)) {}

AudioRead RawAudioStream::read(std::span<std::int16_t> frame) {
  while (m_bytes.size() < frame.size_bytes() && !m_ended) {
    if (!waitForData()) return {};
    receive(frame.size_bytes());
  }
  if (m_delivered == 0 && m_bytes.size() < 2) throw AudioError(m_name + ": holds no samples");
  if (m_delivered == 0) checkStart();
  return deliver(frame);
}

/// False when the wait was broken off.
bool RawAudioStream::waitForData() const {
  std::array<pollfd, 2> watched{pollfd{.fd = m_descriptor, .events = POLLIN, .revents = 0},
                                pollfd{.fd = m_wakeDescriptor, .events = POLLIN, .revents = 0}};
  for (;;) {
    if (::poll(watched.data(), watched.size(), -1) >= 0) return watched[1].revents == 0;
    if (errno != EINTR) throw AudioError(m_name + ": " + std::strerror(errno));
  }
}

/// Reads once, until `wanted` bytes are there at the most.
void RawAudioStream::receive(std::size_t wanted) {
  const std::size_t had = m_bytes.size();
  m_bytes.resize(wanted);
  const ssize_t count = ::read(m_descriptor, m_bytes.data() + had, wanted - had);
  const int error = errno;
  m_bytes.resize(had + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
  if (count == 0) m_ended = true;
  if (count < 0 && error != EINTR && error != EAGAIN) {
    throw AudioError(m_name + ": " + std::strerror(error));
  }
}

/// Headers would be heard as a crackle and samples of another rate as nonsense; better to say so.
void RawAudioStream::checkStart() const {
  const std::string_view start(reinterpret_cast<const char *>(m_bytes.data()), m_bytes.size());
  const bool wave = start.starts_with("RIFF") && start.substr(0, 12).ends_with("WAVE");
  if (wave || start.starts_with("fLaC") || start.starts_with("OggS")) {
    throw AudioError(m_name + ": is an audio file with a header where samples without one are expected " +
                     "(16 kHz, mono, 16 bits, little-endian); give the file by its name");
  }
}

AudioRead RawAudioStream::deliver(std::span<std::int16_t> frame) {
  const std::size_t samples = std::min(frame.size(), m_bytes.size() / 2);
  for (std::size_t i = 0; i < samples; ++i) {
    frame[i] = static_cast<std::int16_t>(m_bytes[2 * i] | m_bytes[2 * i + 1] << 8);
  }
  m_bytes.erase(m_bytes.begin(), m_bytes.begin() + static_cast<std::ptrdiff_t>(2 * samples));
  m_delivered += samples;
  if (m_delivered > longestSeconds * sampleRate) {
    throw AudioTooLong(m_name + ": is longer than " + std::to_string(longestSeconds / 60) + " minutes");
  }
  return {.samples = samples, .ended = m_ended && m_bytes.size() < 2};
}

}  // namespace velmora
