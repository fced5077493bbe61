// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The user's settings: values under text keys, kept in a file of the user's configuration folder, over
// defaults that the program registers anew at every start.
//
//   UserDefaults &defaults = UserDefaults::standard();
//   defaults.registerDefaults({{"RunAtLaunchEnable", false}});
//   auto watch = defaults.addObserver("logged_in", UserDefaults::Notify::initialAndNew,
//                                     [](const QVariant &value) { … });
#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QVariant>
#include <functional>
#include <list>
#include <memory>
#include <string>

class QSettings;

namespace velmora {

/// A store of settings. Values are booleans, numbers, text, dates, data (QByteArray), lists and dictionaries
/// (QVariantMap) of these, and come back from the file with the type they were stored with.
///
/// A store belongs to the thread that made it: every call and every notification is on that thread. Several
/// processes may share a file; what another one wrote shows after `synchronize()`.
class UserDefaults {
 public:
  /// Which values an observer is told: each one written from now on, or the present one at once as well.
  enum class Notify { newOnly, initialAndNew };
  /// Receives the value that is now in force; invalid when the key has neither a value nor a default.
  using Observer = std::function<void(const QVariant &value)>;

  /// Ends an observation when it goes. It may outlive the store, and may go inside a notification.
  class Observation {
   public:
    Observation() = default;

   private:
    friend class UserDefaults;
    explicit Observation(std::shared_ptr<void> hold) : m_hold(std::move(hold)) {}
    std::shared_ptr<void> m_hold;
  };

  /// The store of the user's configuration folder, made on first use on the thread that owns it (the main
  /// one).
  static UserDefaults &standard();

  /// A store in memory only.
  UserDefaults();
  /// A store in `file`, which is made with mode 0600 at the first write. A file that cannot be understood is
  /// set aside beside it under another name and logged with one line; the store then starts empty. What is no
  /// regular file, or larger than `kLargestFile`, is left alone with one line: the store is then in memory
  /// only.
  explicit UserDefaults(const QString &file);
  ~UserDefaults();
  UserDefaults(const UserDefaults &) = delete;
  UserDefaults &operator=(const UserDefaults &) = delete;

  /// Values that hold where nothing is stored. Later registrations add to and replace earlier ones.
  void registerDefaults(const QVariantMap &defaults);

  /// The stored value, else the registered one, else an invalid one.
  [[nodiscard]] QVariant objectForKey(const QString &key) const;
  /// The value when it has the type asked for, else false, an empty text and so on.
  [[nodiscard]] bool boolForKey(const QString &key) const;
  [[nodiscard]] QString stringForKey(const QString &key) const;
  [[nodiscard]] QDateTime dateForKey(const QString &key) const;
  [[nodiscard]] QByteArray dataForKey(const QString &key) const;
  [[nodiscard]] QVariantMap dictionaryForKey(const QString &key) const;

  /// Stores `value`; an invalid value removes the key. Observers are told, also when the value is the same.
  /// The file is written soon, by the event loop, by `synchronize()` or at the end.
  void setObject(const QVariant &value, const QString &key);
  void removeObjectForKey(const QString &key);

  /// Writes what is pending and reads what other processes wrote, whose changes observers are told. False,
  /// after one line in the log, when the file could not be written or read, or is left alone; the values stay
  /// in memory.
  bool synchronize();
  /// Why the last `synchronize()` failed: the path and the reason.
  [[nodiscard]] const std::string &problem() const { return m_problem; }

  [[nodiscard]] Observation addObserver(const QString &key, Notify notify, Observer observer);

 private:
  struct Watch {
    QString key;
    Observer observer;
    bool ended = false;
  };

  void notify(const QString &key);

  QString m_file;
  std::string m_problem;
  std::unique_ptr<QSettings> m_settings;  // null in a store in memory
  QVariantMap m_values;                   // the values of a store in memory
  QVariantMap m_registered;
  std::list<std::weak_ptr<Watch>> m_watches;
};

}  // namespace velmora
