// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QDBusConnection>
#include <QString>
#include <optional>
#include <string>
#include <vector>

namespace velmora::tests {

/// What a screen reader tells of the programs on the session bus, and does for those who cannot see. Programs
/// that are to be read run with QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1.
class ScreenReader {
 public:
  struct Element {
    QString service;
    QString path;
    std::string role;  ///< "label", "push button", "menu item", …
    std::string name;
    bool isFocused = false;
  };

  /// Throws `std::runtime_error` where there is nothing to read with.
  ScreenReader();

  /// All that is on the screen now.
  [[nodiscard]] std::vector<Element> elements() const;
  /// Waits until something of this role and name is on the screen; nothing when the patience runs out. An
  /// empty role is any.
  [[nodiscard]] std::optional<Element> waitFor(const std::string &role, const std::string &name) const;
  /// Waits until there is none.
  [[nodiscard]] bool waitForEndOf(const std::string &role, const std::string &name) const;
  /// Presses it. False when nothing of the kind is there, or it cannot be pressed.
  [[nodiscard]] bool press(const std::string &role, const std::string &name) const;
  /// One line for each element, for the messages of tests.
  [[nodiscard]] std::string text() const;

 private:
  [[nodiscard]] std::optional<Element> find(const std::string &role, const std::string &name) const;
  void read(const QString &service, const QString &path, std::vector<Element> &all, int depth) const;

  QDBusConnection m_bus;
};

}  // namespace velmora::tests
