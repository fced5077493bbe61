// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/LoginItem.h"

#include <gmock/gmock.h>

#include <QUrl>

#include "foundation/File.h"
#include "platform/Workspace.h"
#include "support/CapturedLog.h"
#include "support/TemporaryFolder.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;

struct LoginItemTest : testing::Test {
  LoginItemTest() { qputenv("XDG_CONFIG_HOME", config.path().c_str()); }

  tests::TemporaryFolder config;
  fs::path entry = config.path() / "autostart/com.example.Helper.desktop";
};

TEST_F(LoginItemTest, NamesTheProgramSoThatADesktopStartsIt) {
  const std::pair<const char *, const char *> cases[] = {
      {"/opt/my tools/100%/velmora", R"("/opt/my tools/100%%/velmora")"},
      {R"(/opt/a"b$c`d\e)", R"("/opt/a\\"b\\$c\\`d\\\\e")"},
      {"/opt/a\nHidden=true", R"("/opt/a\nHidden=true")"}};
  for (const auto &[program, command] : cases) {
    const LoginItem item("com.example.Helper", program);
    EXPECT_TRUE(item.setEnabled(true));
    EXPECT_TRUE(item.isEnabled());
    EXPECT_THAT(readFile(entry), testing::HasSubstr(std::string("\nExec=") + command + '\n'));
  }
}

TEST_F(LoginItemTest, GoesAndKnowsThatTheDesktopSwitchedItOff) {
  const LoginItem item("com.example.Helper", "/usr/bin/velmora");
  EXPECT_TRUE(item.setEnabled(false)) << "there is none";
  EXPECT_FALSE(item.isEnabled());
  for (const char *off : {"Hidden=true\n", "X-GNOME-Autostart-enabled=false\n"}) {
    EXPECT_TRUE(item.setEnabled(true));
    writeFile(entry, readFile(entry) + off);
    EXPECT_FALSE(item.isEnabled()) << off;
  }
  EXPECT_TRUE(item.setEnabled(false));
  EXPECT_FALSE(fs::exists(entry));

  fs::remove(entry.parent_path());
  (void)config.write("autostart", "a file in the place of the folder");
  const tests::CapturedLog log;
  EXPECT_FALSE(item.setEnabled(true));
  EXPECT_EQ(log.count("Login item error: "), 1);
}

TEST(Workspace, OpensPagesAndLettersOnly) {
  std::vector<std::string> opened;
  setUrlOpener([&](const QUrl &url) {
    opened.push_back(url.toString().toStdString());
    return true;
  });
  const tests::CapturedLog log;
  for (const char *address : {"file:///usr/bin/velmora", "javascript:alert(1)", "/relative", "smb://host/x",
                              "", "https://velmora.example/", "mailto:ada@velmora.example"})
    (void)openUrl(QUrl(QString::fromLatin1(address)));
  setUrlOpener({});
  EXPECT_THAT(opened, testing::ElementsAre("https://velmora.example/", "mailto:ada@velmora.example"));
  EXPECT_EQ(log.count("Link error: "), 5);
}

}  // namespace
}  // namespace velmora
