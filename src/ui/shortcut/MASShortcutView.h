// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>
#include <QVariant>
#include <QWidget>
#include <functional>
#include <memory>
#include <optional>

#include "foundation/UserDefaults.h"
#include "ui/shortcut/MASShortcut.h"
#include "ui/shortcut/MASShortcutValidator.h"
#include "ui/shortcut/ValueTransformer.h"

class QKeyEvent;
class QMouseEvent;
class QPainter;

namespace velmora {

/// How the control looks: as the platform's push buttons, or as the flat ones of its tool bars.
enum class MASShortcutViewStyle { rounded, textured };

/// A button that shows a shortcut, and records a new one when it is clicked. Main thread.
class MASShortcutView : public QWidget {
  Q_OBJECT

 public:
  /// What keeps the value and a setting the same.
  struct Binding {
    UserDefaults *observedObject = nullptr;  ///< outlives the view
    QString keyPath;
    std::shared_ptr<const ValueTransformer> transformer;  ///< null: the value is stored as it is
  };

  explicit MASShortcutView(QWidget *parent = nullptr);
  ~MASShortcutView() override;

  [[nodiscard]] const std::optional<MASShortcut> &shortcutValue() const { return m_shortcutValue; }
  /// Stores the value in the bound setting as well.
  void setShortcutValue(const std::optional<MASShortcut> &value);
  /// Called after each change of the value, also by the setting.
  void setShortcutValueChange(std::function<void(MASShortcutView &)> change);

  /// The shared validator at first; never null, and outlives the view.
  [[nodiscard]] MASShortcutValidator &shortcutValidator() const { return *m_shortcutValidator; }
  void setShortcutValidator(MASShortcutValidator &validator) { m_shortcutValidator = &validator; }

  [[nodiscard]] bool isRecording() const { return m_recording; }
  /// One view records at a time: another one that does stops. A disabled view does not start.
  void setRecording(bool recording);

  /// Whether the pointer is over the hint button.
  [[nodiscard]] bool isHinting() const { return m_hinting; }
  /// What is shown instead of the invitation while recording; empty for none.
  [[nodiscard]] const QString &shortcutPlaceholder() const { return m_shortcutPlaceholder; }
  void setShortcutPlaceholder(const QString &placeholder);

  [[nodiscard]] bool showsDeleteButton() const { return m_showsDeleteButton; }
  void setShowsDeleteButton(bool shows);
  /// Not `style()`, which is the toolkit's.
  [[nodiscard]] MASShortcutViewStyle viewStyle() const { return m_viewStyle; }
  void setViewStyle(MASShortcutViewStyle style);
  [[nodiscard]] bool acceptsFirstResponder() const { return isEnabled(); }

  /// Keeps the value in the user's settings under this key, by the dictionary transformer or another one; an
  /// empty key ends it. What is stored is shown at once.
  [[nodiscard]] const QString &associatedUserDefaultsKey() const { return m_associatedUserDefaultsKey; }
  void setAssociatedUserDefaultsKey(const QString &key);
  void setAssociatedUserDefaultsKey(const QString &key, std::shared_ptr<const ValueTransformer> transformer);
  void setAssociatedUserDefaultsKeyWithTransformerName(const QString &key, const QString &transformerName);
  /// The same with any store; without a binding, nothing is kept.
  void bind(std::optional<Binding> binding);

  /// What is drawn now, beginning on the left: the title, and the glyph of the hint button or nothing.
  [[nodiscard]] QString title() const;
  [[nodiscard]] QString hint() const;
  /// What was last announced to people who do not see the control.
  [[nodiscard]] const QString &announcement() const { return m_announcement; }

  /// The parts of the control. Without a hint the shortcut area is all of it.
  [[nodiscard]] QRect hintRect() const;
  [[nodiscard]] QRect shortcutRect() const;

  [[nodiscard]] QSize sizeHint() const override;
  [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

 protected:
  bool event(QEvent *event) override;
  bool eventFilter(QObject *watched, QEvent *event) override;
  void changeEvent(QEvent *event) override;
  void hideEvent(QHideEvent *event) override;
  void keyPressEvent(QKeyEvent *event) override;
  void leaveEvent(QEvent *event) override;
  void mouseMoveEvent(QMouseEvent *event) override;
  void mousePressEvent(QMouseEvent *event) override;
  void paintEvent(QPaintEvent *event) override;

 private:
  void storeValue(const std::optional<MASShortcut> &value);
  void propagateValue();
  void activateEventMonitoring(bool active);
  [[nodiscard]] bool swallows(const QKeyEvent &event);
  void take(const MASShortcut &shortcut);
  void showTaken(const MASShortcut &shortcut, const QString &explanation);
  void setHinting(bool hinting);
  void resetToolTips();
  [[nodiscard]] QString toolTipAt(const QPoint &position) const;
  void announce(const QString &text);

  std::optional<MASShortcut> m_shortcutValue;
  std::function<void(MASShortcutView &)> m_shortcutValueChange;
  MASShortcutValidator *m_shortcutValidator = &MASShortcutValidator::sharedValidator();
  bool m_recording = false;
  bool m_monitoring = false;
  bool m_hinting = false;
  bool m_propagating = false;
  bool m_showsDeleteButton = true;
  MASShortcutViewStyle m_viewStyle = MASShortcutViewStyle::rounded;
  QString m_shortcutPlaceholder;
  QString m_associatedUserDefaultsKey;
  QString m_announcement;
  std::optional<Binding> m_binding;
  UserDefaults::Observation m_observation;
};

}  // namespace velmora
