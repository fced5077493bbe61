// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "tools/Options.h"

#include <gmock/gmock.h>

namespace velmora {
namespace {

using namespace std::chrono_literals;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

TEST(Options, ReadsEveryOptionWhereverItStands) {
  const Options options =
      Options::parse({"a.wav", "--deployment", "/d", "--token=t-1", "--endpoint", "[::1]:8443",
                      "--roots=/r.pem", "-", "--volume", "0", "--save-answer", "out.mp3", "--json", "--fast",
                      "--timeout", "0.25", "--verbose", "--", "--local"});
  EXPECT_EQ(options.action, Options::Action::converse);
  EXPECT_EQ(options.deployment, "/d");
  EXPECT_FALSE(options.local);
  EXPECT_EQ(options.token, "t-1");
  EXPECT_EQ(options.endpoint, (Endpoint{"::1", 8443}));
  EXPECT_EQ(options.roots, "/r.pem");
  EXPECT_EQ(options.volume, 0);
  EXPECT_EQ(options.saveAnswer, "out.mp3");
  EXPECT_TRUE(options.json && options.fast && options.verbose);
  EXPECT_EQ(options.timeout, 250ms);
  EXPECT_THAT(options.audio, ElementsAre("a.wav", "-", "--local"));
}

TEST(Options, HasDefaults) {
  const Options options = Options::parse({"--local", "a b.wav",
                                          "gr\xfc\xdf"
                                          "e.wav"});
  EXPECT_TRUE(options.local);
  EXPECT_EQ(options.volume, 100);
  EXPECT_EQ(options.timeout, 30s);
  EXPECT_FALSE(options.json || options.fast || options.verbose || options.token || options.endpoint);
  EXPECT_THAT(options.audio, ElementsAre("a b.wav",
                                         "gr\xfc\xdf"
                                         "e.wav"));
}

TEST(Options, HelpAndVersionNeedNothingElse) {
  EXPECT_EQ(Options::parse({"--help"}).action, Options::Action::showHelp);
  EXPECT_EQ(Options::parse({"--fast", "--version", "--nonsense"}).action, Options::Action::showVersion);
  EXPECT_EQ(Options::version(), "velmora-converse 0.1.0\n");
}

TEST(Options, SaysWhatIsWrongWithoutRepeatingAToken) {
  const struct {
    std::vector<std::string> arguments;
    const char *says;
  } cases[] = {
      {{}, "no audio file"},
      {{"--local"}, "no audio file"},
      {{"--bogus", "a.wav"}, "unknown option '--bogus'"},
      {{"-x", "a.wav"}, "unknown option '-x'"},
      {{"-5"}, "unknown option '-5'"},
      {{"--json=1", "a.wav"}, "--json takes no value"},
      {{"a.wav", "--token"}, "--token needs a value"},
      {{"--token", "", "a.wav"}, "--token needs a value"},
      {{"--token", "secret\n", "a.wav"}, "--token takes printable"},
      {{"--token", "secret s\xc3\xa9", "a.wav"}, "--token takes printable"},
      {{"--roots=", "a.wav"}, "--roots needs a value"},
      {{"--volume", "-1", "a.wav"}, "--volume takes a number from 0 to 100, not '-1'"},
      {{"--volume", "101", "a.wav"}, "not '101'"},
      {{"--volume", "50%", "a.wav"}, "not '50%'"},
      {{"--volume", "99999999999", "a.wav"}, "not '99999999999'"},
      {{"--timeout", "0", "a.wav"}, "--timeout takes a number of seconds above 0, not '0'"},
      {{"--timeout", "-3", "a.wav"}, "not '-3'"},
      {{"--timeout", "nan", "a.wav"}, "not 'nan'"},
      {{"--timeout", "inf", "a.wav"}, "not 'inf'"},
      {{"--timeout", "3s", "a.wav"}, "not '3s'"},
      {{"--endpoint", "https://a.example", "a.wav"}, "--endpoint takes HOST, HOST:PORT"},
      {{"--endpoint", "a.example:99999", "a.wav"}, "not 'a.example:99999'"},
      {{"--local", "--deployment", "d", "a.wav"}, "--local and --deployment exclude each other"},
      {{"--local", "--endpoint", "h", "a.wav"}, "--local and --endpoint exclude each other"},
      {{"--local", "--roots", "r", "a.wav"}, "--local and --roots exclude each other"},
      {{"-", "a.wav", "-"}, "only once"},
      {{""}, "name of an audio file is empty"},
  };
  for (const auto &c : cases) {
    try {
      (void)Options::parse(c.arguments);
      ADD_FAILURE() << "accepted, expected: " << c.says;
    } catch (const UsageError &error) {
      EXPECT_THAT(error.what(), AllOf(HasSubstr(c.says), Not(HasSubstr("secret"))));
    }
  }
}

}  // namespace
}  // namespace velmora
