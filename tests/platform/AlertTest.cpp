// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/Alert.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QWindow>

#include "foundation/MainQueue.h"

namespace velmora {
namespace {

/// Does something to the box that is shown next; the box waits for it.
template <typename Deed>
void meanwhile(const Deed &deed) {
  MainQueue::main().async([deed] {
    auto *const box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
    ASSERT_NE(box, nullptr);
    deed(*box);
  });
}

void press(const QMessageBox &box, const QString &name) {
  for (QAbstractButton *const button : box.buttons()) {
    if (button->text() == name) return button->click();
  }
  ADD_FAILURE() << "there is no button " << name.toStdString();
}

TEST(Alert, TellsWhichButtonItWasAnsweredWith) {
  const Alert question{.messageText = QStringLiteral("<b>What?</b>"),
                       .informativeText = QStringLiteral("So?"),
                       .buttons = {QStringLiteral("Yes"), QStringLiteral("No"), QStringLiteral("Never")}};
  EXPECT_FALSE(raiseAlert());
  // Other windows take input meanwhile, and the same is not said twice.
  QPushButton other;
  other.show();
  int clicks = 0;
  QObject::connect(&other, &QPushButton::clicked, [&] { ++clicks; });
  meanwhile([&](QMessageBox &box) {
    EXPECT_EQ(box.textFormat(), Qt::PlainText);
    QTest::mouseClick(other.windowHandle(), Qt::LeftButton, {}, QPoint(5, 5));
    EXPECT_EQ(clicks, 1);
    EXPECT_TRUE(raiseAlert());
    EXPECT_EQ(showAlert(question), 0);
    press(box, QStringLiteral("Never"));
  });
  EXPECT_EQ(showAlert(question), 2);
  meanwhile([](QMessageBox &box) { press(box, QStringLiteral("OK")); });
  EXPECT_EQ(showAlert({.messageText = QStringLiteral("Well")}), 0);
  meanwhile([](QMessageBox &box) { box.close(); });
  EXPECT_EQ(showAlert({.messageText = QStringLiteral("Well")}), 0);
}

}  // namespace
}  // namespace velmora
