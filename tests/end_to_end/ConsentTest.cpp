// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The sign-in as a person sees and answers it: the built assistant, the window and the screen on an X server,
// and presses that come from there.
#include <gmock/gmock.h>

#include <QApplication>
#include <QPalette>
#include <QPushButton>
#include <QScreen>
#include <algorithm>
#include <nlohmann/json.hpp>

#include "auth/LoginViewController.h"
#include "auth/LoginWindowController.h"
#include "auth/TokenStore.h"
#include "support/EventLoop.h"
#include "support/OtherProgram.h"
#include "support/Program.h"
#include "support/TemporaryFolder.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;
using tests::Program;
using tests::runUntil;

constexpr QRgb kAllow = qRgb(0x24, 0x56, 0xc9);  // the ground of the button
constexpr int kLeastWidth = 80;                  // pixels; nothing else of its colour is as wide

struct Assistant {
  explicit Assistant(const std::string &port = "0")
      : program(VELMORA_ASSISTANT, {"--stop-at-eof", "--sign-in-port", port}, {}) {
    if (!program.waitForOut("\n")) throw std::runtime_error(program.err());
    deployment = Deployment::load(nlohmann::json::parse(program.out()).at("deployment").get<std::string>());
  }

  Program program;
  Deployment deployment;
};

/// A place in the button of this colour on the screen; nothing while it is not there.
std::optional<QPoint> onScreen(QRgb color) {
  const QImage screen =
      QApplication::primaryScreen()->grabWindow(0).toImage().convertToFormat(QImage::Format_RGB32);
  QRect found;
  for (int y = 0; y < screen.height(); ++y) {
    const auto *line = reinterpret_cast<const QRgb *>(screen.constScanLine(y));
    const auto *end = line + screen.width();
    if (std::count(line, end, color) < kLeastWidth) continue;
    const auto left = static_cast<int>(std::find(line, end, color) - line);
    found |= QRect(left, y, kLeastWidth, 1);
  }
  return found.isEmpty() ? std::nullopt : std::optional(found.center());
}

struct ConsentTest : testing::Test {
  static QPoint waitForButton() {
    std::optional<QPoint> button;
    EXPECT_TRUE(runUntil([&] { return (button = onScreen(kAllow)).has_value(); })) << "no consent page";
    return button.value_or(QPoint());
  }
  static bool click(const QPoint &where) {
    return tests::xdotool({"mousemove", std::to_string(where.x()), std::to_string(where.y()), "click", "1"});
  }
  [[nodiscard]] bool signedIn() const { return defaults.boolForKey(kLoggedInKey); }
  /// What the user reads in place of a page; empty while there is one.
  static QString notice(const QWidget &screen) {
    for (const auto *button : screen.findChildren<QPushButton *>()) {
      if (button->isVisible() && button->hasFocus()) return button->accessibleDescription();
    }
    return {};
  }

  UserDefaults &defaults = UserDefaults::standard();
};

TEST_F(ConsentTest, AServiceThatIsGoneIsToldAndComesBackWithAButton) {
  std::optional<Assistant> assistant(std::in_place);
  const tests::TemporaryFolder kept;
  Deployment deployment = assistant->deployment;
  fs::copy(deployment.folder, kept.path(), fs::copy_options::recursive);
  deployment.folder = kept.path();
  const auto address = nlohmann::json::parse(readFile(deployment.resource("google_oauth2", "json")));
  const QUrl page(QString::fromStdString(address.at("installed").at("auth_uri").get<std::string>()));

  LoginWindowController window(deployment, defaults);
  window.showWindow();
  const QPoint allow = waitForButton();
  assistant.reset();
  EXPECT_TRUE(click(allow));
  ASSERT_TRUE(runUntil([&] { return !notice(window).isEmpty(); }));
  EXPECT_EQ(notice(window), QStringLiteral("The page at 127.0.0.1 cannot be loaded."));
  EXPECT_FALSE(signedIn());

  window.close();
  LoginViewController later(deployment, defaults);
  later.view().show();
  later.activateWindow();
  ASSERT_TRUE(runUntil([&] { return !notice(later).isEmpty(); }));
  assistant.emplace(std::to_string(page.port()));
  EXPECT_TRUE(tests::xdotool({"key", "space"}));
  EXPECT_TRUE(click(waitForButton()));
  // Whatever is answered to what a redirect brings counts as a sign-in; the service decides about the turns.
  EXPECT_TRUE(runUntil([&] { return signedIn(); }));
}

/// The pictures of the documentation.
TEST_F(ConsentTest, DISABLED_Picture) {
  const bool dark = qEnvironmentVariableIsSet("VELMORA_DARK");
  if (dark) QApplication::setPalette(QPalette(QColor(0x1e, 0x21, 0x28)));
  Assistant assistant;
  LoginWindowController window(assistant.deployment, defaults);
  window.showWindow();
  const QRgb button = dark ? qRgb(0x8d, 0xb0, 0xff) : kAllow;
  ASSERT_TRUE(runUntil([&] { return onScreen(button).has_value(); }));
  EXPECT_TRUE(tests::xdotool({"key", "Tab"}));
  const QRect frame = window.frameGeometry();
  const auto picture = [&] {
    return window.screen()->grabWindow(0, frame.x(), frame.y(), frame.width(), frame.height()).toImage();
  };
  const QImage before = picture();
  ASSERT_TRUE(runUntil([&] { return picture() != before; })) << "the focus is seen";
  EXPECT_TRUE(picture().save(qEnvironmentVariable("VELMORA_PICTURE")));
}

}  // namespace
}  // namespace velmora
