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

using ::testing::ElementsAre;
using tests::CapturedLog;
using tests::TemporaryFolder;

QString s(const char *text) { return QString::fromUtf8(text); }

class UserDefaultsFile : public ::testing::Test {
 protected:
  QString path() const { return QString::fromStdString((m_folder.path() / "sub/defaults.json").string()); }
  void writeFile(std::string_view contents) const {
    std::filesystem::create_directories(m_folder.path() / "sub");
    (void)m_folder.write("sub/defaults.json", contents);
  }
  TemporaryFolder m_folder;
};

TEST_F(UserDefaultsFile, EveryKindOfValueKeepsItsTypeOnDisk) {
  const QDateTime instant(QDate(2026, 3, 29), QTime(1, 30, 0, 123), Qt::UTC);
  const QVariantMap values{{s("bool"), true},
                           {s("int"), 7LL},
                           {s("large"), 9007199254740993LL},
                           {s("text"), s("Grüße \"=;\n%")},
                           {s("looks like a bool"), s("true")},
                           {s("date"), instant},
                           {s("data"), QByteArray("\0\xff\n", 3)},
                           {s("one element"), QVariantList{0.1}},
                           {s("dictionary"), QVariantMap{{s("keyCode"), 49LL}, {s("when"), instant}}},
                           {s("tag-like"), QVariantMap{{s("$date"), s("not a date")}}},
                           {s("a/b"), 1LL}};
  {
    UserDefaults defaults(path());
    for (auto it = values.begin(); it != values.end(); ++it) defaults.setObject(it.value(), it.key());
    EXPECT_TRUE(defaults.synchronize());
  }
  const UserDefaults read(path());
  for (auto it = values.begin(); it != values.end(); ++it) {
    EXPECT_EQ(read.objectForKey(it.key()), it.value()) << it.key().toStdString();
    EXPECT_EQ(read.objectForKey(it.key()).typeId(), it.value().typeId()) << it.key().toStdString();
  }
  EXPECT_EQ(read.boolForKey(s("looks like a bool")), false);
  EXPECT_EQ(read.dateForKey(s("date")), instant);
}

TEST_F(UserDefaultsFile, NobodyElseCanReadTheFile) {
  const std::filesystem::path file = path().toStdString();
  const auto mode = [&] { return static_cast<unsigned>(std::filesystem::status(file).permissions()); };
  const mode_t before = ::umask(0);
  {
    UserDefaults defaults(path());
    defaults.setObject(s("token"), s("auth_token"));
    EXPECT_TRUE(defaults.synchronize());
  }
  EXPECT_EQ(mode(), 0600U);
  std::filesystem::permissions(file, std::filesystem::perms(0644));
  const UserDefaults defaults(path());
  EXPECT_EQ(mode(), 0600U) << "a careless editor's file is made private";
  ::umask(before);
}

TEST_F(UserDefaultsFile, ADamagedFileIsSetAsideWithOneLineAndNotLost) {
  const std::string deep = R"({"a": )" + std::string(500'000, '[') + std::string(500'000, ']') + "}";
  for (const std::string &damaged : {std::string("{\"logged_in\": tr"), std::string("\x01\x02garbage"),
                                     std::string("[1, 2]"), std::string("null"), deep}) {
    writeFile(damaged);
    const CapturedLog log;
    {
      UserDefaults defaults(path());
      EXPECT_FALSE(defaults.objectForKey(s("logged_in")).isValid());
      defaults.setObject(true, s("fresh"));
      EXPECT_TRUE(defaults.synchronize());
    }
    EXPECT_EQ(log.count("The settings file "), 1) << damaged.substr(0, 20);
    EXPECT_TRUE(UserDefaults(path()).boolForKey(s("fresh")));
    std::string kept;
    for (const auto &entry : std::filesystem::directory_iterator(m_folder.path() / "sub")) {
      const auto name = entry.path().filename();
      if (name != "defaults.json" && name.extension() != ".lock") kept += readFile(entry.path());
    }
    EXPECT_TRUE(kept == damaged) << damaged.substr(0, 20);
    std::filesystem::remove_all(m_folder.path() / "sub");
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
  EXPECT_TRUE(read.boolForKey(s("mine")));
  EXPECT_TRUE(read.boolForKey(s("theirs")));
}

TEST_F(UserDefaultsFile, AStoreThatCannotWriteSaysSoAndRecovers) {
  const auto blocker = m_folder.write("sub", "a file where the folder should be");
  const CapturedLog log;
  UserDefaults defaults(path());
  defaults.setObject(true, s("key"));
  EXPECT_FALSE(defaults.synchronize());
  EXPECT_EQ(log.count("The settings file "), 1);
  EXPECT_TRUE(defaults.boolForKey(s("key")));
  std::filesystem::remove(blocker);
  EXPECT_TRUE(defaults.synchronize());
  EXPECT_TRUE(std::filesystem::exists(path().toStdString()));
}

TEST_F(UserDefaultsFile, AFullDiskLosesNoSettings) {
  writeFile(R"({"key": "old"})");
  const auto fail = [&] {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{.rlim_cur = 500, .rlim_max = 500};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    UserDefaults defaults(path());
    defaults.setObject(QString(1000, u'x'), s("key"));
    std::_Exit(defaults.synchronize() ? 1 : 7);
  };
  EXPECT_EXIT(fail(), ::testing::ExitedWithCode(7), "");
  EXPECT_EQ(UserDefaults(path()).stringForKey(s("key")), s("old"));
}

TEST_F(UserDefaultsFile, APipeInPlaceOfTheFileIsLeftAlone) {
  std::filesystem::create_directories(m_folder.path() / "sub");
  ASSERT_EQ(::mkfifo(path().toStdString().c_str(), 0600), 0);
  UserDefaults defaults(path());
  defaults.setObject(true, s("key"));
  EXPECT_TRUE(defaults.boolForKey(s("key")));
}

TEST(UserDefaults, ObserversHearTheirKeyAsOftenAsItIsWritten) {
  UserDefaults defaults;
  defaults.registerDefaults({{s("k"), false}});
  defaults.registerDefaults({{s("other"), 1}});
  std::vector<QVariant> seen;
  auto watch = defaults.addObserver(s("k"), UserDefaults::Notify::initialAndNew,
                                    [&](const QVariant &value) { seen.push_back(value); });
  for (const char *key : {"k", "k", "other"}) defaults.setObject(true, s(key));
  defaults.removeObjectForKey(s("k"));
  EXPECT_THAT(seen, ElementsAre(false, true, true, false))
      << "registered values hold where nothing is stored";
  watch = {};
  defaults.setObject(QVariant(), s("other"));
  defaults.setObject(true, s("k"));
  EXPECT_EQ(seen.size(), 4U);
  EXPECT_EQ(defaults.objectForKey(s("other")), 1);
}

TEST(UserDefaults, AnObserverMayWriteAndEndItself) {
  UserDefaults defaults;
  int calls = 0;
  UserDefaults::Observation watch;
  watch = defaults.addObserver(s("logged_in"), UserDefaults::Notify::newOnly, [&](const QVariant &) {
    ++calls;
    watch = {};
    defaults.removeObjectForKey(s("auth_token"));
    defaults.setObject(true, s("logged_in"));
  });
  defaults.setObject(false, s("logged_in"));
  EXPECT_EQ(calls, 1);
}

}  // namespace
}  // namespace velmora
