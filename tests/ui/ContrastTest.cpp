// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// How well texts stand out, measured in pictures of the real windows: the letters against what is behind
// them.
#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QTabBar>
#include <QTimer>
#include <cmath>
#include <map>

#include "foundation/Deployment.h"
#include "gallery/Theme.h"
#include "platform/Alert.h"
#include "platform/web/WebView.h"
#include "support/EventLoop.h"
#include "ui/popover/INPopoverController.h"
#include "ui/popover/popOverView.h"
#include "ui/preferences/PreferencesWindowController.h"
#include "ui/shortcut/MASShortcutView.h"

namespace velmora {
namespace {

using tests::runUntil;

constexpr int kScale = 3;  // thin strokes have their full colour somewhere only when they are drawn large
constexpr double kReadable = 4.5;

double luminance(QRgb color) {
  const auto linear = [](int value) {
    const double part = value / 255.0;
    return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(qRed(color)) + 0.7152 * linear(qGreen(color)) + 0.0722 * linear(qBlue(color));
}

double contrast(QRgb a, QRgb b) {
  const auto [darker, lighter] = std::minmax({luminance(a), luminance(b)});
  return (lighter + 0.05) / (darker + 0.05);
}

/// Between the colour that `area` shows most of and the one that differs most from it.
double contrastIn(const QImage &area) {
  std::map<QRgb, int> colors;
  for (int y = 0; y < area.height(); ++y) {
    for (int x = 0; x < area.width(); ++x) ++colors[area.pixel(x, y)];
  }
  const auto fewer = [](const auto &a, const auto &b) { return a.second < b.second; };
  const QRgb ground = std::max_element(colors.begin(), colors.end(), fewer)->first;
  double most = 1;
  for (const auto &[color, pixels] : colors) most = std::max(most, contrast(color, ground));
  return most;
}

/// Where the letters of a control are, away from its frame and its mark.
std::vector<QRect> textsOf(const QWidget &widget) {
  const QRect inside = widget.rect().adjusted(6, 4, -6, -4);
  if (const auto *label = qobject_cast<const QLabel *>(&widget)) {
    return label->text().isEmpty() ? std::vector<QRect>() : std::vector{label->contentsRect()};
  }
  if (qobject_cast<const QCheckBox *>(&widget)) return {inside.adjusted(18, 0, 0, 0)};
  if (qobject_cast<const QComboBox *>(&widget)) return {inside.adjusted(0, 0, -18, 0)};
  if (const auto *bar = qobject_cast<const QTabBar *>(&widget)) {
    return {bar->tabRect(0).adjusted(6, 5, -6, -5), bar->tabRect(1).adjusted(6, 5, -6, -5)};
  }
  const bool button =
      qobject_cast<const QPushButton *>(&widget) || qobject_cast<const MASShortcutView *>(&widget);
  return button ? std::vector{inside} : std::vector<QRect>();
}

/// Measures every text of the window that can be used now; `least` of them there must be.
void expectReadable(QWidget &window, int least, const std::string &what) {
  ASSERT_TRUE(runUntil([&] { return window.isVisible(); })) << what;
  QImage picture(window.size() * kScale, QImage::Format_RGB32);
  picture.setDevicePixelRatio(kScale);
  picture.fill(Qt::black);
  window.render(&picture);
  int measured = 0;
  for (QWidget *widget : window.findChildren<QWidget *>()) {
    if (!widget->isVisible() || !widget->isEnabled()) continue;
    for (const QRect &rect : textsOf(*widget)) {
      const QRect place(widget->mapTo(&window, rect.topLeft()) * kScale, rect.size() * kScale);
      EXPECT_GE(contrastIn(picture.copy(place)), kReadable)
          << what << ": " << widget->objectName().toStdString() << ' ' << rect.x();
      ++measured;
    }
  }
  EXPECT_GE(measured, least) << what;
}

struct Contrast : testing::TestWithParam<bool> {
  Contrast() : before(QApplication::palette()) { tests::setTheme(GetParam()); }
  ~Contrast() override { QApplication::setPalette(before); }
  QPalette before;
  std::string theme = GetParam() ? "dark " : "light ";
};

TEST_P(Contrast, OfThePreferencesInEveryStateOfTheRecorder) {
  UserDefaults defaults;
  defaults.setObject(true, QStringLiteral("logged_in"));
  const std::string link = "https://velmora.example/";
  PreferencesWindowController window(
      ApplicationInformation::ofThisBuild({.forum = link, .fanPage = link, .microblog = link, .home = link}),
      defaults);
  window.showWindow();
  MASShortcutView &recorder = window.shortcutView();
  ASSERT_TRUE(runUntil([&] { return recorder.hasFocus(); }));
  expectReadable(window, 11, theme + "without a shortcut");
  recorder.setShortcutValue(MASShortcut(122, shortcut_modifier::kCommand));
  expectReadable(window, 11, theme + "with a shortcut");
  recorder.setRecording(true);
  EXPECT_TRUE(recorder.isRecording());
  expectReadable(window, 11, theme + "recording");
  recorder.setRecording(false);
  window.AboutTabClick();
  expectReadable(window, 10, theme + "about");
}

TEST_P(Contrast, OfTheHintTheAlertsAndAMissingPage) {
  popOverView hint;
  INPopoverController popover(&hint);
  popover.setAnimates(false);
  popover.presentPopoverFromRect(QRectF(300, 2, 22, 22), nullptr, ArrowDirection::up, false);
  expectReadable(popover.popoverWindow(), 2, theme + "hint");
  WebView page(nullptr, QStringLiteral("none"));
  page.resize(400, 300);
  page.show();
  page.load(QUrl(QStringLiteral("https://127.0.0.1/")));
  page.showFailure();
  expectReadable(page, 2, theme + "page");
  QTimer::singleShot(0, [&] {
    auto *alert = QApplication::activeModalWidget();
    if (alert) expectReadable(*alert, 3, theme + "alert");
    if (alert) alert->close();
  });
  showAlert({.messageText = QStringLiteral("No microphone"),
             .informativeText = QStringLiteral("Please attach one."),
             .style = AlertStyle::critical});
}

INSTANTIATE_TEST_SUITE_P(Themes, Contrast, testing::Bool(),
                         [](const auto &each) { return each.param ? "Dark" : "Light"; });

}  // namespace
}  // namespace velmora
