// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "foundation/UserDefaults.h"

#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>
#include <cerrno>
#include <system_error>

#include "foundation/DefaultsFormat.h"
#include "foundation/File.h"
#include "foundation/Log.h"

namespace velmora {
namespace {

constexpr auto kOwnerOnly = QFile::ReadOwner | QFile::WriteOwner;

bool readDefaults(QIODevice &device, QSettings::SettingsMap &values) {
  const QByteArray text = device.readAll();
  if (auto decoded = decodeDefaults(text)) {
    values = *std::move(decoded);
  } else if (const auto *file = qobject_cast<const QFileDevice *>(&device)) {
    setAsideDamaged(file->fileName(), text);
  }
  return true;
}

bool writeDefaults(QIODevice &device, const QSettings::SettingsMap &values) {
  const QByteArray text = encodeDefaults(values);
  if (device.write(text) != text.size()) return false;
  // Without it a full disk would show only after the old file has been replaced.
  auto *const file = qobject_cast<QFileDevice *>(&device);
  return !file || file->flush();
}

/// QSettings brings the lock between processes, the merge of their changes and the atomic replacement; the
/// format is ours because its INI files return booleans and numbers as text.
QSettings::Format defaultsFormat() {
  static const QSettings::Format format =
      QSettings::registerFormat(QStringLiteral("json"), readDefaults, writeDefaults, Qt::CaseSensitive);
  return format;
}

/// Makes the folder and an empty file that nobody else can read, so that secrets never stand in a readable
/// one.
void makePrivate(const QString &path) {
  QDir().mkpath(QFileInfo(path).absolutePath());
  QFile file(path);
  if (!file.exists()) {
    // The file may appear meanwhile by another process: the mode is then set below.
    [[maybe_unused]] const bool made = file.open(QIODevice::NewOnly | QIODevice::WriteOnly, kOwnerOnly);
    file.close();
  }
  if ((file.permissions() & ~(kOwnerOnly | QFile::ReadUser | QFile::WriteUser)) != 0) {
    file.setPermissions(kOwnerOnly);
  }
}

/// QSettings does not tell it.
std::string reasonAgainstWriting(const QString &file) {
  const QByteArray folder = QFile::encodeName(QFileInfo(file).absolutePath());
  const bool isForbidden =
      ::access(folder.constData(), W_OK | X_OK) != 0 ||
      (::access(QFile::encodeName(file).constData(), R_OK | W_OK) != 0 && errno != ENOENT);
  return isForbidden ? std::generic_category().message(errno) : "the disk may be full";
}

std::unique_ptr<QSettings> openSettings(const QString &file) {
  auto settings = std::make_unique<QSettings>(file, defaultsFormat());
  settings->setFallbacksEnabled(false);
  return settings;
}

template <typename Value>
Value valueOfType(const QVariant &value) {
  return value.typeId() == qMetaTypeId<Value>() ? value.value<Value>() : Value();
}

}  // namespace

UserDefaults &UserDefaults::standard() {
  static UserDefaults defaults(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                               QLatin1String("/velmora/defaults.json"));
  return defaults;
}

UserDefaults::UserDefaults() = default;

UserDefaults::UserDefaults(const QString &file) : m_file(file) {
  // A pipe would keep the program waiting, a device or a huge file would fill its memory.
  const QFileInfo info(file);
  if (info.exists() && (!info.isFile() || info.size() > static_cast<qint64>(kLargestFile))) {
    log("The settings file ", file.toStdString(),
        " is no file of settings; settings are kept for this run only");
    return;
  }
  if (info.exists()) makePrivate(file);
  m_settings = openSettings(file);
  if (m_settings->status() != QSettings::NoError) {
    log("The settings file ", file.toStdString(), " cannot be read");
  }
}

UserDefaults::~UserDefaults() {
  if (m_settings) synchronize();
}

void UserDefaults::registerDefaults(const QVariantMap &defaults) { m_registered.insert(defaults); }

QVariant UserDefaults::objectForKey(const QString &key) const {
  QVariant stored = m_settings ? m_settings->value(key) : m_values.value(key);
  return stored.isValid() ? stored : m_registered.value(key);
}

bool UserDefaults::boolForKey(const QString &key) const { return valueOfType<bool>(objectForKey(key)); }

QString UserDefaults::stringForKey(const QString &key) const {
  return valueOfType<QString>(objectForKey(key));
}

QDateTime UserDefaults::dateForKey(const QString &key) const {
  return valueOfType<QDateTime>(objectForKey(key));
}

QByteArray UserDefaults::dataForKey(const QString &key) const {
  return valueOfType<QByteArray>(objectForKey(key));
}

QVariantMap UserDefaults::dictionaryForKey(const QString &key) const {
  return valueOfType<QVariantMap>(objectForKey(key));
}

void UserDefaults::setObject(const QVariant &value, const QString &key) {
  if (!value.isValid()) return removeObjectForKey(key);
  if (m_settings) {
    makePrivate(m_file);
    m_settings->setValue(key, value);
  } else {
    m_values.insert(key, value);
  }
  notify(key);
}

void UserDefaults::removeObjectForKey(const QString &key) {
  if (m_settings) {
    m_settings->remove(key);
  } else {
    m_values.remove(key);
  }
  notify(key);
}

bool UserDefaults::synchronize() {
  if (!m_settings) {
    m_problem = m_file.toStdString() + ": is no file of settings";
    return m_file.isEmpty();
  }
  QVariantMap before;
  for (const auto &weak : m_watches) {
    if (const auto watch = weak.lock()) before.insert(watch->key, objectForKey(watch->key));
  }
  // A status, once bad, stays so in its object; a new one shares the values that are still to be written.
  if (m_settings->status() != QSettings::NoError) m_settings = openSettings(m_file);
  m_settings->sync();
  for (auto it = before.begin(); it != before.end(); ++it) {
    if (objectForKey(it.key()) != it.value()) notify(it.key());
  }
  if (m_settings->status() == QSettings::NoError) return true;
  m_problem = m_file.toStdString() + ": " + reasonAgainstWriting(m_file);
  log("The settings file could not be written; settings are kept for this run only: ", m_problem);
  return false;
}

UserDefaults::Observation UserDefaults::addObserver(const QString &key, Notify notify, Observer observer) {
  auto watch = std::make_shared<Watch>(Watch{key, std::move(observer)});
  m_watches.remove_if([](const auto &weak) { return weak.expired(); });
  m_watches.push_back(watch);
  if (notify == Notify::initialAndNew) watch->observer(objectForKey(key));
  // Marks the end rather than only letting go: the watch lives on through a notification that is under way.
  return Observation(std::shared_ptr<void>(watch.get(), [watch](void *) { watch->ended = true; }));
}

void UserDefaults::notify(const QString &key) {
  // An observer may add and end observations, its own included, and write values.
  const auto watches = m_watches;
  for (const auto &weak : watches) {
    const auto watch = weak.lock();
    if (watch && !watch->ended && watch->key == key) watch->observer(objectForKey(key));
  }
}

}  // namespace velmora
