// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "protocol/Messages.h"

#include <gmock/gmock.h>

#include <latch>
#include <thread>

#include "support/Responses.h"

namespace velmora {

void PrintTo(const WireMessage &message, std::ostream *out) { *out << message.debugDescription(); }

namespace {

using AudioInConfig = Google_Assistant_Embedded_V1alpha1_AudioInConfig;
using AudioOutConfig = Google_Assistant_Embedded_V1alpha1_AudioOutConfig;
using Config = Google_Assistant_Embedded_V1alpha1_ConverseConfig;
using Request = Google_Assistant_Embedded_V1alpha1_ConverseRequest;
using State = Google_Assistant_Embedded_V1alpha1_ConverseState;
using tests::Response;
using tests::Result;
using tests::resultOf;

/// Bytes, zeros included, without the literal's terminator.
template <std::size_t Size>
std::string raw(const char (&literal)[Size]) {
  return {literal, Size - 1};
}

AudioOutConfig mp3(std::int32_t volume) {
  AudioOutConfig config;
  config.setEncoding(AudioOutConfig::Encoding::mp3);
  config.setSampleRateHertz(16000);
  config.setVolumePercentage(volume);
  return config;
}

template <typename Message>
void expectBothWays(const Message &message, const std::string &bytes) {
  EXPECT_EQ(message.serialize(), bytes) << message.debugDescription();
  EXPECT_EQ(Message::parse(bytes), message);
}

TEST(Messages, HaveExactlyTheseBytes) {
  expectBothWays(Request(), "");
  expectBothWays(mp3(-1), raw("\x08\x02\x10\x80\x7d\x18\xff\xff\xff\xff\xff\xff\xff\xff\xff\x01"));
  AudioInConfig audioIn;
  audioIn.setSampleRateHertz(3);
  State state;
  state.setConversationState(raw("\xff\0"));
  Config config;  // set in descending order
  config.setConverseState(state);
  config.setAudioOutConfig(mp3(7));
  config.setAudioInConfig(audioIn);
  expectBothWays(config, raw("\x0a\x02\x10\x03\x12\x07\x08\x02\x10\x80\x7d\x18\x07\x1a\x04\x0a\x02\xff\0"));
  EXPECT_EQ(config.converseState().conversationState(), raw("\xff\0"));
  Google_Rpc_Status status;
  status.setDetails({{.typeUrl = "t/x", .value = raw("\x01\0")}});
  status.setMessage("busy");
  status.setCode(14);
  Response failed;
  failed.setError(status);
  expectBothWays(failed, raw("\x0a\x13\x08\x0e\x12\x04"
                             "busy\x1a\x09\x0a\x03t/x\x12\x02\x01\0"));
  EXPECT_EQ(failed.error().code(), 14);
  EXPECT_EQ(failed.error().message(), "busy");
  ASSERT_EQ(failed.error().details().size(), 1U);
  EXPECT_EQ(failed.error().details().front().typeUrl, "t/x");
  EXPECT_EQ(failed.error().details().front().value, raw("\x01\0"));
  // What is present is written even when it is the default.
  config.setAudioInConfig({});
  config.clearAudioOutConfig();
  config.setConverseState({});
  expectBothWays(config, raw("\x0a\0\x1a\0"));

  Result result = resultOf("ä", "r", "s", Result::MicrophoneMode::dialogFollowOn).result();
  result.setVolumePercentage(100);
  expectBothWays(result, raw("\x0a\x02\xc3\xa4\x12\x01r\x1a\x01s\x20\x02\x28\x64"));
  EXPECT_EQ(result.spokenRequestText() + result.spokenResponseText() + result.conversationState(), "ärs");
  EXPECT_EQ(result.microphoneMode(), Result::MicrophoneMode::dialogFollowOn);
  EXPECT_EQ(result.volumePercentage(), 100);
}

TEST(Messages, KeepWhatANewerPeerKnowsAndRefuseMalformedBytesInSilence) {
  const struct {
    const char *what;
    std::string read;
    std::optional<std::string> written;
  } responses[] = {
      {"unknown fields last, in reading order", raw("\x78\x01\x22\x01x\x10\x01"),
       raw("\x10\x01\x78\x01\x22\x01x")},
      {"those of a sub-message", raw("\x2a\x05\x38\x09\x0a\x01t"), raw("\x2a\x05\x0a\x01t\x38\x09")},
      {"a new number of an enumeration", raw("\x10\x05"), raw("\x10\x05")},
      {"good fields before a value cut short", raw("\x10\x01\x10\x80"), {}},
      {"a length past the end of the sub-message", raw("\x2a\x02\x0a\x01t"), {}},
      {"a text that is not UTF-8", raw("\x2a\x03\x0a\x01\xff"), {}}};
  ::testing::internal::CaptureStderr();
  for (const auto &c : responses) {
    try {
      EXPECT_EQ(Response::parse(c.read).serialize(), c.written) << c.what;
    } catch (const MessageError &error) {
      EXPECT_FALSE(c.written) << c.what;
      EXPECT_THAT(error.what(), ::testing::MatchesRegex("[0-9]+ bytes are not a google[.A-Za-z0-9]+"));
    }
  }
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

TEST(Messages, ShareUntilOneOfThemChanges) {
  Response original = resultOf("text");
  const std::string &text = original.result().spokenRequestText();
  Response copy = original;
  EXPECT_EQ(&copy.result().spokenRequestText(), &text) << "neither copying nor reading copies the text";
  copy.setEventType(Response::EventType::endOfUtterance);
  EXPECT_EQ(original, resultOf("text"));

  Result alias = original.result();
  alias.setSpokenRequestText("changed");
  EXPECT_EQ(original, resultOf("text"));
  alias = original.result();
  original = Response();  // the alias is the last one that holds the storage
  alias.setVolumePercentage(3);
  EXPECT_EQ(alias.spokenRequestText(), "text");
  EXPECT_EQ(alias.volumePercentage(), 3);
  alias.setSpokenResponseText(alias.spokenRequestText());  // from its own storage
  EXPECT_EQ(alias.spokenResponseText(), "text");

  // What an absent part reads as is nobody's to change, not even when the whole has gone.
  Result absent = Response::parse(raw("\x22\x01x")).result();
  absent.setVolumePercentage(1);
  EXPECT_EQ(Response::parse(raw("\x22\x01x")).result().volumePercentage(), 0);
}

TEST(Messages, ChangeOnManyThreadsWhileTheyShare) {
  for (int round = 0; round < 200; ++round) {
    const Response shared = resultOf("shared");
    std::latch start(4);
    std::vector<std::thread> threads;
    for (int i = 1; i <= 4; ++i) {
      threads.emplace_back([&start, mine = shared, part = shared.result(), i]() mutable {
        start.arrive_and_wait();
        const Response before = mine;
        part.setVolumePercentage(i);
        mine.setResult(part);
        EXPECT_EQ(mine.result().volumePercentage(), i);
        EXPECT_EQ(before, resultOf("shared"));
      });
    }
    for (std::thread &thread : threads) thread.join();
    EXPECT_EQ(shared, resultOf("shared"));
  }
}

/// The count alone must order the other's reading before our writing: the flag here orders nothing.
TEST(Messages, ChangeInPlaceOnceTheOtherThreadHasLetGo) {
  for (int round = 0; round < 200; ++round) {
    Result mine = resultOf("text").result();
    std::atomic<bool> gone = false;
    std::thread other([&gone, theirs = mine]() mutable {
      EXPECT_EQ(theirs.volumePercentage(), 0);
      theirs = Result();
      gone.store(true, std::memory_order_relaxed);
    });
    while (!gone.load(std::memory_order_relaxed)) std::this_thread::yield();
    mine.setVolumePercentage(1);
    other.join();
  }
}

}  // namespace
}  // namespace velmora
