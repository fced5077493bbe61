// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "tools/TurnAudio.h"

#include <gmock/gmock.h>

#include "support/AudioFiles.h"
#include "support/TemporaryFolder.h"

namespace velmora {
namespace {

using ::testing::HasSubstr;

TEST(TurnAudio, EveryFileIsCheckedAndTheFirstBadOneNamed) {
  const tests::TemporaryFolder folder;
  const std::string good = folder.path() / "good.wav";
  tests::writeAudio(good, tests::tone(440, 0.1, 16000, {0.5}), 16000);
  EXPECT_NO_THROW(checkAudio({good, good}));
  try {
    checkAudio({good, folder.write("bad.wav", "bad"), folder.path() / "none.wav"});
    ADD_FAILURE();
  } catch (const AudioError &error) {
    EXPECT_THAT(error.what(), HasSubstr("bad.wav: is not an audio file"));
  }
}

TEST(TurnAudio, AFileThatWentBadAfterwardsFailsWhenItIsRead) {
  const tests::TemporaryFolder folder;
  const auto audio = turnAudio(folder.path() / "gone.wav", -1);
  try {
    (void)tests::readAll(*audio);
    ADD_FAILURE();
  } catch (const AudioError &error) {
    EXPECT_THAT(error.what(), HasSubstr("gone.wav: No such file"));
  }
}

}  // namespace
}  // namespace velmora
