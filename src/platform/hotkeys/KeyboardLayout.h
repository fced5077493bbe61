// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>
#include <QString>
#include <cstdint>
#include <memory>
#include <vector>

#include "platform/hotkeys/KeyCodes.h"

namespace velmora {

/// The user's keyboard layout as the X server has it just now; without an X server that of a US keyboard.
/// Main thread.
class KeyboardLayout : public QObject {
  Q_OBJECT

 public:
  /// That of the running application, there as long as the application object is.
  static KeyboardLayout &shared();

  KeyboardLayout();
  ~KeyboardLayout() override;

  /// What the key writes without modifiers, as a capital letter where it is one; its glyph if it has one.
  [[nodiscard]] QString text(const Key &key) const;

  /// The X11 key codes that `key` has; several keys may have one keysym.
  [[nodiscard]] std::vector<std::uint8_t> positions(const Key &key) const;
  /// The key that writes `keysym`, by the layout and else by the US one; null for none.
  [[nodiscard]] const Key *keyWriting(std::uint32_t keysym) const;

  /// Every combination of the modifiers of Caps Lock, Num Lock and Scroll Lock, as masks of the core
  /// protocol.
  [[nodiscard]] std::vector<std::uint16_t> lockMasks() const;

 Q_SIGNALS:
  /// Another layout, another group of it or another keyboard.
  void changed();

 private:
  class Server;
  std::unique_ptr<Server> m_server;  // null without an X server
};

}  // namespace velmora
