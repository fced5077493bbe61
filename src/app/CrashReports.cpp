// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "app/CrashReports.h"

#include <QCoreApplication>
#include <exception>
#include <filesystem>

#include "foundation/Log.h"
#include "foundation/StateFolder.h"
#include "platform/Alert.h"
#include "platform/crash/CrashReporter.h"

namespace velmora {
namespace {

constexpr auto kFolder = "crashes";

struct Texts {
  Q_DECLARE_TR_FUNCTIONS(velmora::CrashReports)
};

}  // namespace

void startCrashReports() {
  try {
    if (const auto state = stateFolder()) startCrashReporter(*state / kFolder);
  } catch (const std::exception &error) {
    log("Crash reporter error: ", error.what());
  }
}

void askAboutCrashReports() {
  try {
    const auto state = stateFolder();
    if (!state) return;
    const auto reports = pendingCrashReports(*state / kFolder);
    if (reports.empty()) return;
    const QString folder = QString::fromStdString((*state / kFolder).string());
    constexpr int kKeep = 0;
    const int answer =
        showAlert({.messageText = Texts::tr("Velmora ended unexpectedly the last time."),
                   .informativeText =
                       Texts::tr("A report that helps to find the cause is in %1. It tells where in the "
                                 "program it happened, and nothing that you said. It is not sent to anybody.")
                           .arg(folder),
                   .buttons = {Texts::tr("Keep the Report"), Texts::tr("Delete the Report")}});
    for (const auto &report : reports) answer == kKeep ? keepCrashReport(report) : discardCrashReport(report);
  } catch (const std::exception &error) {
    log("Crash reporter error: ", error.what());
  }
}

}  // namespace velmora
