// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// velmora: the voice assistant in the status bar.
#include <sys/stat.h>
#include <unistd.h>

#include <QApplication>
#include <QIcon>
#include <QLocale>
#include <chrono>
#include <csignal>
#include <iostream>
#include <string>
#include <string_view>

#include "app/AppDelegate.h"
#include "app/ApplicationOptions.h"
#include "app/CrashReports.h"
#include "app/SingleInstance.h"
#include "app/TerminationSignals.h"
#include "foundation/Heaps.h"
#include "foundation/Log.h"
#include "foundation/MainQueue.h"
#include "foundation/StandardStreams.h"
#include "ui/Translations.h"
#include "ui/preferences/PreferenceKeys.h"

namespace velmora {
namespace {

constexpr int kFailed = 1;
constexpr int kUsage = 2;
constexpr std::chrono::milliseconds kBeforeWindowIcon{500};

std::optional<Deployment> configuredDeployment(const ApplicationOptions &options) {
  const auto folder = Deployment::configuredFolder(options.deployment);
  if (!folder) return std::nullopt;
  return Deployment::load(*folder);
}

int failed(const std::string &what, int status) {
  std::cerr << "velmora: " << what << '\n';
  return status;
}

/// Where what a program prints is kept, in the journal or a file, what the user says shall not be.
LogSink sinkForWhoReads() {
  struct stat output {};
  const bool isKept =
      ::fstat(STDOUT_FILENO, &output) == 0 && (S_ISSOCK(output.st_mode) || S_ISREG(output.st_mode));
  if (!isKept) return standardOutputSink();
  return [print = standardOutputSink()](std::string_view line) {
    if (!line.starts_with("Request text: ")) print(line);
  };
}

/// Without one the toolkit ends the program with a page of advice.
bool hasDisplay() {
  for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
    if (!qEnvironmentVariableIsEmpty(name)) return true;
  return false;
}

int runApplication(const ApplicationOptions &options) {
  QApplication::setQuitOnLastWindowClosed(false);
  const QString language = UserDefaults::standard().stringForKey(kLanguageKey);
  installTranslations(language.isEmpty() ? QLocale() : QLocale(language));
  const Alive alive;
  // For windows, which nobody sees so soon; the icon in the status bar need not wait for it to be read.
  MainQueue::main().after(kBeforeWindowIcon, alive,
                          [] { QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/velmora.png"))); });

  AppDelegate *delegate = nullptr;
  QString early;  // what was asked for while this one was starting
  const auto handler = [&](const QString &command) {
    if (delegate != nullptr) {
      delegate->perform(command);
    } else {
      early = command;
    }
  };
  const bool isToQuit = options.command == QLatin1String("quit");
  auto instance = SingleInstance::claim(handler);
  if (!instance) {
    if (SingleInstance::send(options.command)) {
      if (!isToQuit || SingleInstance::waitUntilFree()) return 0;
      return failed("the running Velmora has been asked to end, and is still there", kFailed);
    }
    // One that was ending has not answered, and is gone now.
    instance = SingleInstance::claim(handler);
    if (!instance) return failed("the running Velmora does not answer; end it and start again", kFailed);
  }
  if (isToQuit) return failed("Velmora is not running", kFailed);

  AppDelegate application(UserDefaults::standard(), configuredDeployment(options));
  delegate = &application;
  const TerminationSignals signals([] { QCoreApplication::exit(0); });
  QObject::connect(qApp, &QCoreApplication::aboutToQuit, [&] { application.applicationWillTerminate(); });
  application.applicationWillFinishLaunching();
  application.applicationDidFinishLaunching();
  if (!options.command.isEmpty()) application.perform(options.command);
  if (!early.isEmpty()) application.perform(early);
  return QApplication::exec();
}

int runProgram(int argc, char **argv) {
  std::signal(SIGPIPE, SIG_IGN);
  shareHeaps();
  try {
    const auto options = ApplicationOptions::parse({argv + (argc > 0 ? 1 : 0), argv + argc});
    if (!options) return std::cout ? 0 : kFailed;
    if (!hasDisplay()) {
      return failed("there is no display to show it on; velmora-converse works without one", kFailed);
    }
    setLogSink(sinkForWhoReads());
    QCoreApplication::setApplicationName(QStringLiteral("velmora"));
    QCoreApplication::setApplicationVersion(QStringLiteral(VELMORA_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral("com.brindlewick.Velmora"));
    const QApplication application(argc, argv);
    // From here on: that no display answers is no crash of ours.
    startCrashReports();
    return runApplication(*options);
  } catch (const ApplicationUsageError &error) {
    return failed(std::string(error.what()) + "; see velmora --help", kUsage);
  } catch (const std::exception &error) {
    return failed(error.what(), kFailed);
  }
}

}  // namespace
}  // namespace velmora

int main(int argc, char **argv) { return velmora::runProgram(argc, argv); }
