// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>
#include <functional>

#include "foundation/UserDefaults.h"

namespace velmora {

class MASShortcutView;

/// The two shortcuts that open the assistant, Command-F2 and one that the user records, each of which the
/// settings switch on and off. Both end in the notification "ShortCutPress". There may be several of these: a
/// press is told once. Main thread.
class AAShortCut {
 public:
  static constexpr char16_t kShortCutPress[] = u"ShortCutPress";

  /// The view records the user's shortcut from now on, and outlives this.
  explicit AAShortCut(MASShortcutView &view);
  AAShortCut(const AAShortCut &) = delete;
  AAShortCut &operator=(const AAShortCut &) = delete;

  /// Kept, and called by nothing.
  [[nodiscard]] const std::function<void()> &onShortcutPress() const { return m_onShortcutPress; }
  void setOnShortcutPress(std::function<void()> press) { m_onShortcutPress = std::move(press); }

  static void setCustomShortcutEnabled(bool enabled);
  static void setHardcodedShortcutEnabled(bool enabled);

  /// Posts "ShortCutPress" with the dictionary {"hello": "hello"}.
  static void playShortcutFeedback();

 private:
  void observeValue(const QString &keyPath, bool value);

  std::function<void()> m_onShortcutPress;
  UserDefaults::Observation m_viewEnabled;
  UserDefaults::Observation m_customEnabled;
  UserDefaults::Observation m_hardcodedEnabled;
};

}  // namespace velmora
