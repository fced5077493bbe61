// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/Alert.h"

#include <QMessageBox>
#include <QPushButton>

namespace velmora {

namespace {

std::function<int(const Alert &)> &answers() {
  static std::function<int(const Alert &)> answer;
  return answer;
}

}  // namespace

int runAlert(const Alert &alert, QWidget *parent) {
  if (const auto answer = answers()) return answer(alert);
  QMessageBox box(QMessageBox::Critical, QString(), alert.messageText, QMessageBox::NoButton, parent);
  box.setInformativeText(alert.informativeText);
  QList<QAbstractButton *> buttons;
  for (const QString &title : alert.buttonTitles) buttons << box.addButton(title, QMessageBox::AcceptRole);
  if (!buttons.isEmpty()) box.setDefaultButton(static_cast<QPushButton *>(buttons.first()));
  // Escape and the window's own button are the answer where there is only one.
  if (buttons.size() == 1) box.setEscapeButton(buttons.first());
  box.exec();
  return static_cast<int>(qMax(buttons.indexOf(box.clickedButton()), qsizetype{0}));
}

void answerAlertsWith(std::function<int(const Alert &)> answer) { answers() = std::move(answer); }

}  // namespace velmora
