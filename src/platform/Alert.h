// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>
#include <QStringList>
#include <functional>

class QWidget;

namespace velmora {

/// What a modal alert says.
struct Alert {
  QString messageText;
  QString informativeText;
  QStringList buttonTitles;  ///< the first one is the default
};

/// Shows an alert and waits for the answer: the index of the button pressed. Main thread; its event loop runs
/// on.
int runAlert(const Alert &alert, QWidget *parent = nullptr);

/// Lets `answer` press the buttons instead of the user, for tests; an empty function shows the boxes again.
void answerAlertsWith(std::function<int(const Alert &)> answer);

}  // namespace velmora
