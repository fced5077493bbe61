// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
// How a view looks: a button of the platform's own, with a hint at its right end.
#include <QApplication>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionButton>
#include <QStyleOptionToolButton>

#include "ui/shortcut/MASShortcutView.h"

namespace velmora {

namespace {

constexpr int kMargin = 8;  // on both sides of the title
constexpr char16_t kEscapeGlyph = u'\u238b';
constexpr char16_t kDeleteGlyph = u'\u2715';

QString text(const char *english) { return QCoreApplication::translate("MASShortcut", english); }

}  // namespace

QString MASShortcutView::title() const {
  if (!m_recording)
    return m_shortcutValue ? m_shortcutValue->description()
                           : text(QT_TRANSLATE_NOOP("MASShortcut", "Record Shortcut"));
  if (m_hinting)
    return m_shortcutValue ? text(QT_TRANSLATE_NOOP("MASShortcut", "Use Old Shortcut"))
                           : text(QT_TRANSLATE_NOOP("MASShortcut", "Cancel"));
  if (!m_shortcutPlaceholder.isEmpty()) return m_shortcutPlaceholder;
  return m_shortcutValue ? text(QT_TRANSLATE_NOOP("MASShortcut", "Type New Shortcut"))
                         : text(QT_TRANSLATE_NOOP("MASShortcut", "Type Shortcut"));
}

QString MASShortcutView::hint() const {
  if (m_recording) return QChar(kEscapeGlyph);
  return m_shortcutValue && m_showsDeleteButton ? QString(QChar(kDeleteGlyph)) : QString();
}

QRect MASShortcutView::hintRect() const {
  if (hint().isEmpty()) return {};
  const int side = qMin(height(), width());
  return QStyle::visualRect(layoutDirection(), rect(), QRect(width() - side, 0, side, height()));
}

QRect MASShortcutView::shortcutRect() const {
  if (hint().isEmpty()) return rect();
  const int side = qMin(height(), width());
  return QStyle::visualRect(layoutDirection(), rect(), QRect(0, 0, width() - side, height()));
}

QSize MASShortcutView::sizeHint() const {
  QStyleOptionButton option;
  option.initFrom(this);
  const QFontMetrics metrics = fontMetrics();
  int widest = 0;
  for (const char *english : {"Record Shortcut", "Type New Shortcut", "Use Old Shortcut"}) {
    widest = qMax(widest, metrics.horizontalAdvance(text(english)));
  }
  const QSize contents(widest + 2 * kMargin, metrics.height());
  QSize size = QWidget::style()->sizeFromContents(QStyle::CT_PushButton, &option, contents, this);
  size.rwidth() += size.height();  // the hint
  return size;
}

void MASShortcutView::paintEvent(QPaintEvent *) {
  QPainter painter(this);
  QStyle &platform = *QWidget::style();

  QStyleOptionButton cell;
  cell.initFrom(this);
  cell.rect = rect();
  cell.state |= m_recording ? QStyle::State_Sunken | QStyle::State_On : QStyle::State_Raised;
  // The keyboard's focus is here while it records, wherever it was.
  if (m_recording) cell.state |= QStyle::State_HasFocus;
  if (m_viewStyle == MASShortcutViewStyle::textured) {
    cell.features = QStyleOptionButton::Flat;
    if (m_recording || underMouse())
      platform.drawPrimitive(QStyle::PE_PanelButtonTool, &cell, &painter, this);
  } else {
    platform.drawControl(QStyle::CE_PushButtonBevel, &cell, &painter, this);
  }
  if (cell.state & QStyle::State_HasFocus) {
    QStyleOptionFocusRect focus;
    focus.initFrom(this);
    focus.state = cell.state | QStyle::State_KeyboardFocusChange;
    focus.rect = platform.subElementRect(QStyle::SE_PushButtonFocusRect, &cell, this);
    platform.drawPrimitive(QStyle::PE_FrameFocusRect, &focus, &painter, this);
  }

  const QRect area = shortcutRect().adjusted(kMargin, 0, hint().isEmpty() ? -kMargin : 0, 0);
  const QString shown = fontMetrics().elidedText(title(), Qt::ElideRight, area.width());
  platform.drawItemText(&painter, area, Qt::AlignCenter, palette(), isEnabled(), shown, QPalette::ButtonText);
  if (hint().isEmpty()) return;
  if (!m_hinting && isEnabled()) painter.setOpacity(0.6);
  platform.drawItemText(&painter, hintRect(), Qt::AlignCenter, palette(), isEnabled(), hint(),
                        QPalette::ButtonText);
}

}  // namespace velmora
