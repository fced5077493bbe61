// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/audio/InputCapture.h"

#include <algorithm>
#include <utility>

#include "foundation/Log.h"
#include "platform/audio/AudioSource.h"

namespace velmora {
namespace {

using namespace std::chrono_literals;
using Clock = SoundConnection::Clock;

/// Many times as long as a server takes whose blocks are large.
constexpr auto kLongestSilence = 3s;
constexpr auto kWatch = 500ms;
constexpr auto kAgain = 1s;

}  // namespace

InputCapture::InputCapture(SoundConnection &connection, int sampleRate)
    : m_connection(connection), m_sampleRate(sampleRate) {}

void InputCapture::begin(const Wanted &wanted, Hearer hearer) {
  end();
  m_begun = true;
  ++m_turn;
  m_wanted = wanted;
  m_hearer = std::move(hearer);
  m_lastSamples = Clock::now();
  m_connection.addListener(*this);
  update();
  watch();
}

void InputCapture::change(const Wanted &wanted) {
  if (!m_begun) return;
  const bool otherSize = m_wanted.frames != wanted.frames;
  m_wanted = wanted;
  m_block.clear();
  if (otherSize) close();
  update();
}

void InputCapture::end() {
  if (!std::exchange(m_begun, false)) return;
  ++m_turn;
  m_connection.removeListener(*this);
  close();
  m_flowing = false;
  m_hearer = {};
  m_complaint.clear();
}

/// What to hear; absent when there is nothing.
std::optional<SoundStream::Source> InputCapture::target() const {
  const SoundConnection::Inputs &inputs = *m_connection.currentInputs();
  if (inputs.has(m_wanted.device)) return SoundStream::Source{.device = m_wanted.device, .fixed = true};
  if (inputs.devices.empty()) return std::nullopt;
  // The server follows the user's choice of a default, and of another microphone for this program, by itself.
  if (inputs.serverHasDefault) return SoundStream::Source{};
  return SoundStream::Source{.device = inputs.defaultName, .fixed = true};
}

/// Whether the server has left the stream where it belongs.
bool InputCapture::hearsMicrophone() const {
  return m_device.empty() || m_connection.currentInputs()->has(m_device);
}

/// Brings the stream in line with what is wanted and what there is.
void InputCapture::update() {
  if (!m_connection.currentInputs()) {
    close();  // why is in the log already
    return;
  }
  const auto wanted = target();
  if (!wanted) {
    close();
    complain("there is no microphone");
  } else if (!m_stream || m_opened != *wanted || !hearsMicrophone()) {
    open(*wanted);
  }
}

void InputCapture::open(const SoundStream::Source &source) {
  close();
  m_opened = source;
  try {
    m_stream = SoundStream::capture(m_connection, *this, source, m_sampleRate, m_wanted.frames);
  } catch (const AudioError &error) {
    streamFailed(error.what());
  }
}

void InputCapture::close() {
  m_stream.reset();
  m_device.clear();
  m_block.clear();
  setFlowing(false);
}

void InputCapture::streamOpened(const std::string &device) { m_device = device; }

void InputCapture::streamMoved(const std::string &device) {
  m_device = device;
  // What the server has moved it away from may be gone: decide with the new list.
  m_connection.refresh();
}

void InputCapture::streamFailed(const std::string &reason) {
  const bool hadWorked = !m_device.empty();
  close();
  if (!m_connection.currentInputs()) return;
  if (hadWorked) {
    m_connection.refresh();  // its device may be gone
    return;
  }
  complain(reason);
  m_connection.after(kAgain, [weak = weak_from_this(), turn = m_turn] {
    const auto self = weak.lock();
    if (self && self->m_turn == turn && !self->m_stream) self->m_connection.refresh();
  });
}

void InputCapture::streamCaptured(const float *samples, std::size_t count) {
  m_lastSamples = Clock::now();
  setFlowing(true);
  while (count > 0) {
    const std::size_t taken = std::min(count, m_wanted.frames - m_block.size());
    if (samples) {
      m_block.insert(m_block.end(), samples, samples + taken);
      samples += taken;
    } else {
      m_block.resize(m_block.size() + taken, 0.0F);
    }
    count -= taken;
    if (m_block.size() == m_wanted.frames) {
      m_hearer.block(std::exchange(m_block, {}));
      m_block.reserve(m_wanted.frames);
    }
  }
}

void InputCapture::setFlowing(bool flowing) {
  if (flowing) m_complaint.clear();
  if (std::exchange(m_flowing, flowing) != flowing) m_hearer.flow(flowing);
}

/// One line for one trouble, however often it is met.
void InputCapture::complain(const std::string &reason) {
  if (m_complaint.empty()) log("Audio input error: ", reason);
  m_complaint = reason;
}

/// A frozen server says nothing, and neither does the library.
void InputCapture::watch() {
  m_connection.after(kWatch, [weak = weak_from_this(), turn = m_turn] {
    const auto self = weak.lock();
    if (!self || self->m_turn != turn) return;
    if (Clock::now() - self->m_lastSamples > kLongestSilence && !self->m_connection.lossIsLogged()) {
      self->setFlowing(false);
      self->complain("the sound server does not answer");
    }
    self->watch();
  });
}

}  // namespace velmora
