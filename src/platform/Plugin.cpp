// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/Plugin.h"

#include <QCoreApplication>
#include <QPluginLoader>
#include <QThreadPool>
#include <mutex>

namespace velmora {
namespace {

/// One at a time: a library that two threads load at once is loaded twice, and one of the two is never given
/// back.
void loadInto(QPluginLoader &loader) {
  static std::mutex mutex;
  const std::scoped_lock lock(mutex);
  loader.load();
}

}  // namespace

Plugin::Plugin(const char *name)
    : m_file(QCoreApplication::applicationDirPath() + QLatin1String("/" VELMORA_PLUGINS "/") +
             QLatin1String(name) + QLatin1String(".so")) {}

void Plugin::preload() const {
  QThreadPool::globalInstance()->start([file = m_file] {
    QPluginLoader loader(file);
    loadInto(loader);
  });
}

QObject *Plugin::load(std::string &problem) const {
  QPluginLoader loader(m_file);
  loadInto(loader);
  QObject *const root = loader.instance();
  problem = root != nullptr ? std::string() : loader.errorString().toStdString();
  return root;
}

}  // namespace velmora
