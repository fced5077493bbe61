// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/crash/CrashReporter.h"

#include <gmock/gmock.h>
#include <sys/resource.h>

#include <regex>

#include "foundation/File.h"
#include "support/Program.h"
#include "support/TemporaryFolder.h"

namespace velmora {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using tests::Program;

/// The functions whose calls the report shows.
std::string callsOf(const std::string &report) {
  std::vector<std::string> arguments{"-f", "-C", "-e", VELMORA_TEST_CRASH};
  const std::regex place("crash_program\\+(0x[0-9a-f]+)");
  for (std::sregex_iterator it(report.begin(), report.end(), place), end; it != end; ++it)
    arguments.push_back((*it)[1]);
  Program tool("addr2line", arguments, {});
  EXPECT_EQ(tool.finish(), 0);
  return tool.out();
}

TEST(CrashReporter, LeavesAReportOfEveryWayToCrash) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "the sanitizer reports";
#endif
  const rlimit noCore{};
  ::setrlimit(RLIMIT_CORE, &noCore);
  struct Case {
    const char *way;
    const char *signal;
    const char *function;  // among the calls
    const char *line;      // of the report
  };
  const Case cases[] = {
      {"fault", "signal: SIGSEGV, code 1, at 0x0", "crashHere", ", the main one\n"},
      {"fatal", "signal: SIGABRT", "velmora::fatal", ""},
      {"overflow", "signal: SIGSEGV", "overflowHere", ""},
      {"exception", "signal: SIGABRT", "throwHere", "exception: St12out_of_range\n"},
      {"heap", "signal: SIG", "_start", ""},
      {"thread", "signal: SIGSEGV", "crashHere", "thread: worker\n"},
  };
  const tests::TemporaryFolder home;
  const auto folder = home.path() / "state" / "crashes";
  EXPECT_TRUE(pendingCrashReports(folder).empty());
  for (const Case &one : cases) {
    SCOPED_TRACE(one.way);
    Program program(VELMORA_TEST_CRASH, {folder.string(), one.way, "an-argument"},
                    {{"A_VARIABLE", "its-value"}});
    EXPECT_EQ(program.finish(), -1) << "it ends by the signal";
    const auto reports = pendingCrashReports(folder);
    ASSERT_EQ(reports.size(), 1U);
    const std::string report = readFile(reports[0]);
    EXPECT_TRUE(std::regex_search(report, std::regex("^Velmora [0-9.]+\ntime: 20..-..-..T..:..:..Z\n")));
    EXPECT_THAT(report, HasSubstr(one.signal));
    EXPECT_THAT(report, HasSubstr(one.line));
    EXPECT_THAT(report, HasSubstr("crash_program+0x"));
    EXPECT_THAT(report, HasSubstr("[stack]"));
    EXPECT_THAT(callsOf(report), HasSubstr(one.function));
    for (const char *secret : {"an-argument", "its-value", "something private"})
      EXPECT_THAT(report, Not(HasSubstr(secret)));
    using std::filesystem::perms;
    EXPECT_EQ(std::filesystem::status(folder).permissions(), perms::owner_all);
    EXPECT_EQ(std::filesystem::status(reports[0]).permissions(), perms::owner_read | perms::owner_write);
    if (one.way == std::string("fault")) {
      keepCrashReport(reports[0]);
    } else {
      discardCrashReport(reports[0]);
    }
    EXPECT_TRUE(pendingCrashReports(folder).empty());
  }
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 1) << "the one that is kept";
}

}  // namespace
}  // namespace velmora
