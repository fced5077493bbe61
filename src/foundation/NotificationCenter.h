// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Tells whoever wants to know that something has happened, by name; poster and observer need not know each
// other.
//
//   auto watch = NotificationCenter::defaultCenter().addObserver("ShortCutPress", [](const Notification &)
//   {…}); NotificationCenter::defaultCenter().post("ShortCutPress", this);
#pragma once

#include <QString>
#include <QVariant>
#include <functional>
#include <list>
#include <memory>

namespace velmora {

struct Notification {
  QString name;
  QVariant object;  ///< who or what it is about: a pointer to the poster, or a value
};

/// Main thread only; who is on another posts through `MainQueue`.
class NotificationCenter {
 public:
  using Observer = std::function<void(const Notification &)>;

  /// Ends an observation when it goes, which may be inside a notification or after the centre's end.
  class Observation {
   public:
    Observation() = default;

   private:
    friend class NotificationCenter;
    explicit Observation(std::shared_ptr<void> hold) : m_hold(std::move(hold)) {}
    std::shared_ptr<void> m_hold;
  };

  static NotificationCenter &defaultCenter();

  NotificationCenter() = default;
  NotificationCenter(const NotificationCenter &) = delete;
  NotificationCenter &operator=(const NotificationCenter &) = delete;

  /// Calls `observer` for each later notification of `name`; with an `object`, only for those about it.
  [[nodiscard]] Observation addObserver(const QString &name, Observer observer, const QVariant &object = {});

  /// Calls the observers of `name` that are there now and still are when their turn comes, in the order in
  /// which they were added, before it returns.
  void post(const QString &name, const QVariant &object = {});

 private:
  struct Watch {
    QString name;
    QVariant object;
    Observer observer;
  };
  std::list<std::weak_ptr<Watch>> m_watches;
};

}  // namespace velmora
