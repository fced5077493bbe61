// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QScrollArea>
#include <QString>

class QLabel;
class QVBoxLayout;

namespace velmora {

/// The answer to the present request, and below it what was said before, the newest first. For a dark
/// background. Main thread.
class ConversationHistory : public QScrollArea {
  Q_OBJECT

 public:
  /// So many exchanges are kept beside the present one.
  static constexpr int kLongest = 20;

  explicit ConversationHistory(QWidget *parent = nullptr);

  /// What is answered to the present request; an empty text shows nothing.
  void setAnswer(const QString &answer);
  /// Puts what was said about `request` among what was said before, unless that is empty, and is ready for
  /// the next one.
  void endExchange(const QString &request);
  /// Forgets all.
  void clear();

 private:
  QLabel *m_answer;
  QVBoxLayout *m_earlier;  // of one widget for each exchange
};

}  // namespace velmora
