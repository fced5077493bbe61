// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QDBusConnection>
#include <QObject>

namespace velmora {

/// Whether something on the session bus shows status items. Nothing here waits for an answer.
class NotifierHost final : public QObject {
  Q_OBJECT

 public:
  explicit NotifierHost(const QDBusConnection &bus);

  /// False while the question is on its way, for as long as who is asked does not answer.
  [[nodiscard]] bool isKnown() const { return m_isKnown; }
  [[nodiscard]] bool isThere() const { return m_isThere; }

 Q_SIGNALS:
  /// One of the two is another one now.
  void changed();

 private Q_SLOTS:
  void ask();

 private:
  void set(bool isKnown, bool isThere);

  QDBusConnection m_bus;
  unsigned m_questions = 0;  // only the answer to the last one counts
  bool m_isKnown = false;
  bool m_isThere = false;
};

}  // namespace velmora
