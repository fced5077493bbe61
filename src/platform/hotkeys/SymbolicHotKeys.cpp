// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/hotkeys/SymbolicHotKeys.h"

#include <QCoreApplication>
#include <QPointer>
#include <QProcess>
#include <QStandardPaths>
#include <QThreadPool>
#include <chrono>
#include <exception>
#include <memory>

#include "foundation/File.h"
#include "foundation/MainQueue.h"
#include "platform/hotkeys/DesktopKeyBindings.h"

namespace velmora {

namespace {

using HotKeys = std::vector<SymbolicHotKey>;

constexpr std::chrono::seconds kPatience{10};  // with the desktop's settings program

/// What was read last, and the reading that goes on.
class SymbolicHotKeys {
 public:
  static SymbolicHotKeys &shared() {
    static std::unique_ptr<SymbolicHotKeys> hotKeys;
    if (!hotKeys) {
      hotKeys = std::make_unique<SymbolicHotKeys>();
      qAddPostRoutine([] { hotKeys.reset(); });
    }
    return *hotKeys;
  }

  [[nodiscard]] const std::optional<HotKeys> &known() const { return m_known; }

  void refresh() {
    if (m_reading) return;
    const QStringList desktops = qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(QLatin1Char(':'));
    if (desktops.contains(QLatin1String("GNOME"))) {
      m_reading = true;
      m_fresh.clear();
      readGnome();
    } else if (desktops.contains(QLatin1String("KDE"))) {
      m_reading = true;
      readKde();
    }
  }

 private:
  /// Runs gsettings and gives its output to `then`; an empty one when it cannot.
  template <typename Then>
  void ask(const QStringList &arguments, Then then) {
    auto *process = new QProcess(&m_context);
    const auto end = [process, then](const QByteArray &output) {
      process->disconnect();
      process->deleteLater();
      then(output);
    };
    QObject::connect(process, &QProcess::finished, process,
                     [process, end](int code, QProcess::ExitStatus status) {
                       const bool good = status == QProcess::NormalExit && code == 0;
                       end(good ? process->readAllStandardOutput() : QByteArray());
                     });
    QObject::connect(process, &QProcess::errorOccurred, process, [end](QProcess::ProcessError error) {
      if (error == QProcess::FailedToStart) end({});
    });
    MainQueue::main().after(kPatience, m_alive, [process = QPointer<QProcess>(process)] {
      if (process) process->kill();
    });
    process->setProcessChannelMode(QProcess::SeparateChannels);
    process->start(QStringLiteral("gsettings"), arguments, QIODevice::ReadOnly);
  }

  void readGnome() {
    ask({QStringLiteral("list-recursively")}, [this](const QByteArray &output) {
      if (output.isEmpty()) return finish({});
      GnomeKeyBindings bindings = gnomeKeyBindings(output);
      m_fresh = std::move(bindings.hotKeys);
      readCustom(bindings.customBindings);
    });
  }

  /// One after the other: there are few.
  void readCustom(const QStringList &paths) {
    if (paths.isEmpty()) return finish(std::move(m_fresh));
    const QString schema = QStringLiteral("org.gnome.settings-daemon.plugins.media-keys.custom-keybinding:");
    ask({QStringLiteral("get"), schema + paths.first(), QStringLiteral("binding")},
        [this, rest = paths.mid(1)](const QByteArray &output) {
          for (const QString &text : gnomeTexts(QString::fromUtf8(output))) {
            if (const auto hotKey = gnomeHotKey(text)) m_fresh.push_back(*hotKey);
          }
          readCustom(rest);
        });
  }

  void readKde() {
    const QString file =
        QStandardPaths::locate(QStandardPaths::GenericConfigLocation, QStringLiteral("kglobalshortcutsrc"));
    // The home may lie on a slow disk.
    QThreadPool::globalInstance()->start([this, file, watch = m_alive.watch()] {
      std::optional<std::string> contents;
      try {
        if (!file.isEmpty()) contents = readFile(file.toStdString());
      } catch (const std::exception &) {
        // As good as no file.
      }
      MainQueue::main().async([this, watch, contents] {
        if (watch.expired()) return;
        finish(contents ? std::optional(kdeHotKeys(QByteArray::fromStdString(*contents))) : std::nullopt);
      });
    });
  }

  void finish(std::optional<HotKeys> hotKeys) {
    m_known = std::move(hotKeys);
    m_reading = false;
  }

  bool m_reading = false;
  HotKeys m_fresh;
  std::optional<HotKeys> m_known;
  QObject m_context;  // owns the programs that run
  Alive m_alive;
};

}  // namespace

std::optional<std::vector<SymbolicHotKey>> copySymbolicHotKeys() { return SymbolicHotKeys::shared().known(); }

void refreshSymbolicHotKeys() { SymbolicHotKeys::shared().refresh(); }

}  // namespace velmora
