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

namespace fs = std::filesystem;
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
  const struct {
    const char *way;
    const char *function;            // among the calls
    std::vector<std::string> lines;  // pieces of the report
  } cases[] = {
      {"thread", "crashHere", {"signal: SIGSEGV, code 1, at 0x0", "thread: worker\n"}},
      {"overflow", "overflowHere", {"signal: SIGSEGV"}},
      {"exception", "throwHere", {"signal: SIGABRT", "exception: St12out_of_range\n"}},
  };
  using fs::perms;
  const tests::TemporaryFolder home;
  const fs::path folder = home.path() / "state" / "crashes";
  for (const auto &[way, function, lines] : cases) {
    SCOPED_TRACE(way);
    Program program(VELMORA_TEST_CRASH, {folder.string(), way}, {});
    EXPECT_EQ(program.finish(), -1) << "it ends by the signal";
    const auto reports = pendingCrashReports(folder);
    ASSERT_EQ(reports.size(), 1U);
    const std::string report = readFile(reports[0]);
    EXPECT_TRUE(std::regex_search(report, std::regex("^Velmora [0-9.]+\ntime: 20..-..-..T..:..:..Z\n")));
    for (const std::string &line : lines) EXPECT_THAT(report, HasSubstr(line));
    EXPECT_THAT(callsOf(report), HasSubstr(function));
    EXPECT_THAT(report, Not(HasSubstr("something private")));
    EXPECT_EQ(fs::status(folder).permissions(), perms::owner_all);
    EXPECT_EQ(fs::status(reports[0]).permissions(), perms::owner_read | perms::owner_write);
    (way == std::string("thread") ? keepCrashReport : discardCrashReport)(reports[0]);
    EXPECT_TRUE(pendingCrashReports(folder).empty());
  }
  EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 1) << "the one that is kept";
}

}  // namespace
}  // namespace velmora
