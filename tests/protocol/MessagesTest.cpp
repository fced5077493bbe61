// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "protocol/Messages.h"

#include <gmock/gmock.h>

#include <latch>
#include <thread>

#include "protocol/Responses.h"

namespace velmora {

void PrintTo(const WireMessage &message, std::ostream *out) { *out << message.debugDescription(); }

namespace {

using AudioInConfig = Google_Assistant_Embedded_V1alpha1_AudioInConfig;
using AudioOutConfig = Google_Assistant_Embedded_V1alpha1_AudioOutConfig;
using Config = Google_Assistant_Embedded_V1alpha1_ConverseConfig;
using Request = Google_Assistant_Embedded_V1alpha1_ConverseRequest;
using State = Google_Assistant_Embedded_V1alpha1_ConverseState;
using Status = Google_Rpc_Status;
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
  EXPECT_EQ(Message::parse(bytes).serialize(), bytes);
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
  EXPECT_EQ(config.audioInConfig(), audioIn);
  EXPECT_EQ(config.audioOutConfig().encoding(), AudioOutConfig::Encoding::mp3);
  EXPECT_EQ(config.audioOutConfig().sampleRateHertz(), 16000);
  EXPECT_EQ(config.audioOutConfig().volumePercentage(), 7);
  EXPECT_EQ(config.converseState().conversationState(), raw("\xff\0"));
  // What is present is written even when it is the default.
  config.setAudioInConfig({});
  config.clearAudioOutConfig();
  config.setConverseState({});
  expectBothWays(config, raw("\x0a\0\x1a\0"));
  EXPECT_TRUE(config.hasAudioInConfig() && !config.hasAudioOutConfig() && config.hasConverseState());
  config.clearAudioInConfig();
  config.clearConverseState();
  EXPECT_EQ(config, Config());

  Result result = resultOf("ä", "r", "s", Result::MicrophoneMode::dialogFollowOn).result();
  result.setVolumePercentage(100);
  expectBothWays(result, raw("\x0a\x02\xc3\xa4\x12\x01r\x1a\x01s\x20\x02\x28\x64"));
  EXPECT_EQ(result.spokenRequestText() + result.spokenResponseText() + result.conversationState(), "ärs");
  EXPECT_EQ(result.microphoneMode(), Result::MicrophoneMode::dialogFollowOn);
  EXPECT_EQ(result.volumePercentage(), 100);

  Status status;
  status.setDetails({{"t", "v"}, {"", ""}});
  status.setMessage("m");
  status.setCode(5);
  expectBothWays(status, raw("\x08\x05\x12\x01m\x1a\x06\x0a\x01t\x12\x01v\x1a\0"));
  EXPECT_EQ(status.code(), 5);
  EXPECT_EQ(status.message(), "m");
  EXPECT_EQ(status.details(), (std::vector<Google_Protobuf_Any>{{"t", "v"}, {"", ""}}));
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
      {"a repeated case", raw("\x2a\x03\x0a\x01q\x2a\x03\x12\x01r"), raw("\x2a\x06\x0a\x01q\x12\x01r")},
      {"a later case", raw("\x2a\x03\x0a\x01q\x10\0"), raw("\x10\0")},
      {"good fields before a value cut short", raw("\x10\x01\x10\x80"), {}},
      {"a length past the end of the sub-message", raw("\x2a\x02\x0a\x01t"), {}},
      {"a length beyond 2 GiB", raw("\x1a\xff\xff\xff\xff\x0f"), {}},
      {"a group without end", raw("\x7b\x08\x01"), {}},
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

