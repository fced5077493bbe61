// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "ui/shortcut/MASShortcutView.h"

#include <QCoreApplication>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QPointer>
#include <QToolTip>

#include "foundation/Log.h"
#include "platform/hotkeys/KeyboardLayout.h"
#include "platform/hotkeys/SymbolicHotKeys.h"
#include "ui/shortcut/MASDictionaryTransformer.h"
#include "ui/shortcut/MASShortcutViewAccessible.h"

namespace velmora {

namespace {

QPointer<MASShortcutView> &recordingView() {
  static QPointer<MASShortcutView> view;
  return view;
}

}  // namespace

MASShortcutView::MASShortcutView(QWidget *parent) : QWidget(parent) {
  MASShortcutViewAccessible::install();
  setFocusPolicy(Qt::StrongFocus);
  setMouseTracking(true);
  setAttribute(Qt::WA_Hover);
  setSizePolicy(QSizePolicy(QSizePolicy::Minimum, QSizePolicy::Fixed, QSizePolicy::PushButton));
  // The letters of a shortcut are those of the layout.
  connect(&KeyboardLayout::shared(), &KeyboardLayout::changed, this, [this] { update(); });
}

MASShortcutView::~MASShortcutView() {
  if (m_monitoring) activateEventMonitoring(false);
}

void MASShortcutView::setShortcutValue(const std::optional<MASShortcut> &value) {
  m_shortcutValue = value;
  resetToolTips();
  update();
  propagateValue();
  if (const auto change = m_shortcutValueChange) change(*this);
}

void MASShortcutView::storeValue(const std::optional<MASShortcut> &value) {
  if (m_propagating || value == m_shortcutValue) return;
  m_shortcutValue = value;
  resetToolTips();
  update();
  if (const auto change = m_shortcutValueChange) change(*this);
}

void MASShortcutView::propagateValue() {
  if (!m_binding) return;
  if (!m_binding->observedObject || m_binding->keyPath.isEmpty()) {
    log("Shortcut view error: the binding shortcutValue lacks its ",
        m_binding->observedObject ? "key path" : "observed object");
    return;
  }
  QVariant value = variantOf(m_shortcutValue);
  if (const ValueTransformer *transformer = m_binding->transformer.get()) {
    if (!transformer->allowsReverseTransformation()) {
      log("Shortcut view warning: the binding shortcutValue has a transformer that works one way only");
      return;
    }
    value = transformer->reverseTransformedValue(value);
  }
  m_propagating = true;
  m_binding->observedObject->setObject(value, m_binding->keyPath);
  m_propagating = false;
}

void MASShortcutView::setShortcutValueChange(std::function<void(MASShortcutView &)> change) {
  m_shortcutValueChange = std::move(change);
}

void MASShortcutView::setAssociatedUserDefaultsKey(const QString &key) {
  setAssociatedUserDefaultsKey(key, std::make_shared<MASDictionaryTransformer>());
}

void MASShortcutView::setAssociatedUserDefaultsKeyWithTransformerName(const QString &key,
                                                                      const QString &transformerName) {
  setAssociatedUserDefaultsKey(key, ValueTransformer::valueTransformerForName(transformerName));
}

void MASShortcutView::setAssociatedUserDefaultsKey(const QString &key,
                                                   std::shared_ptr<const ValueTransformer> transformer) {
  m_associatedUserDefaultsKey = key;
  if (key.isEmpty()) return bind({});
  bind(Binding{
      .observedObject = &UserDefaults::standard(), .keyPath = key, .transformer = std::move(transformer)});
}

void MASShortcutView::bind(std::optional<Binding> binding) {
  m_observation = {};
  m_binding = std::move(binding);
  if (!m_binding || !m_binding->observedObject || m_binding->keyPath.isEmpty()) return;
  m_observation = m_binding->observedObject->addObserver(
      m_binding->keyPath, UserDefaults::Notify::initialAndNew,
      [this, transformer = m_binding->transformer](const QVariant &value) {
        storeValue(shortcutOf(transformer ? transformer->transformedValue(value) : value));
      });
}

void MASShortcutView::setRecording(bool recording) {
  if (m_recording == recording || (recording && !isEnabled())) return;
  if (recording && recordingView()) recordingView()->setRecording(false);
  recordingView() = recording ? this : nullptr;
  m_recording = recording;
  m_shortcutPlaceholder.clear();
  resetToolTips();
  if (recording) refreshSymbolicHotKeys();
  activateEventMonitoring(recording);
  update();
  if (!recording) {
    announce(m_shortcutValue ? QCoreApplication::translate("MASShortcut", "Shortcut set")
                             : QCoreApplication::translate("MASShortcut", "Shortcut cleared"));
  }
}

void MASShortcutView::setShortcutPlaceholder(const QString &placeholder) {
  m_shortcutPlaceholder = placeholder;
  update();
}

void MASShortcutView::setShowsDeleteButton(bool shows) {
  m_showsDeleteButton = shows;
  resetToolTips();
  update();
}

void MASShortcutView::setViewStyle(MASShortcutViewStyle style) {
  m_viewStyle = style;
  updateGeometry();
  update();
}

void MASShortcutView::mousePressEvent(QMouseEvent *event) {
  if (!isEnabled() || event->button() != Qt::LeftButton) return QWidget::mousePressEvent(event);
  const bool onHint = hintRect().contains(event->position().toPoint());
  if (m_recording) {
    if (onHint) setRecording(false);
  } else if (m_shortcutValue && onHint) {
    setShortcutValue({});
  } else {
    setRecording(true);
  }
  setHinting(hintRect().contains(event->position().toPoint()));
}

void MASShortcutView::mouseMoveEvent(QMouseEvent *event) {
  setHinting(hintRect().contains(event->position().toPoint()));
}

void MASShortcutView::leaveEvent(QEvent *event) {
  setHinting(false);
  QWidget::leaveEvent(event);
}

void MASShortcutView::keyPressEvent(QKeyEvent *event) {
  // As a button of the platform does, for people without a pointer.
  if (event->key() == Qt::Key_Space && !event->isAutoRepeat()) return setRecording(true);
  QWidget::keyPressEvent(event);
}

void MASShortcutView::changeEvent(QEvent *event) {
  if (event->type() == QEvent::EnabledChange && !isEnabled()) setRecording(false);
  if (event->type() == QEvent::EnabledChange || event->type() == QEvent::FontChange) update();
  QWidget::changeEvent(event);
}

void MASShortcutView::hideEvent(QHideEvent *event) {
  setRecording(false);
  QWidget::hideEvent(event);
}

bool MASShortcutView::event(QEvent *event) {
  if (event->type() != QEvent::ToolTip) return QWidget::event(event);
  const auto *help = static_cast<QHelpEvent *>(event);
  const QString text = toolTipAt(help->pos());
  if (text.isEmpty()) {
    QToolTip::hideText();
    event->ignore();
  } else {
    QToolTip::showText(help->globalPos(), text, this,
                       hintRect().contains(help->pos()) ? hintRect() : shortcutRect());
  }
  return true;
}

QString MASShortcutView::toolTipAt(const QPoint &position) const {
  if (m_recording || !m_shortcutValue) return {};
  if (hintRect().contains(position)) return QCoreApplication::translate("MASShortcut", "Delete shortcut");
  return QCoreApplication::translate("MASShortcut", "Click to record new shortcut");
}

void MASShortcutView::resetToolTips() {
  if (QToolTip::isVisible() && underMouse()) QToolTip::hideText();
}

void MASShortcutView::setHinting(bool hinting) {
  if (m_hinting == hinting) return;
  m_hinting = hinting;
  update();
}

void MASShortcutView::announce(const QString &text) {
  m_announcement = text;
  MASShortcutViewAccessible::announce(*this);
}

}  // namespace velmora
