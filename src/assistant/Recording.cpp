// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/Recording.h"

#include <sndfile.h>

#include <QDateTime>
#include <atomic>
#include <fstream>
#include <memory>

#include "assistant/speech/Voice.h"
#include "foundation/Log.h"

namespace velmora {

void record(const std::filesystem::path &folder, std::span<const std::int16_t> samples,
            const Recognition &heard) {
  static std::atomic<int> count{0};
  const std::string time =
      QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-hhmmss")).toStdString();
  const std::filesystem::path base = folder / (time + '-' + std::to_string(++count));
  SF_INFO info{};
  info.samplerate = kSpeechRate;
  info.channels = 1;
  info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
  const auto close = [](SNDFILE *file) { sf_close(file); };
  const std::unique_ptr<SNDFILE, decltype(close)> sound(
      sf_open((base.string() + ".wav").c_str(), SFM_WRITE, &info), close);
  const auto frames = static_cast<sf_count_t>(samples.size());
  std::ofstream text(base.string() + ".txt");
  text << heard.text << '\n' << "confidence " << heard.confidence << '\n';
  if (!sound || sf_write_short(sound.get(), samples.data(), frames) != frames || !text.flush())
    log("Recording error: cannot write ", base.string());
}

}  // namespace velmora
