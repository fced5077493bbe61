// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "tools/TurnAudio.h"

#include <fcntl.h>
#include <unistd.h>

#include <utility>

#include "platform/audio/AudioFile.h"
#include "platform/audio/RawAudioStream.h"

namespace velmora {
namespace {

constexpr auto kStandardInput = "-";

class UnusableAudio : public AudioSource {
 public:
  explicit UnusableAudio(std::string why) : m_why(std::move(why)) {}
  [[nodiscard]] AudioRead read(std::span<std::int16_t> /*frame*/) override { throw AudioError(m_why); }

 private:
  std::string m_why;
};

}  // namespace

void checkAudio(const std::vector<std::string> &names) {
  for (const std::string &name : names) {
    if (name != kStandardInput) {
      const AudioFile file(name);
    } else if ((::fcntl(STDIN_FILENO, F_GETFL) & O_ACCMODE) == O_WRONLY) {
      throw AudioError("standard input is closed");
    } else if (::isatty(STDIN_FILENO) != 0) {
      throw AudioError(
          "standard input is a terminal: pipe samples into it (16 kHz, mono, 16 bits, little-endian)");
    }
  }
}

std::unique_ptr<AudioSource> turnAudio(const std::string &name, int wakeDescriptor) {
  if (name == kStandardInput) {
    return std::make_unique<RawAudioStream>(STDIN_FILENO, "standard input", wakeDescriptor);
  }
  try {
    return std::make_unique<AudioFile>(name);
  } catch (const AudioError &error) {
    return std::make_unique<UnusableAudio>(error.what());
  }
}

}  // namespace velmora
