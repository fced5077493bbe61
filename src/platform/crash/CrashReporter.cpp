// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/crash/CrashReporter.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cxxabi.h>
#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string>
#include <system_error>

#include "foundation/Log.h"
#include "platform/crash/CrashText.h"

namespace velmora {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kIsSanitized = true;
#else
constexpr bool kIsSanitized = false;
#endif

constexpr std::string_view kPrefix = "crash-";
constexpr std::string_view kKept = "kept-";
constexpr std::string_view kSuffix = ".txt";
constexpr std::string_view kPartial = ".partial";
constexpr std::size_t kMostReports = 20;        // a program that crashes at every start fills no disk
constexpr std::size_t kStackSize = 128 * 1024;  // bytes
constexpr unsigned kPatience = 5;               // s; a writer that hangs is ended
constexpr std::array kSignals{SIGSEGV, SIGABRT, SIGBUS, SIGFPE, SIGILL};

// What the writer needs, all of it made before anything has happened.
std::array<char, PATH_MAX> theFolder{};
std::atomic<pid_t> theWritingThread = 0;
std::atomic<const char *> theException = nullptr;  // the name of its type
std::terminate_handler theFormerTerminate = nullptr;

void endBy(int signal) {
  ::signal(signal, SIG_DFL);
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, signal);
  ::pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
  ::raise(signal);
  ::_exit(128 + signal);
}

/// Only what POSIX allows in here, and the unwinder, which was warmed up.
void writeReport(int signal, const siginfo_t &info, void *context) {
  CrashText name;
  timespec now{};
  ::clock_gettime(CLOCK_REALTIME, &now);
  name.text(theFolder.data())
      .text("/")
      .text(kPrefix)
      .time(now.tv_sec)
      .text("-")
      .number(static_cast<unsigned long>(::getpid()));
  name.text(kSuffix);
  CrashText partial = name;
  partial.text(kPartial);
  const int file =
      ::open(partial.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR);
  if (file < 0) return;
  writeCrashHeader(file, signal, info, now.tv_sec, theException);
  writeCrashFrames(file, context);
  ::close(file);
  ::rename(partial.c_str(), name.c_str());
}

void handle(int signal, siginfo_t *info, void *context) {
  const int error = errno;
  const pid_t self = ::gettid();
  pid_t nobody = 0;
  if (theWritingThread.compare_exchange_strong(nobody, self)) {
    // Whoever holds a lock that the unwinder wants holds it for ever now.
    ::signal(SIGALRM, SIG_DFL);
    sigset_t alarm;
    sigemptyset(&alarm);
    sigaddset(&alarm, SIGALRM);
    ::pthread_sigmask(SIG_UNBLOCK, &alarm, nullptr);
    ::alarm(kPatience);
    writeReport(signal, *info, context);
  } else if (nobody != self) {
    for (;;) ::pause();  // another thread is writing, and ends the program
  }
  errno = error;
  endBy(signal);
}

void nameException() {
  if (const std::type_info *const type = abi::__cxa_current_exception_type()) theException = type->name();
  if (theFormerTerminate) theFormerTerminate();
  std::abort();
}

bool makeFolder(const std::filesystem::path &folder) {
  std::error_code error;
  std::filesystem::create_directories(folder.parent_path(), error);
  struct stat status {};
  return (::mkdir(folder.c_str(), S_IRWXU) == 0 || errno == EEXIST) &&
         ::lstat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == ::geteuid() &&
         ::chmod(folder.c_str(), S_IRWXU) == 0;
}

/// One that the writer did not finish is as good as it is, once the writer is gone.
void finishAbandoned(const std::filesystem::path &partial) {
  const std::string name = partial.stem().stem().string();
  const long pid = std::strtol(name.c_str() + name.rfind('-') + 1, nullptr, 10);
  if (pid > 0 && ::kill(static_cast<pid_t>(pid), 0) != 0 && errno == ESRCH) {
    std::error_code ignored;
    std::filesystem::rename(partial, partial.parent_path() / partial.stem(), ignored);
  }
}

/// A stack of its own for the handler, on which an overflow of the usual one can be told.
void makeHandlerStack() {
  void *const memory =
      ::mmap(nullptr, kStackSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0);
  if (memory == MAP_FAILED) return;
  const stack_t stack{.ss_sp = memory, .ss_flags = 0, .ss_size = kStackSize};
  ::sigaltstack(&stack, nullptr);
}

}  // namespace

void startCrashReporter(const std::filesystem::path &folder) {
  if (kIsSanitized) return;
  const std::string path = folder.string();
  if (path.size() >= theFolder.size() / 2 || !makeFolder(folder)) {
    return log("Crash report error: ", path,
               " is no place for reports: ", std::generic_category().message(errno));
  }
  std::vector<std::filesystem::path> reports = pendingCrashReports(folder);
  while (reports.size() > kMostReports) {
    discardCrashReport(reports.front());
    reports.erase(reports.begin());
  }
  std::copy(path.begin(), path.end(), theFolder.begin());
  makeHandlerStack();
  warmUpCrashFrames();
  theFormerTerminate = std::set_terminate(&nameException);
  struct sigaction action {};
  action.sa_sigaction = &handle;
  action.sa_flags = SA_SIGINFO | SA_ONSTACK;
  sigfillset(&action.sa_mask);
  for (const int signal : kSignals) ::sigaction(signal, &action, nullptr);
}

std::vector<std::filesystem::path> pendingCrashReports(const std::filesystem::path &folder) {
  std::error_code error;
  for (const auto &entry : std::filesystem::directory_iterator(folder, error)) {
    if (entry.path().extension() == kPartial) finishAbandoned(entry.path());
  }
  std::vector<std::filesystem::path> reports;
  for (const auto &entry : std::filesystem::directory_iterator(folder, error)) {
    const std::string name = entry.path().filename().string();
    if (name.starts_with(kPrefix) && name.ends_with(kSuffix)) reports.push_back(entry.path());
  }
  std::sort(reports.begin(), reports.end());  // by time, with which the names begin
  return reports;
}

void keepCrashReport(const std::filesystem::path &report) {
  const std::string name = report.filename().string();
  if (!name.starts_with(kPrefix)) return;
  std::error_code error;
  std::filesystem::rename(report, report.parent_path() / (std::string(kKept) + name.substr(kPrefix.size())),
                          error);
  if (error) log("Crash report error: ", report.string(), " cannot be kept: ", error.message());
}

void discardCrashReport(const std::filesystem::path &report) {
  std::error_code error;
  std::filesystem::remove(report, error);
  if (error) log("Crash report error: ", report.string(), " cannot be deleted: ", error.message());
}

}  // namespace velmora