  using EventType = Response::EventType;
  EXPECT_EQ(Response::parse(raw("\x10\x05")).eventType(), EventType::UNRECOGNIZED(5));
  EXPECT_EQ(Response::parse(raw("\x22\x01x")).unknownFields(), raw("\x22\x01x"));
  for (const int number : {-1, 0, 1, 2}) {
    EXPECT_EQ(EventType::fromNumber(number).number(), number);
    EXPECT_EQ(EventType::fromNumber(number).isUnrecognized(), number < 0 || number > 1) << number;
  }
}

TEST(Messages, RefuseTextsThatAreNotUtf8AndStayAsTheyWere) {
  Result result = resultOf("before").result();
  EXPECT_THROW(result.setSpokenRequestText("\xff"), MessageError);
  EXPECT_THROW(result.setSpokenResponseText("\xed\xa0\x80"), MessageError);  // half of a surrogate pair
  EXPECT_EQ(result, resultOf("before").result());
  Status status;
  EXPECT_THROW(status.setMessage("\xc3"), MessageError);
  EXPECT_THROW(status.setDetails({{"good", "\xff"}, {"\xff", "v"}}), MessageError);
  EXPECT_EQ(status, Status());
}

TEST(Messages, HoldOneCaseAtMost) {
  Config config;
  config.setAudioOutConfig(mp3(1));
  Request request;
  request.setConfig(config);
  config = {};
  config.setAudioInConfig({});
  request.setConfig(config);  // replaces, does not merge
  const auto held = request.converseRequest();
  request.setConverseRequest(Request::OneOf_ConverseRequest::audioIn(""));
  expectBothWays(request, raw("\x12\0"));
  request.setConverseRequest(held);
  EXPECT_EQ(request.audioIn(), "");
  expectBothWays(request, raw("\x0a\x02\x0a\0"));
  request.setConverseRequest({});
  EXPECT_EQ(request, Request());

  using OneOf = Response::OneOf_ConverseResponse;
  Status error;
  error.setCode(1);
  const OneOf all[] = {{},
                       OneOf::error(error),
                       OneOf::eventType(Response::EventType::endOfUtterance),
                       OneOf::audioOut(tests::soundOf("a").audioOut()),
                       OneOf::result(resultOf("q").result())};
  Response response = Response::parse(raw("\x22\x01x"));
  for (const OneOf &before : all) {
    for (const OneOf &oneOf : all) {
      response.setConverseResponse(before);
      response.setConverseResponse(oneOf);
      EXPECT_EQ(response.converseResponse(), oneOf);
      EXPECT_EQ(response.error().code(), oneOf.index() == 1 ? 1 : 0);
      EXPECT_EQ(response.eventType().number(), oneOf.index() == 2 ? 1 : 0);
      EXPECT_EQ(response.audioOut().audioData(), oneOf.index() == 3 ? "a" : "");
      EXPECT_EQ(response.result().spokenRequestText(), oneOf.index() == 4 ? "q" : "");
      EXPECT_EQ(response.unknownFields(), raw("\x22\x01x"));
    }
  }
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

  // What an absent part reads as is nobody's to change, not even when the whole has gone.
  Result absent = Response::parse(raw("\x22\x01x")).result();
  absent.setVolumePercentage(1);
  EXPECT_EQ(Response::parse(raw("\x22\x01x")).result().volumePercentage(), 0);
}

TEST(Messages, SurviveBeingAssignedFromThemselvesAndMovedFrom) {
  Response response = resultOf("t");
  response = *&response;
  response.setResult(response.result());
  response.setConverseResponse(response.converseResponse());
  EXPECT_EQ(response, resultOf("t"));
  Result result = response.result();
  result.setSpokenResponseText(result.spokenRequestText());
  EXPECT_EQ(result.spokenResponseText(), "t");

  std::vector<Response> moved{response};
  const Response taken = std::move(moved[0]);
  EXPECT_EQ(moved[0], Response());
  moved[0].setEventType(Response::EventType::endOfUtterance);
  EXPECT_EQ(taken, resultOf("t"));
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

TEST(Messages, AreEqualWithEqualHashesOnlyIfNothingDiffers) {
  const std::vector<Response> different = {
      Response(),        Response::parse(raw("\x10\0")),           Response::parse(raw("\x22\0")),
      resultOf(""),      Response::parse(raw("\x2a\x02\x38\x01")), Response::parse(raw("\x10\0\x22\0")),
      resultOf("other"), Response::parse(raw("\x22\0\x78\x01"))};
  for (std::size_t i = 0; i < different.size(); ++i) {
    const Response same = Response::parse(different[i].serialize());
    for (std::size_t j = 0; j < different.size(); ++j)
      EXPECT_EQ(same == different[j], i == j) << i << ' ' << j;
    EXPECT_EQ(same.hash(), different[i].hash());
  }
}

}  // namespace
}  // namespace velmora
