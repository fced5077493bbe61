// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "tools/Report.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

namespace velmora {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

Turn answeredTurn() {
  Turn turn;
  turn.request = "what time is it";
  turn.answer = "It is ten past nine.";
  turn.audio = std::string(4321, 'x');
  turn.followOn = true;
  turn.endOfUtterance = -0.04;
  turn.firstAudio = 843.16;
  turn.done = 1000.0;
  return turn;
}

TEST(Report, JsonHasTheseKeysInThisOrder) {
  EXPECT_EQ(
      jsonReport(answeredTurn()),
      R"({"request":"what time is it","answer":"It is ten past nine.","audio_bytes":4321,"follow_on":true,)"
      R"("status":0,"status_message":null,"end_of_utterance_ms":0.0,"first_audio_ms":843.2,"done_ms":1000.0})"
      "\n");
  EXPECT_EQ(
      jsonReport(Turn{.outcome = Turn::Outcome::refused, .status = 16, .statusMessage = "no \"such\" token"}),
      R"({"request":"","answer":"","audio_bytes":0,"follow_on":false,"status":16,)"
      R"("status_message":"no \"such\" token","end_of_utterance_ms":null,"first_audio_ms":null,"done_ms":null})"
      "\n");
}

TEST(Report, TextFromOutsideCannotSpoilALine) {
  const struct {
    std::string text;
    const char *plain;
    const char *json;  // the JSON text's letters between its quotes
  } cases[] = {
      {"Grüße, 世界 🎉", "Grüße, 世界 🎉", "Grüße, 世界 🎉"},
      {"one\r\n\n two\tthree\n", "one  two three", "one\\r\\n\\n two\\tthree\\n"},
      {std::string("a\0b\x1b[2J\x7f", 8), "a b [2J", "a\\u0000b\\u001b[2J\\u007f"},
      {"a\xc2\x9b"
       "31mb\xc2\x85"
       "c\xc2\xa0"
       "d",
       "a 31mb c\xc2\xa0"
       "d",
       "a\\u009b31mb\\u0085c\xc2\xa0"
       "d"},
      {"a\xe2\x80\xa8"
       "b",
       "a b",
       "a\xe2\x80\xa8"
       "b"},
      {"not \xff UTF-8 \xc2", "not \xef\xbf\xbd UTF-8 \xef\xbf\xbd", "not \xef\xbf\xbd UTF-8 \xef\xbf\xbd"},
      {"", "", ""}};
  for (const auto &c : cases) {
    Turn turn = answeredTurn();
    turn.answer = c.text;
    EXPECT_EQ(textReport(turn), "You: what time is it\nVelmora: " + std::string(c.plain) + "\n");
    const std::string json = jsonReport(turn);
    EXPECT_THAT(json, HasSubstr("\"answer\":\"" + std::string(c.json) + "\",\"audio_bytes\""));
    EXPECT_TRUE(nlohmann::json::accept(json)) << json;
  }
}

TEST(Report, AFailureSaysWhatHappenedAndWhatToDo) {
  using Outcome = Turn::Outcome;
  const ServiceDescription given{.address = "a.example:443", .tokenSource = TokenSource::argument};
  const ServiceDescription stored{.address = "a.example", .tokenSource = TokenSource::stored};
  const ServiceDescription none{.address = "a.example", .tokenSource = TokenSource::none};
  const struct {
    Outcome outcome;
    int status;
    std::optional<std::string> message;
    const ServiceDescription &service;
    const char *line;
  } cases[] = {
      {Outcome::refused, 16, "expired", given,
       "the service refused the token: expired (give a valid one with --token)"},
      {Outcome::refused,
       16,
       {},
       stored,
       "the service refused the token (sign in anew, or give a valid one with --token)"},
      {Outcome::refused, 16, "", none,
       "the service refused the token (none is stored: sign in, or give one with --token)"},
      {Outcome::refused, 14, "Connection refused", given,
       "the service at a.example:443 cannot be reached: Connection refused (check the address and the "
       "network)"},
      {Outcome::refused, 14, "Ssl handshake failed", given,
       "the service at a.example:443 cannot be reached: Ssl handshake failed (the TLS roots do not vouch for "
       "it, see "
       "--roots)"},
      {Outcome::refused, 12, "", given,
       "what answers at a.example:443 is no assistant service (check the address)"},
      {Outcome::refused, 99, "two\nlines", given, "the service ended the call with status 99: two lines"},
      {Outcome::unanswered, 0, {}, given, "the service at a.example:443 ended the call without an answer"},
      {Outcome::timedOut, 4, "no answer within 30 s of the last audio", given,
       "the service at a.example:443 does not answer: no answer within 30 s of the last audio (check the "
       "address, or "
       "allow more with --timeout)"},
      {Outcome::noAudio, 3, "a.wav: is damaged", given, "a.wav: is damaged"},
      {Outcome::interrupted, 1, "interrupted", given, "interrupted"}};
  for (const auto &c : cases) {
    EXPECT_EQ(explain({.outcome = c.outcome, .status = c.status, .statusMessage = c.message}, c.service),
              c.line);
  }
}

}  // namespace
}  // namespace velmora
