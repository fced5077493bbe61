// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// A part of the program that is a file of its own, because what it needs would make every start slower and
// larger. It is loaded when it is first needed, and stays.
//
//   std::string problem;
//   auto *const factory = Plugin("velmora-web-engine").root<WebEngineFactory>(problem);
//   if (factory == nullptr) log("The web engine cannot be loaded: ", problem);
#pragma once

#include <QObject>
#include <QString>
#include <string>

namespace velmora {

/// Names a plugin; making one loads nothing. Any thread.
class Plugin {
 public:
  /// One of those that belong to the running program.
  explicit Plugin(const char *name);
  /// Any file.
  explicit Plugin(QString file) : m_file(std::move(file)) {}

  /// Loads it on a thread of its own, so that `root` finds it done. Returns at once; whether it can be loaded
  /// shows when it is asked for.
  void preload() const;
  /// What the plugin is entered by, as long as the program runs; null with the reason when it is missing or
  /// broken, or belongs to another version. The first call loads it unless that is done; it is made on the
  /// thread of the first call.
  template <typename Root>
  [[nodiscard]] Root *root(std::string &problem) const {
    auto *const object = load(problem);
    auto *const root = qobject_cast<Root *>(object);
    if (object != nullptr && root == nullptr) problem = "it is none";
    return root;
  }

 private:
  [[nodiscard]] QObject *load(std::string &problem) const;

  QString m_file;
};

}  // namespace velmora
