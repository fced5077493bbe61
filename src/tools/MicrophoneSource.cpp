// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "tools/MicrophoneSource.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace velmora {
namespace {

using namespace std::chrono_literals;

/// A server that is being restarted comes back in this time; one that does not is worth a word.
constexpr auto kLongestSilence = 5s;

std::vector<AudioDevice> microphones() {
  auto devices = AudioEngine::inputDevices();
  if (!devices) throw AudioError("there is no sound server, or it does not answer");
  if (devices->empty()) throw AudioError("no microphone is attached");
  return *std::move(devices);
}

}  // namespace

std::string describeMicrophones() {
  const auto devices = microphones();
  const auto current = AudioEngine().inputDevice();
  std::string lines;
  for (const AudioDevice &device : devices) {
    lines += device.name + '\t' + device.description + (device == current ? "\tdefault\n" : "\n");
  }
  return lines;
}

MicrophoneSource::MicrophoneSource(const std::optional<std::string> &device, int wakeDescriptor)
    : m_wakeDescriptor(wakeDescriptor) {
  const auto devices = microphones();
  if (device) {
    const auto found = std::find_if(devices.begin(), devices.end(),
                                    [&](const AudioDevice &candidate) { return candidate.name == *device; });
    if (found == devices.end())
      throw AudioError("there is no microphone " + *device + "; see --list-devices");
    m_capture.engine().setInputDevice(*found);
  }
  m_capture.setUp();
}

void MicrophoneSource::begin() {
  m_delivered = 0;
  {
    const std::lock_guard lock(m_mutex);
    m_heard.clear();
  }
  m_capture.start();
}

void MicrophoneSource::end() { m_capture.stop(); }

void MicrophoneSource::take(const std::int16_t *samples, std::ptrdiff_t count) {
  {
    const std::lock_guard lock(m_mutex);
    m_heard.insert(m_heard.end(), samples, samples + count);
  }
  m_news.wake();
}

std::size_t MicrophoneSource::deliver(std::span<std::int16_t> frame) {
  const std::lock_guard lock(m_mutex);
  if (m_heard.size() < frame.size()) return 0;
  const auto end = m_heard.begin() + static_cast<std::ptrdiff_t>(frame.size());
  std::copy(m_heard.begin(), end, frame.begin());
  m_heard.erase(m_heard.begin(), end);
  return frame.size();
}

AudioRead MicrophoneSource::read(std::span<std::int16_t> frame) {
  const auto deadline = Clock::now() + kLongestSilence;
  for (;;) {
    if (const std::size_t samples = deliver(frame)) {
      m_delivered += samples;
      if (m_delivered > longestSeconds * sampleRate)
        throw AudioTooLong("the microphone: nobody ended the turn");
      return {.samples = samples};
    }
    if (Clock::now() >= deadline) throw AudioError("the microphone gives no sound");
    if (!waitForNews(deadline)) return {};
  }
}

/// False when the wait was broken off.
bool MicrophoneSource::waitForNews(Clock::time_point deadline) const {
  std::array<pollfd, 2> watched{pollfd{.fd = m_news.descriptor(), .events = POLLIN, .revents = 0},
                                pollfd{.fd = m_wakeDescriptor, .events = POLLIN, .revents = 0}};
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
  const int ready = ::poll(watched.data(), watched.size(), std::max(0, static_cast<int>(left.count())));
  if (ready < 0) return errno != EINTR;
  if (watched[0].revents != 0) m_news.waitUntil(Clock::now());  // forgets the waking
  return watched[1].revents == 0;
}

}  // namespace velmora
