// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "tools/Options.h"

#include <gmock/gmock.h>

namespace velmora {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

TEST(Options, StandAnywhereAmongTheFiles) {
  const Options options =
      Options::parse({"a b.wav", "--token=t", "-", "--volume", "0", "gr\xfc\xdf.wav", "--", "--local"});
  EXPECT_FALSE(options.local);
  EXPECT_EQ(options.token, "t");
  EXPECT_EQ(options.volume, 0);
  EXPECT_THAT(options.audio, ElementsAre("a b.wav", "-", "gr\xfc\xdf.wav", "--local"));
  EXPECT_EQ(Options::parse({"--fast", "--version", "--nonsense"}).action, Options::Action::showVersion);
}

TEST(Options, SaysWhatIsWrongWithoutRepeatingAToken) {
  const struct {
    std::vector<std::string> before;
    std::vector<std::string> last;  // each of these is wrong
    const char *says;
  } cases[] = {
      {{"a.wav"}, {"--bogus", "--tokn=secret", "-x", "-5"}, "unknown option '-"},
      {{"a.wav"}, {"--t", "--t=secret"}, "may be any of --token --timeout"},
      {{"--microphone"}, {"--fast", "--sign-in", "--list-devices"}, "--microphone exclude each other"},
      {{"a.wav"}, {"--token", "--token=", "--roots="}, " needs a value"},
      {{"a.wav", "--token"}, {"secret\n", "secret s\xc3\xa9"}, "--token takes printable"},
      {{"a.wav", "--volume"}, {"-1", "101", "50%", "99999999999"}, "from 0 to 100, not '"},
      {{"a.wav", "--timeout"}, {"0", "-3", "nan", "inf", "3s", "86401"}, "above 0 and up to 86400, not '"},
      {{"a.wav", "--endpoint"}, {"https://a.example", "a.example:99999"}, "takes HOST, HOST:PORT"},
      {{"a.wav", "--local"}, {"--deployment=d", "--endpoint=h", "--roots=r"}, "exclude each other"},
      {{"--sign-out"}, {"--token=secret", "--endpoint=h"}, "exclude each other"}};
  for (const auto &c : cases) {
    for (const std::string &last : c.last) {
      auto arguments = c.before;
      arguments.push_back(last);
      EXPECT_THAT([&] { (void)Options::parse(arguments); },
                  ::testing::ThrowsMessage<UsageError>(AllOf(HasSubstr(c.says), Not(HasSubstr("secret")))))
          << last;
    }
  }
}

}  // namespace
}  // namespace velmora
