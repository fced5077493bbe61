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
  // What the user has not read yet is not said again: a network may come and go while nobody is there.
  static std::vector<std::pair<QString, QMessageBox *>> open;
  const QString words = alert.messageText + QLatin1Char('\n') + alert.informativeText;
  const auto same =
      std::find_if(open.begin(), open.end(), [&](const auto &pair) { return pair.first == words; });
  if (same != open.end()) {
    same->second->raise();
    same->second->activateWindow();
    return 0;
  }
  QMessageBox box(iconOf(alert.style), QString(), alert.messageText, QMessageBox::NoButton, parent);
  box.setTextFormat(Qt::PlainText);
  box.setInformativeText(alert.informativeText);
  QStringList names = alert.buttons;
  if (names.isEmpty()) names << QMessageBox::tr("OK");
  QList<QAbstractButton *> buttons;
  for (const QString &name : std::as_const(names)) {
    buttons << box.addButton(name, buttons.isEmpty() ? QMessageBox::AcceptRole : QMessageBox::RejectRole);
  }
  box.setDefaultButton(qobject_cast<QPushButton *>(buttons.first()));
  if (names.size() == 1) box.setEscapeButton(buttons.first());
  open.emplace_back(words, &box);
  box.exec();
  std::erase_if(open, [&](const auto &pair) { return pair.second == &box; });
  return std::max(0, static_cast<int>(buttons.indexOf(box.clickedButton())));
}

void setAlertAnswer(std::function<int(const Alert &)> answer) { answerInPlace() = std::move(answer); }

}  // namespace velmora
