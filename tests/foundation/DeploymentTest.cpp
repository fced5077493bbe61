// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "foundation/Deployment.h"

#include <gmock/gmock.h>

#include "support/TemporaryFolder.h"

namespace velmora {
namespace {

using ::testing::HasSubstr;
using tests::TemporaryFolder;

TEST(Deployment, ReadsWhatTheFolderSays) {
  const TemporaryFolder folder;
  (void)folder.write("deployment.json", R"({"host": "assistant.example", "port": 8443, "scope": "s",
                                            "loopback_prefix": "http://localhost", "later": [1],
                                            "links": {"home": "https://assistant.example/"}})");
  const Deployment deployment = Deployment::load(folder.path());
  EXPECT_EQ(deployment.address(), "assistant.example:8443");
  EXPECT_EQ(deployment.scope, "s");
  EXPECT_EQ(deployment.loopbackPrefix, "http://localhost");
  EXPECT_EQ(deployment.links.home, "https://assistant.example/");
  EXPECT_EQ(deployment.links.forum, "");
}

TEST(Deployment, SaysWhichFileIsWrongAndHow) {
  const std::pair<const char *, const char *> cases[] = {
      {nullptr, "is no deployment folder: "},
      {"", "not a JSON object"},
      {"[]", "not a JSON object"},
      {R"({"host": ""})", "\"host\" is missing"},
      {R"({"host": "a b c"})", "not 'a b c'"},
      {R"({"host": "h:443"})", "without a port"},
      {R"({"host": 7})", "\"host\" must be a text"},
      {R"({"host": "h", "port": 65536})", "1 to 65535"},
      {R"({"host": "h", "port": "443"})", "1 to 65535"},
      {R"({"host": "h", "links": 1})", "a JSON object"},
      {R"({"host": "h", "links": {"home": "file:///"}})", "with https:// or http://"}};
  const TemporaryFolder folder;
  const std::string file = folder.path() / "deployment.json";
  for (const auto &[contents, says] : cases) {
    if (contents) (void)folder.write("deployment.json", contents);
    EXPECT_THAT(
        [&] { (void)Deployment::load(folder.path()); },
        ::testing::ThrowsMessage<DeploymentError>(::testing::AllOf(HasSubstr(file), HasSubstr(says))));
  }
}

TEST(Deployment, TheNamedFolderComesBeforeTheEnvironmentBeforeTheUsersOwn) {
  const TemporaryFolder config;
  ::setenv("XDG_CONFIG_HOME", config.path().c_str(), 1);
  ::setenv("VELMORA_DEPLOYMENT", "", 1);
  EXPECT_EQ(Deployment::configuredFolder({}), std::nullopt);
  std::filesystem::create_directories(config.path() / "velmora/deployment");
  EXPECT_EQ(Deployment::configuredFolder({}), config.path() / "velmora/deployment");
  ::setenv("VELMORA_DEPLOYMENT", "/from/environment", 1);
  EXPECT_EQ(Deployment::configuredFolder({}), "/from/environment");
  EXPECT_EQ(Deployment::configuredFolder("/named"), "/named");
}

}  // namespace
}  // namespace velmora
