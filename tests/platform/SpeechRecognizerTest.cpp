// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/speech/SpeechRecognizer.h"

#include <gmock/gmock.h>

#include "support/EventLoop.h"
#include "support/SoundServer.h"
#include "support/Speech.h"

namespace velmora {
namespace {

using ::testing::ElementsAre;
using tests::runUntil;
using tests::Speaker;

/// As a command comes: with a pause around it.
tests::Samples command(std::string_view text, Speaker speaker = Speaker::slt) {
  return tests::joined({tests::silence(300), tests::spoken(text, speaker), tests::silence(500)});
}

TEST(SpeechRecognizer, HearsItsCommandsAndNothingElseWhileItListens) {
  const tests::SoundServer server;
  const auto recognizer = SpeechRecognizer::make();
  ASSERT_NE(recognizer, nullptr);
  std::vector<std::string> heard;
  recognizer->setDelegate([&](const std::string &phrase) { heard.push_back(phrase); });
  recognizer->setCommands({"okay mac", "good night"});
  recognizer->setListensInForegroundOnly(false);
  const auto say = [&](const tests::Samples &samples) { server.say(samples, "mic", 16000); };
  const auto listens = [&] {
    return runUntil([&] { return recognizer->engine().state() == AudioEngine::State::running; });
  };
  recognizer->startListening();
  ASSERT_TRUE(listens());
  say(command("okay mac"));
  EXPECT_TRUE(runUntil([&] { return heard.size() == 1; }));

  // Neither other speech nor the phrase inside of it is a command, and while it is paused nothing is; nor is
  // what was said just before. The order of hearing is that of speaking: what was heard before the last one
  // shows by then.
  say(command("play some music"));
  say(command("she said okay mac to the machine on the desk"));
  say(command("okay mac"));
  recognizer->setPaused(true);
  say(command("okay mac"));
  recognizer->setPaused(false);
  ASSERT_TRUE(listens());
  say(command("good night", Speaker::awb));
  EXPECT_TRUE(runUntil([&] { return heard.size() >= 2; }));
  EXPECT_THAT(heard, ElementsAre("okay mac", "good night"));
}

}  // namespace
}  // namespace velmora
