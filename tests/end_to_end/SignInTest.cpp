// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The sign-in from the command line, with the built programs.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "foundation/Deployment.h"
#include "foundation/UserDefaults.h"
#include "support/Program.h"
#include "support/TemporaryFolder.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using tests::Program;

struct Outcome {
  int status;
  std::string out;
  std::string err;
};

class SignInTest : public ::testing::Test {
 protected:
  SignInTest() { fs::permissions(m_home.path(), fs::perms::owner_all); }

  [[nodiscard]] Program::Environment environment(const std::string &deployment) const {
    const std::string home = m_home.path();
    return {{"HOME", home},           {"XDG_CONFIG_HOME", home},          {"XDG_RUNTIME_DIR", home},
            {"XDG_STATE_HOME", home}, {"VELMORA_DEPLOYMENT", deployment}, {"VELMORA_ASSISTANT_TOKEN", ""}};
  }
  [[nodiscard]] Outcome converse(const std::vector<std::string> &arguments,
                                 const std::string &deployment = "") const {
    Program program(VELMORA_CONVERSE, arguments, environment(deployment));
    const int status = program.finish();
    return {status, program.out(), program.err()};
  }
  static std::string deploymentOf(Program &assistant) {
    EXPECT_TRUE(assistant.waitForOut("\n")) << assistant.err();
    return json::parse(assistant.out()).at("deployment");
  }
  [[nodiscard]] UserDefaults defaults() const {
    return UserDefaults(QString::fromStdString((m_home.path() / "velmora" / "defaults.json").string()));
  }

  tests::TemporaryFolder m_home;
  const std::string m_question = VELMORA_QUESTIONS "/01-what-time-is-it.wav";
};

TEST_F(SignInTest, ASignInIsGoodForTurnsUntilTheSignOut) {
  std::string token;
  Program assistant(VELMORA_ASSISTANT, {"--stop-at-eof"}, environment(""));
  const std::string deployment = deploymentOf(assistant);
  EXPECT_EQ(converse({"--fast", m_question}, deployment).status, 1) << "nobody has signed in";

  const Outcome in = converse({"--sign-in"}, deployment);
  ASSERT_EQ(in.status, 0) << in.err;
  EXPECT_EQ(in.out, "Signed in.\n");
  {
    const UserDefaults stored = defaults();
    EXPECT_TRUE(stored.boolForKey(QStringLiteral("logged_in")));
    token = stored.stringForKey(QStringLiteral("auth_token")).toStdString();
    EXPECT_THAT(token, MatchesRegex("[A-Za-z0-9_-]{43}"));
    EXPECT_FALSE(stored.stringForKey(QStringLiteral("refresh_token")).isEmpty());
    const qint64 left =
        QDateTime::currentDateTimeUtc().secsTo(stored.dateForKey(QStringLiteral("expires_in")));
    EXPECT_GT(left, 3600 - 120);
    EXPECT_LE(left, 3600);
  }
  EXPECT_EQ(converse({"--fast", m_question}, deployment).status, 0);
  // Another assistant of the same user takes it too.
  Program later(VELMORA_ASSISTANT, {"--stop-at-eof"}, environment(""));
  const std::string other = deploymentOf(later);
  EXPECT_EQ(converse({"--fast", m_question}, other).status, 0);

  const Outcome out = converse({"--sign-out"}, other);
  EXPECT_EQ(out.status, 0) << out.err;
  EXPECT_EQ(out.out, "Signed out.\n");
  for (const char *key : {"auth_token", "refresh_token", "expires_in"}) {
    EXPECT_FALSE(defaults().objectForKey(QString::fromLatin1(key)).isValid()) << key;
  }
  EXPECT_FALSE(defaults().boolForKey(QStringLiteral("logged_in")));
  const Outcome refused = converse({"--json", "--fast", "--token", token, m_question}, deployment);
  EXPECT_EQ(refused.status, 1);
  EXPECT_EQ(json::parse(refused.out).at("status"), 16);
  EXPECT_EQ(converse({"--sign-out"}, deployment).out, "Nobody was signed in.\n");
  EXPECT_EQ(assistant.err() + later.err(), "");
}

TEST_F(SignInTest, WithoutADeploymentItIsTheLocalAssistants) {
  const Outcome in = converse({"--sign-in"});
  EXPECT_EQ(in.status, 0) << in.err;
  EXPECT_FALSE(defaults().stringForKey(QStringLiteral("auth_token")).isEmpty());
  EXPECT_EQ(converse({"--sign-out"}).out, "Signed out.\n");
}

TEST_F(SignInTest, SaysInOneLineWhyThereIsNone) {
  Program assistant(VELMORA_ASSISTANT, {"--stop-at-eof"}, environment(""));
  const fs::path good = deploymentOf(assistant);
  const auto with = [&](const std::string &text) {
    const fs::path folder = m_home.path() / "deployment";
    fs::remove_all(folder);
    fs::copy(good, folder);
    fs::remove(folder / "google_oauth2.json");
    if (!text.empty()) (void)m_home.write("deployment/google_oauth2.json", text);
    return folder.string();
  };
  const auto description = [](const std::string &authorization) {
    return R"({"installed": {"auth_uri": ")" + authorization + R"(", "token_uri": ")" + authorization +
           R"(", "client_id": "velmora", "client_secret": "s", "redirect_uris": ["", "http://localhost/"]}})";
  };
  const std::string own = json::parse(readFile(good / "google_oauth2.json")).at("installed").at("auth_uri");
  const struct {
    std::string description;
    std::string says;
  } cases[] = {{"", "the deployment has no sign-in: "},
               {"{", "needs a sign-in on this machine"},
               {description("https://accounts.example/auth"), "its own at accounts.example"},
               {description("http://localhost.example/auth"), "its own at localhost.example"},
               {description("http://127.0.0.1:1/authorize"), "does not answer (is its assistant running?"},
               {description(own), "failed at the exchange of the code with status 400"}};
  for (const auto &c : cases) {
    const Outcome outcome = converse({"--sign-in"}, with(c.description));
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, MatchesRegex("velmora-converse: [^\n]*\n"));
    EXPECT_THAT(outcome.err, HasSubstr(c.says));
    EXPECT_FALSE(defaults().boolForKey(QStringLiteral("logged_in")));
  }
}

}  // namespace
}  // namespace velmora
