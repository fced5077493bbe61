// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "foundation/UserDefaults.h"

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>

#include "foundation/Deployment.h"
#include "support/CapturedLog.h"
#include "support/TemporaryFolder.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using tests::CapturedLog;

QString s(const char *text) { return QString::fromUtf8(text); }

struct UserDefaultsFile : ::testing::Test {
  [[nodiscard]] QString path() const { return QString::fromStdString(file.string()); }
  void writeFile(std::string_view contents) const {
    fs::create_directories(file.parent_path());
    (void)folder.write("sub/defaults.json", contents);
  }
  tests::TemporaryFolder folder;
  const fs::path file = folder.path() / "sub/defaults.json";
};

TEST_F(UserDefaultsFile, EveryKindOfValueKeepsItsTypeOnDisk) {
  const QDateTime instant(QDate(2026, 3, 29), QTime(1, 30, 0, 123), Qt::UTC);
  const QVariantMap values{{s("large"), 9007199254740993LL},
                           {s("text"), s("Grüße \"=;\n%")},
                           {s("looks like a bool"), s("true")},
                           {s("data"), QByteArray("\0\xff\n", 3)},
                           {s("dictionary"), QVariantMap{{s("keyCode"), 49LL}, {s("when"), instant}}},
                           {s("a/b"), true}};
  {
    UserDefaults defaults(path());
    for (auto it = values.begin(); it != values.end(); ++it) defaults.setObject(it.value(), it.key());
  }
  const UserDefaults read(path());
  for (auto it = values.begin(); it != values.end(); ++it) {
    const QVariant value = read.objectForKey(it.key());
    EXPECT_TRUE(value == it.value() && value.typeId() == it.value().typeId()) << it.key().toStdString();
  }
}

TEST_F(UserDefaultsFile, NobodyElseCanReadTheFile) {
  const mode_t before = ::umask(0);
  UserDefaults(path()).setObject(s("token"), s("auth_token"));
  EXPECT_EQ(fs::status(file).permissions(), fs::perms(0600));
  fs::permissions(file, fs::perms(0644));
  const UserDefaults defaults(path());
  EXPECT_EQ(fs::status(file).permissions(), fs::perms(0600)) << "a careless editor's file is made private";
  ::umask(before);
}

TEST_F(UserDefaultsFile, ADamagedFileIsSetAsideWithOneLineAndNotLost) {
  const std::string deep = R"({"a": )" + std::string(500'000, '[') + std::string(500'000, ']') + "}";
  for (const std::string &damaged : {std::string("{\"logged_in\": tr"), std::string("[1, 2]"), deep}) {
    SCOPED_TRACE(damaged.substr(0, 20));
    writeFile(damaged);
    const CapturedLog log;
    UserDefaults(path()).setObject(true, s("fresh"));
    EXPECT_EQ(log.count("The settings file "), 1);
    EXPECT_TRUE(UserDefaults(path()).boolForKey(s("fresh")));
    std::string kept;
    for (const auto &entry : fs::directory_iterator(file.parent_path())) {
      if (entry.path() != file && entry.path().extension() != ".lock") kept += readFile(entry.path());
    }
    EXPECT_TRUE(kept == damaged);
    fs::remove_all(file.parent_path());
  }
}

TEST_F(UserDefaultsFile, TwoProcessesKeepEachOthersChanges) {
  writeFile(R"({"shared": 1})");
  UserDefaults mine(path());
  std::vector<QVariant> seen;
  const auto watch = mine.addObserver(s("shared"), UserDefaults::Notify::newOnly,
                                      [&](const QVariant &value) { seen.push_back(value); });
  mine.setObject(true, s("mine"));
  writeFile(R"({"shared": 22, "theirs": true})");
  EXPECT_TRUE(mine.synchronize());
  EXPECT_THAT(seen, ElementsAre(QVariant(22LL)));
  const UserDefaults read(path());
  EXPECT_TRUE(read.boolForKey(s("mine")) && read.boolForKey(s("theirs")));
}

TEST_F(UserDefaultsFile, AFullDiskIsSaidLosesNothingAndMayPass) {
  const std::string old = R"({"key": "old"})";
  writeFile(old);
  UserDefaults defaults(path());
  defaults.setObject(QString(1000, u'x'), s("key"));
  // The nearest thing to a full disk that needs no mount.
  rlimit usual{};
  ::getrlimit(RLIMIT_FSIZE, &usual);
  const rlimit full{.rlim_cur = 500, .rlim_max = usual.rlim_max};
  std::signal(SIGXFSZ, SIG_IGN);
  ::setrlimit(RLIMIT_FSIZE, &full);
  const CapturedLog log;
  EXPECT_FALSE(defaults.synchronize());
  ::setrlimit(RLIMIT_FSIZE, &usual);
  EXPECT_EQ(log.count("The settings file "), 1);
  EXPECT_EQ(readFile(file), old);
  EXPECT_TRUE(defaults.synchronize());
  EXPECT_GT(fs::file_size(file), 1000U);
}

TEST(UserDefaults, ObserversHearTheirKeyAsOftenAsItIsWritten) {
  UserDefaults defaults;
  defaults.registerDefaults({{s("k"), false}, {s("other"), 1}});
  std::vector<QVariant> seen;
  auto watch = defaults.addObserver(s("k"), UserDefaults::Notify::initialAndNew,
                                    [&](const QVariant &value) { seen.push_back(value); });
  for (const char *key : {"k", "k", "other"}) defaults.setObject(true, s(key));
  defaults.removeObjectForKey(s("k"));
  EXPECT_THAT(seen, ElementsAre(false, true, true, false))
      << "registered values hold where nothing is stored";
  defaults.setObject(QVariant(), s("other"));
  EXPECT_EQ(defaults.objectForKey(s("other")), 1);
  // One that takes its place may write what it observes, and end itself.
  int calls = 0;
  watch = defaults.addObserver(s("k"), UserDefaults::Notify::newOnly, [&](const QVariant &) {
    ++calls;
    watch = {};
    defaults.setObject(false, s("k"));
  });
  defaults.setObject(true, s("k"));
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(seen.size(), 4U);
}

}  // namespace
}  // namespace velmora
