// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QProcess>
#include <QStringList>
#include <optional>
#include <stdexcept>

namespace velmora::tests {

/// A private X server with a window manager, which all programs started from here show themselves on. Made
/// before the application object.
class Desktop {
 public:
  Desktop() {
    start(m_server, QStringLiteral("Xvfb"),
          {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"), QStringLiteral("0"),
           QStringLiteral("1280x800x24"), QStringLiteral("-nolisten"), QStringLiteral("tcp")});
    qputenv("DISPLAY", ':' + firstLine(m_server));
    qputenv("QT_QPA_PLATFORM", "xcb");
    qunsetenv("WAYLAND_DISPLAY");
#if defined(__SANITIZE_ADDRESS__)
    // The graphics drivers leak.
    qputenv("QT_XCB_GL_INTEGRATION", "none");
    qputenv("QT_QUICK_BACKEND", "software");
#endif
    // Runs its start-up command once it manages windows.
    start(m_windowManager, QStringLiteral("openbox"),
          {QStringLiteral("--sm-disable"), QStringLiteral("--startup"), QStringLiteral("echo ready")});
    (void)firstLine(m_windowManager);
  }
  ~Desktop() {
    for (QProcess *process : {&m_windowManager, &m_server}) {
      process->terminate();
      process->waitForFinished();
    }
  }
  Desktop(const Desktop &) = delete;
  Desktop &operator=(const Desktop &) = delete;

 private:
  static void start(QProcess &process, const QString &program, const QStringList &arguments) {
    process.start(program, arguments, QIODevice::ReadOnly);
    if (!process.waitForStarted()) throw std::runtime_error(program.toStdString() + " cannot be started");
  }
  static QByteArray firstLine(QProcess &process) {
    while (!process.canReadLine()) {
      if (!process.waitForReadyRead())
        throw std::runtime_error(process.program().toStdString() + " is silent");
    }
    return process.readLine().trimmed();
  }

  QProcess m_server;
  QProcess m_windowManager;
};

/// Presses what a person would: `arguments` are those of xdotool.
inline bool press(const QStringList &arguments) {
  return QProcess::execute(QStringLiteral("xdotool"), arguments) == 0;
}

}  // namespace velmora::tests
