// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The sign-in from the command line, with the built programs.
#include "end_to_end/CommandLine.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using tests::Program;

struct SignInTest : tests::CommandLine {
  [[nodiscard]] std::string stored(const char *key) const {
    return defaults().stringForKey(QString::fromLatin1(key)).toStdString();
  }
};

TEST_F(SignInTest, ASignInIsGoodForTurnsUntilTheSignOut) {
  Program assistant(VELMORA_ASSISTANT, {"--stop-at-eof"}, environment());
  const std::string deployment = ready(assistant).at("deployment");
  EXPECT_EQ(converse({"--fast", m_question}, deployment).status, 1) << "nobody has signed in";

  const Outcome in = converse({"--sign-in"}, deployment);
  ASSERT_EQ(in.status, 0) << in.err;
  EXPECT_EQ(in.out, "Signed in.\n");
  EXPECT_TRUE(defaults().boolForKey(QStringLiteral("logged_in")));
  EXPECT_NE(stored("refresh_token"), "");
  const std::string token = stored("auth_token");
  EXPECT_THAT(token, MatchesRegex("[A-Za-z0-9_-]{43}"));
  EXPECT_EQ(converse({"--fast", m_question}, deployment).status, 0);
  // Another assistant of the same user takes it too.
  Program later(VELMORA_ASSISTANT, {"--stop-at-eof"}, environment());
  const std::string other = ready(later).at("deployment");
  EXPECT_EQ(converse({"--fast", m_question}, other).status, 0);

  EXPECT_EQ(converse({"--sign-out"}, other).out, "Signed out.\n");
  for (const char *key : {"auth_token", "refresh_token", "expires_in"})
    EXPECT_FALSE(defaults().objectForKey(QString::fromLatin1(key)).isValid()) << key;
  EXPECT_FALSE(defaults().boolForKey(QStringLiteral("logged_in")));
  const Outcome refused = converse({"--json", "--fast", "--token", token, m_question}, deployment);
  EXPECT_EQ(refused.status, 1);
  EXPECT_EQ(json::parse(refused.out).at("status"), 16);
  EXPECT_EQ(converse({"--sign-out"}, deployment).out, "Nobody was signed in.\n");
  EXPECT_EQ(assistant.err() + later.err(), "");
}

TEST_F(SignInTest, SaysInOneLineWhyThereIsNone) {
  Program assistant(VELMORA_ASSISTANT, {"--stop-at-eof"}, environment());
  const fs::path good = ready(assistant).at("deployment").get<std::string>();
  const fs::path folder = m_home.path() / "deployment";
  fs::copy(good, folder);
  const auto description = [](const std::string &authorization) {
    return R"({"installed": {"auth_uri": ")" + authorization + R"(", "token_uri": ")" + authorization +
           R"(", "client_id": "velmora", "client_secret": "s", "redirect_uris": ["", "http://localhost/"]}})";
  };
  const std::string own = json::parse(readFile(good / "google_oauth2.json")).at("installed").at("auth_uri");
  const std::pair<std::string, const char *> cases[] = {
      {"{", "needs a sign-in on this machine"},
      {description("http://localhost.example/auth"), "its own at localhost.example"},
      {description("http://127.0.0.1:1/authorize"), "does not answer (is its assistant running?"},
      {description(own), "failed at the exchange of the code with status 400"}};
  for (const auto &[text, says] : cases) {
    (void)m_home.write("deployment/google_oauth2.json", text);
    const Outcome outcome = converse({"--sign-in"}, folder);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, MatchesRegex("velmora-converse: [^\n]*\n"));
    EXPECT_THAT(outcome.err, HasSubstr(says));
    EXPECT_FALSE(defaults().boolForKey(QStringLiteral("logged_in")));
  }
}

}  // namespace
}  // namespace velmora
