// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/Notification.h"

#include <gtest/gtest.h>

#include "support/CapturedLog.h"
#include "support/Desktop.h"

namespace velmora {
namespace {

using tests::runUntil;

TEST(Notification, IsShownAsPlainTextOrLogged) {
  const tests::CapturedLog log;
  tests::Desktop desktop;
  showNotification(QStringLiteral("Lost"), QStringLiteral("nobody is there"));
  EXPECT_TRUE(runUntil([&] { return log.count("Notification error: ") == 1; }));
  desktop.say("show");
  ASSERT_TRUE(desktop.hears("show"));
  showNotification(QStringLiteral("Velmora"), QStringLiteral("<b>1 & 2"));
  EXPECT_TRUE(desktop.hears("Velmora: &lt;b&gt;1 &amp; 2"));
  EXPECT_EQ(log.lines().size(), 1U);
}

}  // namespace
}  // namespace velmora
