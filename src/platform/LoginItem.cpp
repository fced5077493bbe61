// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/LoginItem.h"

#include <unistd.h>

#include <QCoreApplication>
#include <QStandardPaths>
#include <string_view>
#include <system_error>
#include <utility>

#include "foundation/File.h"
#include "foundation/Log.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;

fs::path autostartFolder() {
  const QString config = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
  return fs::path(config.toStdString()) / "autostart";
}

/// A text as the value of a key.
std::string escaped(std::string_view text) {
  std::string value;
  for (const char character : text) {
    switch (character) {
      case '\\': value += "\\\\"; break;
      case '\n': value += "\\n"; break;
      case '\r': value += "\\r"; break;
      case '\t': value += "\\t"; break;
      default: value += character;
    }
  }
  return value;
}

/// One word of a command line: in quotes, in which four characters need a backslash, and a percent sign would
/// begin a field code.
std::string commandWord(std::string_view word) {
  std::string line = "\"";
  for (const char character : word) {
    if (std::string_view("\"`$\\").find(character) != std::string_view::npos) line += '\\';
    if (character == '%') line += '%';
    line += character;
  }
  return line + '"';
}

std::string entryFor(const std::string &identifier, const std::string &program) {
  return "[Desktop Entry]\nType=Application\nName=Velmora\nComment=Starts Velmora when you log in\n"
         "Comment[de]=Startet Velmora, wenn Sie sich anmelden\nExec=" +
         escaped(commandWord(program)) + "\nTryExec=" + escaped(program) +
         "\nIcon=velmora\nTerminal=false\nStartupNotify=false\nX-GNOME-Autostart-enabled=true\nX-Velmora-"
         "Helper=" +
         escaped(identifier) + "\n";
}

}  // namespace

LoginItem::LoginItem(std::string identifier, fs::path program)
    : m_identifier(std::move(identifier)), m_program(std::move(program)) {}

bool LoginItem::canAutostart() {
  std::error_code ignored;
  fs::path folder = autostartFolder();
  while (!fs::exists(folder, ignored) && folder.has_relative_path()) folder = folder.parent_path();
  return fs::is_directory(folder, ignored) && ::access(folder.c_str(), W_OK | X_OK) == 0;
}

bool LoginItem::isEnabled() const {
  try {
    const std::string entry = readFile(file());
    // What desktops write into it when the user switches it off there.
    return entry.find("\nHidden=true") == std::string::npos &&
           entry.find("\nX-GNOME-Autostart-enabled=false") == std::string::npos;
  } catch (const std::runtime_error &) {
    return false;
  }
}

bool LoginItem::setEnabled(bool enabled) const {
  try {
    if (enabled) {
      fs::create_directories(autostartFolder());
      writeFile(file(), entryFor(m_identifier, m_program.string()), 0644);
    } else {
      fs::remove(file());
    }
    return true;
  } catch (const std::runtime_error &error) {
    log("Login item error: ", error.what());
    return false;
  }
}

fs::path LoginItem::runningProgram() { return QCoreApplication::applicationFilePath().toStdString(); }

fs::path LoginItem::file() const { return autostartFolder() / (m_identifier + ".desktop"); }

}  // namespace velmora
