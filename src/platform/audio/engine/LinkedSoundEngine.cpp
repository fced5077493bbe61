// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include <utility>

#include "platform/audio/SoundEngine.h"
#include "platform/audio/engine/Mp3Feed.h"
#include "platform/audio/engine/PulseServer.h"
#include "platform/audio/engine/SoxrFilter.h"

namespace velmora {
namespace {

class LinkedSoundEngine final : public SoundEngine {
 public:
  [[nodiscard]] std::unique_ptr<SoundServer> makeServer() const override { return makePulseServer(); }
  [[nodiscard]] std::unique_ptr<Mp3Decoder::Feed> makeFeed(
      std::shared_ptr<const std::string> bytes) const override {
    return makeMp3Feed(std::move(bytes));
  }
  [[nodiscard]] std::unique_ptr<Resampler::Filter> makeFilter(int fromRate, int toRate, SampleType output,
                                                              Resampler::Blocks blocks) const override {
    return makeSoxrFilter(fromRate, toRate, output, blocks);
  }
};

}  // namespace

const SoundEngine &soundEngine() {
  static const LinkedSoundEngine engine;
  return engine;
}

}  // namespace velmora
