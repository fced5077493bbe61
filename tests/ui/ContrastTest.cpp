// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// How well texts stand out, measured in pictures of the real windows: the letters against what is behind
// them.
#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <cmath>
#include <map>

#include "platform/web/WebView.h"
#include "support/EventLoop.h"
#include "support/Theme.h"
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

/// Measures every text in colours of our own, and that none is cut off; `least` of them there must be.
void expectReadable(QWidget &window, int least, const std::string &what) {
  ASSERT_TRUE(runUntil([&] { return window.isVisible(); })) << what;
  QImage picture(window.size() * kScale, QImage::Format_RGB32);
  picture.setDevicePixelRatio(kScale);
  picture.fill(Qt::black);
  window.render(&picture);
  int measured = 0;
  for (QWidget *widget : window.findChildren<QWidget *>()) {
    const auto *label = qobject_cast<QLabel *>(widget);
    const bool isText = (label && !label->text().isEmpty()) || qobject_cast<MASShortcutView *>(widget) ||
                        qobject_cast<QPushButton *>(widget);
    if (!isText || !widget->isVisible() || !widget->isEnabled()) continue;
    // Away from the frame of a button.
    const QRect rect = label ? label->contentsRect() : widget->rect().adjusted(6, 4, -6, -4);
    const QRect place(widget->mapTo(&window, rect.topLeft()) * kScale, rect.size() * kScale);
    EXPECT_GE(contrastIn(picture.copy(place)), kReadable) << what << widget->objectName().toStdString();
    EXPECT_TRUE(!label || !label->wordWrap() || label->height() >= label->heightForWidth(label->width()))
        << what << widget->objectName().toStdString();
    ++measured;
  }
  EXPECT_GE(measured, least) << what;
}

TEST(Contrast, IsEnoughInLightAndDark) {
  const QPalette before = QApplication::palette();
  for (const bool dark : {false, true}) {
    tests::setTheme(dark);
    const std::string theme = dark ? "dark " : "light ";
    UserDefaults defaults;
    PreferencesWindowController window({}, defaults);
    window.showWindow();
    MASShortcutView &recorder = window.shortcutView();
    ASSERT_TRUE(runUntil([&] { return recorder.hasFocus(); }));
    recorder.setShortcutValue({});
    expectReadable(window, 6, theme + "without a shortcut");
    recorder.setShortcutValue(MASShortcut(122, shortcut_modifier::kCommand));
    expectReadable(window, 6, theme + "with a shortcut");
    recorder.setRecording(true);
    EXPECT_TRUE(recorder.isRecording());
    expectReadable(window, 6, theme + "recording");
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
  }
  QApplication::setPalette(before);
}

}  // namespace
}  // namespace velmora
