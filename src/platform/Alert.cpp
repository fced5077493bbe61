// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/Alert.h"

#include <QMessageBox>
#include <QPushButton>
#include <algorithm>
#include <utility>
#include <vector>

namespace velmora {
namespace {

std::function<int(const Alert &)> &answerInPlace() {
  static std::function<int(const Alert &)> answer;
  return answer;
}

struct OpenAlert {
  QString words;
  QMessageBox *box;
};

/// In the order in which they were shown.
std::vector<OpenAlert> &openAlerts() {
  static std::vector<OpenAlert> open;
  return open;
}

void bringToFront(QMessageBox &box) {
  box.raise();
  box.activateWindow();
}

QMessageBox::Icon iconOf(AlertStyle style) {
  switch (style) {
    case AlertStyle::informational: return QMessageBox::Information;
    case AlertStyle::critical: return QMessageBox::Critical;
    case AlertStyle::warning: break;
  }
  return QMessageBox::Warning;
}

}  // namespace

int showAlert(const Alert &alert, QWidget *parent) {
  if (const auto answer = answerInPlace()) return answer(alert);
  const QString words = alert.messageText + QLatin1Char('\n') + alert.informativeText;
  // What the user has not read yet is not said again: a network may come and go while nobody is there.
  const auto same = std::find_if(openAlerts().begin(), openAlerts().end(),
                                 [&](const OpenAlert &one) { return one.words == words; });
  if (same != openAlerts().end()) {
    bringToFront(*same->box);
    return 0;
  }
  QMessageBox box(iconOf(alert.style), QStringLiteral("Velmora"), alert.messageText, QMessageBox::NoButton,
                  parent);
  box.setTextFormat(Qt::PlainText);
  // Of the parent only: the icon in the status bar would be dead as long as an alert is hidden somewhere.
  box.setWindowModality(Qt::WindowModal);
  box.setInformativeText(alert.informativeText);
  QStringList names = alert.buttons;
  if (names.isEmpty()) names << QMessageBox::tr("OK");
  QList<QAbstractButton *> buttons;
  for (const QString &name : std::as_const(names)) {
    buttons << box.addButton(name, buttons.isEmpty() ? QMessageBox::AcceptRole : QMessageBox::RejectRole);
  }
  box.setDefaultButton(qobject_cast<QPushButton *>(buttons.first()));
  if (names.size() == 1) box.setEscapeButton(buttons.first());
  openAlerts().push_back({words, &box});
  box.exec();
  std::erase_if(openAlerts(), [&](const OpenAlert &one) { return one.box == &box; });
  return std::max(0, static_cast<int>(buttons.indexOf(box.clickedButton())));
}

bool raiseAlert() {
  if (openAlerts().empty()) return false;
  bringToFront(*openAlerts().back().box);
  return true;
}

void setAlertAnswer(std::function<int(const Alert &)> answer) { answerInPlace() = std::move(answer); }

}  // namespace velmora
