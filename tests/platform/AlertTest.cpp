// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/Alert.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>

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

TEST(Alert, TellsWhichButtonItWasAnsweredWithAndSaysNothingTwice) {
  const Alert question{.messageText = QStringLiteral("<b>What?</b>"),
                       .buttons = {QStringLiteral("Yes"), QStringLiteral("No"), QStringLiteral("Never")}};
  EXPECT_FALSE(raiseAlert());
  meanwhile([&](const QMessageBox &box) {
    EXPECT_EQ(box.textFormat(), Qt::PlainText);
    EXPECT_TRUE(raiseAlert());
    EXPECT_EQ(showAlert(question), 0);
    for (QAbstractButton *const button : box.buttons())
      if (button->text() == QLatin1String("Never")) button->click();
  });
  EXPECT_EQ(showAlert(question), 2);
  meanwhile([](QMessageBox &box) { box.close(); });
  EXPECT_EQ(showAlert({.messageText = QStringLiteral("Well")}), 0);
}

}  // namespace
}  // namespace velmora
