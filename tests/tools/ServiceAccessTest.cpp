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
class ServiceAccessTest : public ::testing::Test {
 protected:
  ServiceAccessTest() {
    fs::create_directories(m_folder.path() / "deployed");
    m_file = m_folder.write("deployed/deployment.json", R"({"host": "deployed.example", "port": 8443})");
    (void)m_folder.write("deployed/roots.pem", kRoots);
    m_roots = m_folder.write("other.pem", std::string(kRoots) + "other\n");
    ::setenv("XDG_CONFIG_HOME", m_folder.path().c_str(), 1);
    ::setenv("VELMORA_DEPLOYMENT", (m_folder.path() / "deployed").c_str(), 1);
  }

  static ServiceAccess access(std::vector<std::string> arguments) {
    arguments.emplace_back("a.wav");
    return ServiceAccess(Options::parse(arguments), -1);
  }
  static std::string rootsOf(const ServiceAccess &service) {
    return readFile(service.deployment().resource("roots", "pem"));
  }

  tests::TemporaryFolder m_folder;
  std::string m_file;
  std::string m_roots;
};

TEST_F(ServiceAccessTest, ArgumentsReplaceWhatTheDeploymentSays) {
  const struct {
    std::vector<std::string> arguments;
    std::string address;
    std::string roots;
  } cases[] = {{{}, "deployed.example:8443", kRoots},
               // The deployment's port belongs to its host.
               {{"--endpoint", "other.example"}, "other.example", kRoots},
               {{"--roots", m_roots}, "deployed.example:8443", readFile(m_roots)}};
  for (const auto &c : cases) {
    const ServiceAccess service = access(c.arguments);
    EXPECT_EQ(service.description().address, c.address);
    EXPECT_EQ(rootsOf(service), c.roots);
  }
  // One that is broken does not stand in the way of both.
  ::setenv("VELMORA_DEPLOYMENT", "/none", 1);
  fs::path copied;
  {
    const ServiceAccess service = access({"--endpoint", "[::1]:9", "--roots", m_roots, "--token", "t"});
    EXPECT_EQ(service.description().address, "[::1]:9");
    EXPECT_EQ(rootsOf(service), readFile(m_roots));
    copied = service.deployment().folder;
    EXPECT_EQ(fs::status(copied).permissions() & fs::perms::all, fs::perms::owner_all);
  }
  EXPECT_FALSE(fs::exists(copied));
}

TEST_F(ServiceAccessTest, ATokenThatIsGivenComesBeforeTheStoredOneAndLeavesItAlone) {
  const QString key = QStringLiteral("auth_token");
  EXPECT_EQ(access({}).description().tokenSource, TokenSource::none);
  UserDefaults &user = UserDefaults::standard();
  user.setObject(QStringLiteral("stored"), key);
  const ServiceAccess stored = access({});
  EXPECT_EQ(stored.defaults().stringForKey(key).toStdString(), "stored");
  EXPECT_EQ(stored.description().tokenSource, TokenSource::stored);
  const ServiceAccess given = access({"--token", "given"});
  EXPECT_EQ(given.defaults().stringForKey(key).toStdString(), "given");
  EXPECT_EQ(given.description().tokenSource, TokenSource::argument);
  EXPECT_EQ(user.stringForKey(key).toStdString(), "stored");
  user.setObject(QStringLiteral("a\nb"), key);
  EXPECT_THAT([] { access({}); }, ThrowsMessage<ServiceError>(HasSubstr("the stored token is damaged")));
  EXPECT_NO_THROW(access({"--token", "given"}));
}

TEST_F(ServiceAccessTest, SaysInOneLineWhatIsMissing) {
  const struct {
    std::vector<std::string> arguments;
    const char *says;
  } cases[] = {
      {{"--deployment", "/none"}, "/none/deployment.json: No such file"},
      {{"--endpoint", "h", "--roots", "/none.pem"}, "the TLS roots cannot be read: /none.pem: No such file"},
      {{"--endpoint", "h", "--roots", m_file}, "hold no PEM certificate: "},
      {{"--deployment", m_folder.write("deployment.json", R"({"host": "h"})").parent_path()},
       "the TLS roots cannot be read: "}};
  for (const auto &c : cases) {
    EXPECT_THAT([&] { access(c.arguments); }, ThrowsMessage<std::runtime_error>(HasSubstr(c.says)));
  }
  ::unsetenv("VELMORA_DEPLOYMENT");
  EXPECT_THAT(
      [&] {
        access({"--endpoint", "h"});
      },
      ThrowsMessage<UsageError>(HasSubstr("--endpoint needs --roots")));
  EXPECT_THAT(
      [&] {
        access({"--roots", m_roots});
      },
      ThrowsMessage<UsageError>(HasSubstr("--roots needs --endpoint")));
}

}  // namespace
}  // namespace velmora
