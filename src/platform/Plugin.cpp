// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/Plugin.h"

#include <QCoreApplication>
#include <QPluginLoader>
#include <QThreadPool>

namespace velmora {

Plugin::Plugin(const char *name)
    : m_file(QCoreApplication::applicationDirPath() + QLatin1String("/" VELMORA_PLUGINS "/") +
             QLatin1String(name) + QLatin1String(".so")) {}

void Plugin::preload() const {
  QThreadPool::globalInstance()->start([file = m_file] { QPluginLoader(file).load(); });
}

QObject *Plugin::load(std::string &problem) const {
  QPluginLoader loader(m_file);
  QObject *const root = loader.instance();
  problem = root != nullptr ? std::string() : loader.errorString().toStdString();
  return root;
}

}  // namespace velmora
