// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "tools/ServiceAccess.h"

#include <gmock/gmock.h>

#include "support/TemporaryFolder.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::ThrowsMessage;

constexpr auto kRoots = "-----BEGIN CERTIFICATE-----\nAAAA\n-----END CERTIFICATE-----\n";

/// A configuration folder of its own, and a deployment that is configured.
struct ServiceAccessTest : ::testing::Test {
  ServiceAccessTest() {
    fs::create_directories(folder.path() / "deployed");
    file = folder.write("deployed/deployment.json", R"({"host": "deployed.example", "port": 8443})");
    (void)folder.write("deployed/roots.pem", kRoots);
    roots = folder.write("other.pem", std::string(kRoots) + "other\n");
    ::setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1);
    ::setenv("VELMORA_DEPLOYMENT", (folder.path() / "deployed").c_str(), 1);
  }
  static ServiceAccess access(std::vector<std::string> arguments) {
    arguments.emplace_back("a.wav");
    return ServiceAccess(Options::parse(arguments), -1);
  }
  static std::string rootsOf(const ServiceAccess &service) {
    return readFile(service.deployment().resource("roots", "pem"));
  }

  tests::TemporaryFolder folder;
  std::string file;
  std::string roots;
};

TEST_F(ServiceAccessTest, ArgumentsReplaceWhatTheDeploymentSays) {
  const ServiceAccess elsewhere = access({"--endpoint", "other.example"});
  EXPECT_EQ(elsewhere.description().address, "other.example") << "the port is the other host's";
  EXPECT_EQ(rootsOf(elsewhere), kRoots);
  EXPECT_EQ(access({"--roots", roots}).description().address, "deployed.example:8443");
  const auto named = folder.write("deployment.json", R"({"host": "named.example"})").parent_path();
  EXPECT_EQ(access({"--deployment", named, "--roots", roots}).description().address, "named.example");
  // A deployment that is broken does not stand in the way of both.
  fs::remove(file);
  const ServiceAccess service = access({"--endpoint", "[::1]:9", "--roots", roots, "--token", "t"});
  EXPECT_EQ(service.description().address, "[::1]:9");
  EXPECT_EQ(rootsOf(service), readFile(roots));
  EXPECT_EQ(fs::status(service.deployment().folder).permissions(), fs::perms::owner_all);
}

TEST_F(ServiceAccessTest, ATokenThatIsGivenComesBeforeTheStoredOneAndLeavesItAlone) {
  const QString key = QStringLiteral("auth_token");
  EXPECT_EQ(access({}).description().tokenSource, TokenSource::none);
  UserDefaults &user = UserDefaults::standard();
  user.setObject(QStringLiteral("stored"), key);
  EXPECT_EQ(access({}).defaults().stringForKey(key).toStdString(), "stored");
  EXPECT_EQ(access({}).description().tokenSource, TokenSource::stored);
  user.setObject(QStringLiteral("a\nb"), key);
  EXPECT_THAT([] { access({}); }, ThrowsMessage<ServiceError>(HasSubstr("the stored token is damaged")));
  const ServiceAccess given = access({"--token", "given"});
  EXPECT_EQ(given.defaults().stringForKey(key).toStdString(), "given");
  EXPECT_EQ(given.description().tokenSource, TokenSource::argument);
  EXPECT_EQ(user.stringForKey(key).toStdString(), "a\nb");
}

TEST_F(ServiceAccessTest, SaysInOneLineWhatIsMissing) {
  EXPECT_THAT(
      [&] {
        access({"--endpoint", "h", "--roots", file});
      },
      ThrowsMessage<ServiceError>(HasSubstr("hold no PEM certificate: ")));
  ::unsetenv("VELMORA_DEPLOYMENT");
  const std::vector<std::string> halves[] = {{"--endpoint", "h"}, {"--roots", roots}};
  for (const auto &half : halves)
    EXPECT_THAT([&] { access(half); }, ThrowsMessage<UsageError>(HasSubstr(half[0] + " needs --")));
}

}  // namespace
}  // namespace velmora
