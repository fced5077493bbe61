// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The keys of a keyboard under their virtual key codes, which say where a key is and not what is written on
// it.
#pragma once

#include <QChar>
#include <Qt>
#include <cstdint>

class QKeyEvent;

namespace velmora {

/// The bits in which hot keys name their modifiers.
namespace hot_key_modifier {
enum Flag : std::uint32_t {
  kCommand = 0x100,  ///< the Super key
  kShift = 0x200,
  kOption = 0x800,  ///< the Alt key
  kControl = 0x1000,
};
}  // namespace hot_key_modifier

/// What a virtual key code is for a key that has none.
inline constexpr std::uint32_t kUnknownKeyCode = 0xffff;

struct Key {
  enum class Kind {
    character,  ///< shows what the layout writes with it, and is told by its position
    keypad,     ///< the same with a text of its own, whatever Num Lock says
    special,    ///< told by its keysym, so that a remapped Escape is one
    modifier,
  };

  std::uint32_t keyCode;
  Kind kind;
  std::uint32_t keysym;   ///< in the US layout
  std::uint8_t position;  ///< the X11 key code of an evdev keyboard; 0 where there is none
  Qt::Key key;
  const char16_t *glyph;  ///< empty for modifiers, and for characters, which the layout gives
};

/// Null when there is no such key.
[[nodiscard]] const Key *keyWithCode(std::uint32_t keyCode);
[[nodiscard]] const Key *keyWithKeysym(std::uint32_t keysym);
[[nodiscard]] const Key *keyWithQtKey(Qt::Key key);

/// The key of a press: `position` and `keysym` as the window system says, 0 where it does not.
[[nodiscard]] const Key *keyOf(std::uint32_t position, std::uint32_t keysym, Qt::Key key);
[[nodiscard]] const Key *keyOf(const QKeyEvent &event);

}  // namespace velmora
