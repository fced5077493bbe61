// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "tools/Report.h"

#include <gmock/gmock.h>

namespace velmora {
namespace {

using ::testing::HasSubstr;

TEST(Report, TextFromOutsideCannotSpoilALine) {
  const struct {
    std::string text;
    std::string plain;
    std::string json;  // the letters between the quotes
  } cases[] = {{"Grüße, 世界 🎉", "Grüße, 世界 🎉", "Grüße, 世界 🎉"},
               {std::string("a\0b\x1b[2J\x7f", 8), "a b [2J", "a\\u0000b\\u001b[2J\\u007f"},
               {"a\u009b31m \u0085c\u00a0d", "a 31m  c\u00a0d", "a\\u009b31m \\u0085c\u00a0d"},
               {"not \xff UTF-8 \xc2", "not \ufffd UTF-8 \ufffd", "not \ufffd UTF-8 \ufffd"},
               {"\r\n", "(no text)", "\\r\\n"}};
  for (const auto &c : cases) {
    const Turn turn{.answer = c.text};
    EXPECT_EQ(textReport(turn), "You: (nothing heard)\nVelmora: " + c.plain + "\n");
    EXPECT_THAT(jsonReport(turn), HasSubstr("\"answer\":\"" + c.json + "\",\"audio_bytes\""));
  }
}

TEST(Report, AFailureSaysWhatHappenedAndWhatToDo) {
  const struct {
    int status;
    const char *message;
    const char *line;
  } cases[] = {
      {16, "old", "refused the token: old (sign in anew, or give a valid one with --token)"},
      {14, "Cancelling all calls", "the service at h:1 was stopped (try again)"},
      {14, "failed to connect to all addresses; last error: UNKNOWN: ipv4:127.0.0.1:1: Connection refused",
       "at h:1 cannot be reached: Connection refused (check the address and the network)"},
      {14, "ipv4:127.0.0.1:1: Peer name 127.0.0.1 is not in peer certificate",
       ": its certificate is for another name (check the address, see --roots)"},
      {14, "Ssl handshake failed: SSL_ERROR_SSL", ": it does not speak TLS as expected (check the address)"},
      {99, "two\nlines", "the service ended the call with status 99: two lines"}};
  for (const auto &c : cases) {
    EXPECT_THAT(explain({.outcome = Turn::Outcome::refused, .status = c.status, .statusMessage = c.message},
                        {.address = "h:1", .tokenSource = TokenSource::stored}),
                ::testing::EndsWith(c.line));
  }
}

}  // namespace
}  // namespace velmora
