// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <lame/lame.h>

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace velmora::tests {

/// Mono samples of 44.1 kHz as MP3 of 128 kb/s whose frames each stand by themselves, as long as what comes
/// out of them.
inline std::string encodeMp3(const std::vector<std::int16_t> &samples) {
  const std::unique_ptr<lame_global_flags, decltype([](lame_t lame) { lame_close(lame); })> lame(lame_init());
  lame_set_num_channels(lame.get(), 1);
  lame_set_mode(lame.get(), MONO);
  lame_set_in_samplerate(lame.get(), 44100);
  lame_set_out_samplerate(lame.get(), 44100);
  lame_set_brate(lame.get(), 128);
  lame_set_bWriteVbrTag(lame.get(), 0);
  lame_set_write_id3tag_automatic(lame.get(), 0);
  lame_set_disable_reservoir(lame.get(), 1);
  if (lame_init_params(lame.get()) < 0) throw std::runtime_error("lame_init_params");
  std::string bytes(samples.size() * 5 / 4 + 2 * 7200, '\0');
  auto *const out = reinterpret_cast<unsigned char *>(bytes.data());
  const int body = lame_encode_buffer(lame.get(), samples.data(), nullptr, static_cast<int>(samples.size()),
                                      out, static_cast<int>(bytes.size()));
  if (body < 0) throw std::runtime_error("lame_encode_buffer");
  const int tail = lame_encode_flush(lame.get(), out + body, static_cast<int>(bytes.size()) - body);
  if (tail < 0) throw std::runtime_error("lame_encode_flush");
  bytes.resize(static_cast<std::size_t>(body) + static_cast<std::size_t>(tail));
  return bytes;
}

}  // namespace velmora::tests
