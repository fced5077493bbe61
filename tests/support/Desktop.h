// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <QByteArray>
#include <QProcess>

#include "support/EventLoop.h"

namespace velmora::tests {

/// What a desktop has on the session bus: who takes status items. A program of its own, since the toolkit
/// waits for its answers.
class Desktop {
 public:
  Desktop() {
    m_process.start(QStringLiteral(VELMORA_TEST_DESKTOP), {});
    EXPECT_TRUE(hears("ready"));
  }
  ~Desktop() {
    m_process.closeWriteChannel();
    m_process.waitForFinished();
  }
  Desktop(const Desktop &) = delete;
  Desktop &operator=(const Desktop &) = delete;

  void say(const char *command) { m_process.write(command + QByteArray("\n")); }
  /// Waits for one more line that says so.
  [[nodiscard]] bool hears(const QByteArray &line) {
    return runUntil([&] { return m_process.canReadLine() && m_process.readLine().trimmed() == line; });
  }

 private:
  QProcess m_process;
};

}  // namespace velmora::tests
