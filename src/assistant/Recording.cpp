// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/Recording.h"

#include <QDateTime>
#include <cstdio>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <system_error>

#include "assistant/speech/Voice.h"
#include "foundation/File.h"
#include "foundation/Log.h"

namespace velmora {
namespace {

constexpr mode_t kOwnerOnly = 0600;

/// The time, to be found again, and a number that no other service in the same folder draws.
std::string newName() {
  std::random_device random;
  char number[20];
  std::snprintf(number, sizeof number, "-%08x%08x", random(), random());
  return QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-hhmmss")).toStdString() + number;
}

/// 16-bit mono samples as a WAV file.
std::string waveFileOf(std::span<const std::int16_t> samples) {
  std::string bytes;
  const auto append = [&bytes](std::size_t number, int width) {
    for (int i = 0; i < width; ++i) bytes += static_cast<char>(number >> (8 * i) & 0xff);
  };
  constexpr std::size_t kRestOfHeader = 36;
  constexpr std::size_t kFormatChunk = 16;
  bytes += "RIFF";
  append(kRestOfHeader + samples.size_bytes(), 4);
  bytes += "WAVEfmt ";
  append(kFormatChunk, 4);
  append(1, 2);  // plain samples
  append(1, 2);  // channel
  append(kSpeechRate, 4);
  append(std::size_t{kSpeechRate} * sizeof(std::int16_t), 4);  // bytes a second
  append(sizeof(std::int16_t), 2);                             // bytes a frame
  append(16, 2);                                               // bits a sample
  bytes += "data";
  append(samples.size_bytes(), 4);
  for (const std::int16_t sample : samples) append(static_cast<std::uint16_t>(sample), 2);
  return bytes;
}

}  // namespace

void record(const std::filesystem::path &folder, std::span<const std::int16_t> samples,
            const Recognition &heard) {
  const std::filesystem::path base = folder / newName();
  const std::filesystem::path sound = base.string() + ".wav";
  try {
    std::ostringstream text;
    text << heard.text << "\nconfidence " << heard.confidence << '\n';
    writeFile(sound, waveFileOf(samples), kOwnerOnly);
    writeFile(base.string() + ".txt", text.str(), kOwnerOnly);
  } catch (const std::runtime_error &error) {
    std::error_code ignored;
    std::filesystem::remove(sound, ignored);
    standardErrorSink()(std::string("velmora-assistant: a recording cannot be kept: ") + error.what());
  }
}

}  // namespace velmora
