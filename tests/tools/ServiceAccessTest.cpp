// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "tools/ServiceAccess.h"

#include <gmock/gmock.h>

#include <fstream>

#include "support/TemporaryFolder.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using tests::TemporaryFolder;

constexpr auto kRoots = "-----BEGIN CERTIFICATE-----\nAAAA\n-----END CERTIFICATE-----\n";

/// A configuration folder of its own, and a deployment that is configured only when a test says so.
class ServiceAccessTest : public ::testing::Test {
 protected:
  ServiceAccessTest() {
    ::setenv("XDG_CONFIG_HOME", m_folder.path().c_str(), 1);
    ::unsetenv("VELMORA_DEPLOYMENT");
    fs::create_directories(deployment());
    (void)m_folder.write("deployed/deployment.json", R"({"host": "deployed.example", "port": 8443})");
    (void)m_folder.write("deployed/roots.pem", kRoots);
    m_otherRoots = m_folder.write("other.pem", std::string(kRoots) + "other\n");
  }

  [[nodiscard]] fs::path deployment() const { return m_folder.path() / "deployed"; }

  /// Options with an audio file and what the test adds.
  static Options options(std::vector<std::string> arguments) {
    arguments.emplace_back("a.wav");
    return Options::parse(arguments);
  }

  static std::string tokenOf(const ServiceAccess &service) {
    return service.defaults().stringForKey(QStringLiteral("auth_token")).toStdString();
  }

  static std::string rootsOf(const ServiceAccess &service) {
    return readFile(service.deployment().resource("roots", "pem"));
  }

  TemporaryFolder m_folder;
  std::string m_otherRoots;
};

TEST_F(ServiceAccessTest, AnAddressAndRootsNeedNoDeployment) {
  // One that is configured and broken must not stand in the way.
  ::setenv("VELMORA_DEPLOYMENT", "/none", 1);
  fs::path copied;
  {
    const ServiceAccess service(options({"--endpoint", "[::1]:9", "--roots", m_otherRoots, "--token", "t"}),
                                -1);
    EXPECT_EQ(service.description().address, "[::1]:9");
    EXPECT_EQ(rootsOf(service), readFile(m_otherRoots));
    copied = service.deployment().folder;
    EXPECT_EQ(fs::status(copied).permissions() & fs::perms::all, fs::perms::owner_all);
  }
  EXPECT_FALSE(fs::exists(copied));
}

TEST_F(ServiceAccessTest, ArgumentsReplaceWhatTheDeploymentSays) {
  ::setenv("VELMORA_DEPLOYMENT", deployment().c_str(), 1);
  const ServiceAccess plain(options({}), -1);
  EXPECT_EQ(plain.description().address, "deployed.example:8443");
  EXPECT_EQ(rootsOf(plain), kRoots);
  const ServiceAccess elsewhere(options({"--endpoint", "other.example"}), -1);
  EXPECT_EQ(elsewhere.description().address, "other.example") << "the deployment's port belongs to its host";
  EXPECT_EQ(rootsOf(elsewhere), kRoots);
  const ServiceAccess otherRoots(options({"--roots", m_otherRoots}), -1);
  EXPECT_EQ(otherRoots.description().address, "deployed.example:8443");
  EXPECT_EQ(rootsOf(otherRoots), readFile(m_otherRoots));
}

TEST_F(ServiceAccessTest, ATokenThatIsGivenComesBeforeTheStoredOneAndLeavesItAlone) {
  const std::string folder = deployment();
  const ServiceAccess without(options({"--deployment", folder}), -1);
  EXPECT_EQ(without.description().tokenSource, TokenSource::none);
  UserDefaults &user = UserDefaults::standard();
  user.setObject(QStringLiteral("stored"), QStringLiteral("auth_token"));
  const ServiceAccess stored(options({"--deployment", folder}), -1);
  EXPECT_EQ(tokenOf(stored), "stored");
  EXPECT_EQ(stored.description().tokenSource, TokenSource::stored);
  const ServiceAccess given(options({"--deployment", folder, "--token", "given"}), -1);
  EXPECT_EQ(tokenOf(given), "given");
  EXPECT_EQ(given.description().tokenSource, TokenSource::argument);
  EXPECT_TRUE(user.synchronize());
  EXPECT_EQ(user.stringForKey(QStringLiteral("auth_token")).toStdString(), "stored");
}

TEST_F(ServiceAccessTest, SaysInOneLineWhatIsMissing) {
  const std::string folder = deployment();
  const struct {
    std::vector<std::string> arguments;
    const char *says;
    bool usage = false;
  } cases[] = {
      {{"--endpoint", "h", "--token", "t"}, "--endpoint needs --roots", true},
      {{"--roots", m_otherRoots}, "--roots needs --endpoint", true},
      {{"--deployment", "/none"}, "/none/deployment.json: No such file"},
      {{"--endpoint", "h", "--roots", "/none.pem"}, "the TLS roots cannot be read: /none.pem: No such file"},
      {{"--endpoint", "h", "--roots", folder}, "the TLS roots cannot be read: "},
      {{"--endpoint", "h", "--roots", folder + "/deployment.json"}, "hold no PEM certificate: "},
      {{"--deployment", m_folder.write("deployment.json", R"({"host": "h"})").parent_path()},
       "the TLS roots cannot be read: "}};
  for (const auto &c : cases) {
    try {
      const ServiceAccess service(options(c.arguments), -1);
      ADD_FAILURE() << c.says;
    } catch (const UsageError &error) {
      EXPECT_TRUE(c.usage) << error.what();
      EXPECT_THAT(error.what(), HasSubstr(c.says));
    } catch (const std::runtime_error &error) {
      EXPECT_FALSE(c.usage) << error.what();
      EXPECT_THAT(error.what(), HasSubstr(c.says));
    }
  }
}

}  // namespace
}  // namespace velmora
