// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "engine/ResponsePlayback.h"

#include <gmock/gmock.h>

#include "support/CapturedLog.h"
#include "support/Mp3.h"
#include "support/SoundServer.h"
#include "support/Waiting.h"

namespace velmora {
namespace {

using ::testing::ElementsAre;

TEST(ResponsePlayback, WhatIsNoSoundOrAnEndedOneStartsNoTurn) {
  const tests::SoundServer server;
  const tests::CapturedLog log;
  struct Display final : ResponsePlaybackDelegate {
    void speakerIcon(bool isShown) override { seen.put(isShown ? "speaks" : "silent"); }
    void continueIfFollowUp() override { seen.put("continues"); }
    tests::Inbox<std::string> seen;
  } display;
  const auto tone = [](double seconds) {
    return tests::encodeMp3(std::vector<std::int16_t>(static_cast<std::size_t>(44100 * seconds), 3000));
  };
  {
    ResponsePlayback playback(display);
    playback.playResponse("no sound");
    EXPECT_THAT(log.lines(), ElementsAre(::testing::StartsWith("Audio out error error:the data is not MP3")));
    std::string damaged = tone(1);
    damaged.replace(damaged.size() / 2, std::string::npos, std::string(20'000, 'x'));
    playback.playResponse(damaged);
    EXPECT_THAT(display.seen.waitFor(3), ElementsAre("silent", "speaks", "silent"));
    playback.playResponse(tone(30));
    playback.playResponse(tone(0.1));  // in its place
    EXPECT_THAT(display.seen.waitFor(7),
                ElementsAre("silent", "speaks", "silent", "speaks", "speaks", "silent", "continues"));
    playback.playResponse(tone(30));
    EXPECT_TRUE(playback.isSpeaking());
  }
  EXPECT_EQ(display.seen.values().size(), 8U);
}

}  // namespace
}  // namespace velmora
