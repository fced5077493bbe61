// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "tools/Report.h"

#include <gmock/gmock.h>

namespace velmora {
namespace {

using ::testing::HasSubstr;
using Outcome = Turn::Outcome;

TEST(Report, JsonHasTheseKeysInThisOrder) {
  EXPECT_EQ(jsonReport({.request = "what",
                        .answer = "a \"b\"",
                        .audio = "four",
                        .followOn = true,
                        .endOfUtterance = -0.04,
                        .firstAudio = 843.16,
                        .done = 1000.0}),
            R"({"request":"what","answer":"a \"b\"","audio_bytes":4,"follow_on":true,"status":0,)"
            R"("status_message":null,"end_of_utterance_ms":0.0,"first_audio_ms":843.2,"done_ms":1000.0})"
            "\n");
  EXPECT_THAT(jsonReport({.outcome = Outcome::refused, .status = 16, .statusMessage = "no"}),
              HasSubstr(R"("status":16,"status_message":"no","end_of_utterance_ms":null,)"));
}

TEST(Report, TextFromOutsideCannotSpoilALine) {
  const std::string replacement = "\xef\xbf\xbd";
  const struct {
    std::string text;
    std::string plain;
    std::string json;  // the letters between the quotes
  } cases[] = {{"Grüße, 世界 🎉", "Grüße, 世界 🎉", "Grüße, 世界 🎉"},
               {"one\r\n\n two\tthree\n", "one  two three", "one\\r\\n\\n two\\tthree\\n"},
               {std::string("a\0b\x1b[2J\x7f", 8), "a b [2J", "a\\u0000b\\u001b[2J\\u007f"},
               {"a\u009b31m \u0085c\u00a0d", "a 31m  c\u00a0d", "a\\u009b31m \\u0085c\u00a0d"},
               {"a\u2028z", "a z", "a\u2028z"},
               {"not \xff UTF-8 \xc2", "not " + replacement + " UTF-8 " + replacement,
                "not " + replacement + " UTF-8 " + replacement},
               {"\n", "(no text)", "\\n"}};
  for (const auto &c : cases) {
    const Turn turn{.request = "what", .answer = c.text};
    EXPECT_EQ(textReport(turn), "You: what\nVelmora: " + c.plain + "\n");
    EXPECT_THAT(jsonReport(turn), HasSubstr("\"answer\":\"" + c.json + "\",\"audio_bytes\""));
  }
}

TEST(Report, AFailureSaysWhatHappenedAndWhatToDo) {
  const struct {
    int status;
    TokenSource token;
    std::optional<std::string> message;
    const char *line;
  } cases[] = {
      {16, TokenSource::argument, "old", "refused the token: old (give a valid one with --token)"},
      {16, TokenSource::stored, {}, "refused the token (sign in anew, or give a valid one with --token)"},
      {16, TokenSource::none, "", "refused the token (none is stored: sign in, or give one with --token)"},
      {14, TokenSource::none, "no route",
       "at h:1 cannot be reached: no route (check the address and the network)"},
      {14, TokenSource::none, "Cancelling all calls", "the service at h:1 was stopped (try again)"},
      {14, TokenSource::none,
       "failed to connect to all addresses; last error: UNKNOWN: ipv4:127.0.0.1:1: Failed to connect to "
       "remote host: Connection refused",
       "at h:1 cannot be reached: Connection refused (check the address and the network)"},
      {14, TokenSource::none,
       "ipv4:127.0.0.1:1: Ssl handshake failed: SSL_ERROR_SSL: error:0A000086:SSL routines::certificate "
       "verify failed",
       ": its certificate is not trusted (see --roots)"},
      {14, TokenSource::none, "ipv4:127.0.0.1:1: Peer name 127.0.0.1 is not in peer certificate",
       ": its certificate is for another name (check the address, see --roots)"},
      {14, TokenSource::none, "last error: UNKNOWN: ipv4:127.0.0.1:1: Handshake read failed",
       ": it accepts connections but says nothing (check the address)"},
      {14, TokenSource::none,
       "Ssl handshake failed: SSL_ERROR_SSL: error:0A00010B:SSL routines::wrong version number",
       ": it does not speak TLS as expected (check the address)"},
      {14, TokenSource::none,
       "DNS resolution failed for h: C-ares status is not ARES_SUCCESS qtype=AAAA name=h is_balancer=0",
       ": its name is not known (check the address and the network)"},
      {8, TokenSource::none, "Busy", "the service is at its limit: Busy (try again later)"},
      {8, TokenSource::none, "Busy; try again later", "the service is at its limit: Busy; try again later"},
      {12, TokenSource::none, "", "what answers at h:1 is no assistant service (check the address)"},
      {99, TokenSource::none, "two\nlines", "the service ended the call with status 99: two lines"}};
  for (const auto &c : cases) {
    EXPECT_THAT(explain({.outcome = Outcome::refused, .status = c.status, .statusMessage = c.message},
                        {.address = "h:1", .tokenSource = c.token}),
                ::testing::EndsWith(c.line));
  }
  EXPECT_EQ(explain({.outcome = Outcome::refused, .stalled = std::chrono::seconds(10), .status = 4}, {}),
            "the audio has stalled: nothing came for 10 s, and the service ended the call");
  EXPECT_EQ(textReport({.answer = "I did not hear anything."}),
            "You: (nothing heard)\nVelmora: I did not hear anything.\n");
  EXPECT_EQ(explain({.outcome = Outcome::unanswered}, {.address = "h:1"}),
            "the service at h:1 ended the call without an answer");
}

}  // namespace
}  // namespace velmora
