// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "protocol/Messages.h"

#include <gmock/gmock.h>
#include <protocol/embedded_assistant.pb.h>

#include <functional>
#include <latch>
#include <limits>
#include <random>
#include <thread>
#include <unordered_set>

namespace velmora {

void PrintTo(const WireMessage &message, std::ostream *out) { *out << message.debugDescription(); }

namespace {

namespace wire = google::assistant::embedded::v1alpha1;
using AudioInConfig = Google_Assistant_Embedded_V1alpha1_AudioInConfig;
using AudioOutConfig = Google_Assistant_Embedded_V1alpha1_AudioOutConfig;
using AudioOut = Google_Assistant_Embedded_V1alpha1_AudioOut;
using Config = Google_Assistant_Embedded_V1alpha1_ConverseConfig;
using Request = Google_Assistant_Embedded_V1alpha1_ConverseRequest;
using Response = Google_Assistant_Embedded_V1alpha1_ConverseResponse;
using Result = Google_Assistant_Embedded_V1alpha1_ConverseResult;
using State = Google_Assistant_Embedded_V1alpha1_ConverseState;
using Status = Google_Rpc_Status;

/// Bytes, zeros included, without the literal's terminator.
template <std::size_t Size>
std::string raw(const char (&literal)[Size]) {
  return {literal, Size - 1};
}

/// A `Message` after `change`.
template <typename Message>
Message made(const std::function<void(Message &)> &change) {
  Message message;
  change(message);
  return message;
}

AudioOutConfig mp3(std::int32_t volume) {
  return made<AudioOutConfig>([&](auto &m) {
    m.setEncoding(AudioOutConfig::Encoding::mp3);
    m.setSampleRateHertz(16000);
    m.setVolumePercentage(volume);
  });
}

Response understood(std::string text) {
  return made<Response>(
      [&](auto &m) { m.setResult(made<Result>([&](auto &r) { r.setSpokenRequestText(std::move(text)); })); });
}

/// Read and written again.
template <typename Message>
std::string again(const std::string &bytes) {
  return Message::parse(bytes).serialize();
}

template <typename Message>
void expectBothWays(const Message &message, const std::string &bytes) {
  EXPECT_EQ(message.serialize(), bytes) << message.debugDescription();
  EXPECT_EQ(Message::parse(bytes), message);
  EXPECT_EQ(again<Message>(bytes), bytes);
}

TEST(Messages, HaveExactlyTheseBytes) {
  expectBothWays(Config(), "");
  expectBothWays(Request(), "");
  expectBothWays(mp3(-1), raw("\x08\x02\x10\x80\x7d\x18\xff\xff\xff\xff\xff\xff\xff\xff\xff\x01"));
  expectBothWays(mp3(std::numeric_limits<std::int32_t>::min()),
                 raw("\x08\x02\x10\x80\x7d\x18\x80\x80\x80\x80\xf8\xff\xff\xff\xff\x01"));
  // What is present, or the case held, is written even when it is the default.
  expectBothWays(made<Config>([](auto &m) { m.setAudioInConfig({}); }), raw("\x0a\0"));
  expectBothWays(made<Config>([](auto &m) { m.setAudioOutConfig({}); }), raw("\x12\0"));
  expectBothWays(made<Config>([](auto &m) { m.setConverseState({}); }), raw("\x1a\0"));
  expectBothWays(made<Request>([](auto &m) { m.setConfig({}); }), raw("\x0a\0"));
  expectBothWays(made<Request>([](auto &m) { m.setAudioIn(""); }), raw("\x12\0"));
  expectBothWays(made<Request>([](auto &m) { m.setAudioIn("\xff"); }), raw("\x12\x01\xff"));
  expectBothWays(made<Response>([](auto &m) { m.setError({}); }), raw("\x0a\0"));
  expectBothWays(made<Response>([](auto &m) { m.setEventType({}); }), raw("\x10\0"));
  expectBothWays(made<Response>([](auto &m) { m.setAudioOut({}); }), raw("\x1a\0"));
  expectBothWays(made<Response>([](auto &m) { m.setResult({}); }), raw("\x2a\0"));
  expectBothWays(made<AudioOut>([](auto &m) { m.setAudioData("\xff"); }), raw("\x0a\x01\xff"));
}

TEST(Messages, GiveEachFieldItsNumberAndItsName) {
  Config config;  // set in descending order
  config.setConverseState(made<State>([](auto &m) { m.setConversationState(raw("\xff\0")); }));
  config.setAudioOutConfig(mp3(7));
  config.setAudioInConfig(made<AudioInConfig>([](auto &m) { m.setSampleRateHertz(3); }));
  expectBothWays(config, raw("\x0a\x02\x10\x03\x12\x07\x08\x02\x10\x80\x7d\x18\x07\x1a\x04\x0a\x02\xff\0"));
  EXPECT_EQ(config.audioInConfig().sampleRateHertz(), 3);
  EXPECT_EQ(config.audioOutConfig().encoding(), AudioOutConfig::Encoding::mp3);
  EXPECT_EQ(config.audioOutConfig().sampleRateHertz(), 16000);
  EXPECT_EQ(config.audioOutConfig().volumePercentage(), 7);
  EXPECT_EQ(config.converseState().conversationState(), raw("\xff\0"));
  for (const char present : {'\x0a', '\x12', '\x1a'}) {
    Config one = Config::parse(std::string{present, 0});
    EXPECT_EQ(one.hasAudioInConfig(), present == 0x0a);
    EXPECT_EQ(one.hasAudioOutConfig(), present == 0x12);
    EXPECT_EQ(one.hasConverseState(), present == 0x1a);
    one.clearAudioInConfig();
    one.clearAudioOutConfig();
    one.clearConverseState();
    EXPECT_EQ(one, Config());
  }

  Result result;
  result.setVolumePercentage(100);
  result.setMicrophoneMode(Result::MicrophoneMode::dialogFollowOn);
  result.setConversationState("s");
  result.setSpokenResponseText("r");
  result.setSpokenRequestText("ä");
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

/// What is read is written, not always as it stood.
TEST(Messages, KeepMergeAndReplaceWhatIsRead) {
  constexpr auto config = again<Config>, request = again<Request>, response = again<Response>;
  constexpr auto audioOut = again<AudioOutConfig>;
  const struct {
    const char *what;
    decltype(config) again;
    std::string read, written;
  } cases[] = {
      {"the skipped field 4", response, raw("\x22\x01x"), raw("\x22\x01x")},
      {"unknown fields last, in reading order", response, raw("\x78\x01\x22\x01x\x10\x01"),
       raw("\x10\x01\x78\x01\x22\x01x")},
      {"unknown fields of a sub-message", response, raw("\x2a\x05\x38\x09\x0a\x01t"),
       raw("\x2a\x05\x0a\x01t\x38\x09")},
      {"an unknown group, 32 and 64 bits", response, raw("\x7b\x08\x01\x7c\x7dpqrs\x79pqrstuvw"),
       raw("\x7b\x08\x01\x7c\x7dpqrs\x79pqrstuvw")},
      {"a known field of another wire type", response, raw("\x12\x01x"), raw("\x12\x01x")},
      {"an enumeration's new number", audioOut, raw("\x08\x07"), raw("\x08\x07")},
      {"a negative enumeration number", audioOut, raw("\x08\xff\xff\xff\xff\xff\xff\xff\xff\xff\x01"),
       raw("\x08\xff\xff\xff\xff\xff\xff\xff\xff\xff\x01")},
      {"the last scalar", audioOut, raw("\x10\x01\x18\x05\x10\x02"), raw("\x10\x02\x18\x05")},
      {"the last scalar, a default", audioOut, raw("\x10\x01\x10\0"), ""},
      {"the low 32 bits of a wide varint", audioOut, raw("\x10\x81\x80\x80\x80\x10"), raw("\x10\x01")},
      {"a repeated sub-message merges", config, raw("\x0a\x02\x08\x01\x12\0\x0a\x02\x10\x02"),
       raw("\x0a\x04\x08\x01\x10\x02\x12\0")},
      {"a repeated case merges", response, raw("\x2a\x03\x0a\x01q\x2a\x03\x12\x01r"),
       raw("\x2a\x06\x0a\x01q\x12\x01r")},
      {"a later case replaces", response, raw("\x2a\x03\x0a\x01q\x10\0"), raw("\x10\0")},
      {"a case that was replaced starts anew", request, raw("\x0a\x02\x0a\0\x12\x01x\x0a\x02\x12\0"),
       raw("\x0a\x02\x12\0")},
  };
  for (const auto &c : cases) {
    EXPECT_EQ(c.again(c.read), c.written) << c.what;
  }

  EXPECT_EQ(Response::parse(raw("\x22\x01x\x10\x01")).unknownFields(), raw("\x22\x01x"));
  EXPECT_TRUE(std::holds_alternative<std::monostate>(Response::parse(raw("\x22\x01x")).converseResponse()));
  EXPECT_EQ(Response::parse(raw("\x2a\x02\x38\x09")).result().unknownFields(), raw("\x38\x09"));
  EXPECT_EQ(Response::parse(raw("\x10\x05")).eventType(), Response::EventType::UNRECOGNIZED(5));
}

TEST(Messages, RefuseMalformedBytesInSilence) {
  constexpr auto request = again<Request>, response = again<Response>, status = again<Status>;
  const struct {
    const char *what;
    decltype(request) again;
    std::string bytes;
  } cases[] = {
      {"a value cut short", response, raw("\x10\x80")},
      {"a tag without value", response, raw("\x10")},
      {"a tag cut short", response, raw("\x80")},
      {"a varint of eleven bytes", response, raw("\x10\xff\xff\xff\xff\xff\xff\xff\xff\xff\xff\x01")},
      {"a length past the end", request, raw("\x12\x04xyz")},
      {"a length past the sub-message", response, raw("\x2a\x02\x0a\x01t")},
      {"a length beyond 2 GiB", request, raw("\x12\xff\xff\xff\xff\x0f")},
      {"wire type 6", response, raw("\x16\x01")},
      {"wire type 7", response, raw("\x17\x01")},
      {"field number 0", response, raw("\x02\0")},
      {"a stray end of group", response, raw("\x0c")},
      {"a group without end", response, raw("\x7b\x08\x01")},
      {"a group ended by another", response, raw("\x7b\x74")},
      {"a text that is not UTF-8", response, raw("\x2a\x03\x0a\x01\xff")},
      {"the other text", response, raw("\x2a\x03\x12\x01\xff")},
      {"an overlong encoding in a text", status, raw("\x12\x02\xc0\x80")},
      {"a type address that is not UTF-8", status, raw("\x1a\x03\x0a\x01\xff")},
      {"good fields before bad ones", response, raw("\x10\x01\x10\x80")},
  };
  ::testing::internal::CaptureStderr();
  for (const auto &c : cases) {
    try {
      (void)c.again(c.bytes);
      ADD_FAILURE() << c.what;
    } catch (const MessageError &error) {
      EXPECT_THAT(error.what(), ::testing::MatchesRegex("[0-9]+ bytes are not a google[.A-Za-z0-9]+"))
          << c.what;
    }
  }
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

TEST(Messages, RefuseTextsThatAreNotUtf8AndStayAsTheyWere) {
  Result result = understood("before").result();
  EXPECT_THROW(result.setSpokenRequestText("\xff"), MessageError);
  EXPECT_THROW(result.setSpokenResponseText("\xed\xa0\x80"), MessageError);  // half of a surrogate pair
  EXPECT_EQ(result, understood("before").result());
  Status status;
  EXPECT_THROW(status.setMessage("\xc3"), MessageError);
  EXPECT_THROW(status.setDetails({{"good", "\xff"}, {"\xff", "v"}}), MessageError);
  EXPECT_EQ(status, Status());
}

TEST(Messages, HoldOneCaseAtMost) {
  Request request;
  request.setAudioIn("pcm");
  request.setConfig(made<Config>([](auto &m) { m.setAudioOutConfig(mp3(1)); }));
  EXPECT_EQ(request.audioIn(), "");
  request.setConfig(made<Config>([](auto &m) { m.setAudioInConfig({}); }));  // replaces, does not merge
  EXPECT_EQ(request.serialize(), raw("\x0a\x02\x0a\0"));
  const auto held = request.converseRequest();
  ASSERT_TRUE(std::holds_alternative<Config>(held));
  request.setConverseRequest(Request::OneOf_ConverseRequest::audioIn("x"));
  EXPECT_FALSE(request.config().hasAudioInConfig());
  EXPECT_EQ(request.converseRequest(), Request::OneOf_ConverseRequest::audioIn("x"));
  request.setConverseRequest(held);
  EXPECT_TRUE(request.config().hasAudioInConfig());
  request.setConverseRequest({});
  EXPECT_EQ(request, Request());

  using OneOf = Response::OneOf_ConverseResponse;
  const OneOf all[] = {{},
                       OneOf::error(made<Status>([](auto &m) { m.setCode(1); })),
                       OneOf::eventType(Response::EventType::endOfUtterance),
                       OneOf::audioOut(made<AudioOut>([](auto &m) { m.setAudioData("a"); })),
                       OneOf::result(understood("q").result())};
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
  Response original = understood("text");
  const std::string &text = original.result().spokenRequestText();
  Response copy = original;
  EXPECT_EQ(&copy.result().spokenRequestText(), &text) << "neither copying nor reading copies the text";
  copy.setEventType(Response::EventType::endOfUtterance);
  EXPECT_EQ(original, understood("text"));

  Result alias = original.result();
  alias.setSpokenRequestText("changed");
  EXPECT_EQ(original, understood("text"));
  alias = original.result();
  original.setAudioOut({});
  EXPECT_EQ(alias.spokenRequestText(), "text");
  original = Response();  // the alias is the last one that holds the storage
  alias.setVolumePercentage(3);
  EXPECT_EQ(alias.spokenRequestText(), "text");
  EXPECT_EQ(alias.volumePercentage(), 3);

  // What an absent part reads as is nobody's to change, not even when the whole has gone.
  Result absent = Response::parse(raw("\x22\x01x")).result();
  absent.setVolumePercentage(1);
  EXPECT_EQ(Response::parse(raw("\x22\x01x")).result().volumePercentage(), 0);
}

TEST(Messages, SurviveBeingAssignedFromThemselves) {
  Config config;
  config.setAudioOutConfig(mp3(9));
  const Config copy = config;
  config = *&config;
  EXPECT_EQ(config, copy);
  config.setAudioOutConfig(config.audioOutConfig());
  EXPECT_EQ(config, copy);

  Response response = understood("t");
  response.setResult(response.result());
  response.setConverseResponse(response.converseResponse());
  EXPECT_EQ(response, understood("t"));
  Result result = response.result();
  result.setSpokenResponseText(result.spokenRequestText());
  EXPECT_EQ(result.spokenResponseText(), "t");

  std::vector<Response> moved{response};
  Response taken = std::move(moved[0]);
  EXPECT_EQ(moved[0], Response());
  moved[0].setEventType(Response::EventType::endOfUtterance);
  EXPECT_EQ(taken, understood("t"));

  config.clearAudioOutConfig();
  EXPECT_TRUE(copy.hasAudioOutConfig());
  EXPECT_EQ(config, Config());
}

TEST(Messages, ChangeOnManyThreadsWhileTheyShare) {
  for (int round = 0; round < 200; ++round) {
    const Response shared = understood("shared");
    std::latch start(4);
    std::vector<std::thread> threads;
    for (int i = 1; i <= 4; ++i) {
      threads.emplace_back([&start, mine = shared, part = shared.result(), i]() mutable {
        start.arrive_and_wait();
        const Response before = mine;
        part.setVolumePercentage(i);
        mine.setResult(part);
        EXPECT_EQ(mine.result().volumePercentage(), i);
        EXPECT_EQ(before, understood("shared"));
      });
    }
    for (std::thread &thread : threads) thread.join();
    EXPECT_EQ(shared, understood("shared"));
  }
}

/// The count alone must order the other's reading before our writing: the flag here orders nothing.
TEST(Messages, ChangeInPlaceOnceTheOtherThreadHasLetGo) {
  for (int round = 0; round < 200; ++round) {
    Result mine = understood("text").result();
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
      Response(),          Response::parse(raw("\x10\0")),           Response::parse(raw("\x22\0")),
      understood(""),      Response::parse(raw("\x2a\x02\x38\x01")), Response::parse(raw("\x10\0\x22\0")),
      understood("other"), Response::parse(raw("\x22\0\x78\x01")),   Response::parse(raw("\x78\x01\x22\0"))};
  for (std::size_t i = 0; i < different.size(); ++i) {
    const Response same = Response::parse(different[i].serialize());
    for (std::size_t j = 0; j < different.size(); ++j)
      EXPECT_EQ(same == different[j], i == j) << i << ' ' << j;
    EXPECT_EQ(same.hash(), different[i].hash());
  }
  EXPECT_EQ(std::unordered_set<Response>(different.begin(), different.end()).size(), different.size());
}

TEST(Messages, RenderAsText) {
  Response response = Response::parse(raw("\x2a\x02\x38\x09\x22\x02\x08\x01\x68\x07"));
  Result result = response.result();
  result.setSpokenRequestText("wie spät?\n\"");
  result.setConversationState("\xff");
  result.setMicrophoneMode(Result::MicrophoneMode::closeMicrophone);
  response.setResult(result);
  EXPECT_EQ(response.debugDescription(),
            R"(result { spoken_request_text: "wie spät?\n\"" conversation_state: "\377" )"
            R"(microphone_mode: CLOSE_MICROPHONE 7: 9 } 4 { 1: 1 } 13: 7)");
  Config config;
  config.setAudioInConfig(AudioInConfig::parse(raw("\x08\x07")));
  EXPECT_EQ(config.textFormat(), "audio_in_config {\n  encoding: 7\n}\n");
  Status status;
  status.setDetails({{"type.googleapis.com/google.rpc.Status", raw("\x08\x05")}});
  EXPECT_EQ(status.debugDescription(),
            R"(details { type_url: "type.googleapis.com/google.rpc.Status" value: "\010\005" })");
  EXPECT_EQ(Request().textFormat() + Request().debugDescription(), "");
}

TEST(OpenEnum, NamesItsCasesAndKeepsOtherNumbers) {
  using In = AudioInConfig::Encoding;
  using Out = AudioOutConfig::Encoding;
  static_assert(In() == In::encodingUnspecified && In(In::flac).number() == 2 &&
                Out(Out::mp3).number() == 2 && Out(Out::opusInOgg).number() == 3);
  static_assert(In::fromNumber(1) == In::linear16 && !In::fromNumber(2).isUnrecognized());
  static_assert(In::fromNumber(3) == In::UNRECOGNIZED(3) && In::UNRECOGNIZED(3) != In::UNRECOGNIZED(-3));
  static_assert(In::fromNumber(3).isUnrecognized() && In::fromNumber(-1).isUnrecognized());
  switch (Out(Out::UNRECOGNIZED(9))) {
    case Out::mp3: FAIL();
    default: break;
  }
}

/// Mutates valid messages and expects of ours what the generated class does.
template <typename Message, typename Generated>
void expectAgreement(const std::vector<std::string> &seeds, std::mt19937 &random) {
  const auto below = [&](std::size_t limit) {
    return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random);
  };
  int understoodCount = 0;
  constexpr int kRounds = 4000;
  for (int round = 0; round < kRounds; ++round) {
    std::string bytes = seeds[below(seeds.size())];
    for (std::size_t changes = below(4); changes > 0; --changes) {
      const std::string noise =
          below(2) ? std::string(below(2), static_cast<char>(below(256))) : seeds[below(seeds.size())];
      bytes.replace(below(bytes.size() + 1), below(3), noise);
    }
    Generated generated;
    const bool parses = generated.ParseFromString(bytes);
    try {
      const Message message = Message::parse(bytes);
      ASSERT_TRUE(parses) << ::testing::PrintToString(bytes);
      ASSERT_EQ(message.serialize(), generated.SerializeAsString());
      ASSERT_EQ(Message::parse(message.serialize()), message);
      ++understoodCount;
    } catch (const MessageError &) {
      ASSERT_FALSE(parses) << ::testing::PrintToString(bytes);
    }
  }
  EXPECT_GT(understoodCount, kRounds / 10);
  EXPECT_LT(understoodCount, kRounds - kRounds / 10);
}

TEST(Messages, AgreeWithTheGeneratedClassesOnMutatedBytes) {
  std::mt19937 random(20260101);
  expectAgreement<Request, wire::ConverseRequest>(
      {raw("\x0a\x0d\x0a\x05\x08\x01\x10\x80\x7d\x12\x04\x08\x02\x18\x32"), raw("\x12\x04pcm!"), ""}, random);
  expectAgreement<Response, wire::ConverseResponse>(
      {understood("wie spät ist es").serialize(), raw("\x10\x01"), raw("\x1a\x05\x0a\x03mp3"),
       raw("\x22\x01x"), raw("\x0a\x0d\x08\x05\x12\x01m\x1a\x06\x0a\x01t\x12\x01v")},
      random);
}

}  // namespace
}  // namespace velmora
