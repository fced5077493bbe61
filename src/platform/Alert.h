// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The few conditions that the user must hear of: a box that stays until it is answered.
//
//   showAlert({.messageText = tr("No microphone"), .style = AlertStyle::critical});
#pragma once

#include <QString>
#include <QStringList>
#include <functional>

class QWidget;

namespace velmora {

enum class AlertStyle { warning, informational, critical };

struct Alert {
  QString messageText;        ///< what has happened
  QString informativeText{};  ///< what to do about it, in smaller letters
  AlertStyle style = AlertStyle::warning;
  QStringList buttons{};  ///< the first one is the default; none stands for "OK"
};

/// Shows the alert above `parent`, which takes no input until it has been answered, and returns then: the
/// number of the button, and 0 when it was closed. The event loop goes on meanwhile. One with the words of an
/// alert that is open is not shown again; the open one comes to the front, and 0 is returned at once. Main
/// thread.
int showAlert(const Alert &alert, QWidget *parent = nullptr);

/// Brings the alert that was shown last and is not answered yet to the front; false when there is none. For
/// what would open something beside it. Main thread.
bool raiseAlert();

/// Has `answer` give the number of the button in the place of a box on the screen; an empty one brings the
/// boxes back. For tests and for runs that nobody watches. Main thread.
void setAlertAnswer(std::function<int(const Alert &)> answer);

}  // namespace velmora
