// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <functional>
#include <optional>

class QKeyEvent;

namespace velmora {

/// The bits of `MASShortcut::modifierFlags()`.
namespace shortcut_modifier {
enum Flag : std::uint32_t {
  kShift = 0x20000,
  kControl = 0x40000,
  kOption = 0x80000,    ///< the Alt key
  kCommand = 0x100000,  ///< the Super key
  kAll = kShift | kControl | kOption | kCommand,
};
}  // namespace shortcut_modifier

/// A key by its virtual key code, and the modifiers held with it. The texts are those of the keyboard's
/// layout at the time; they are asked for on the main thread.
class MASShortcut {
 public:
  [[nodiscard]] static MASShortcut shortcutWithKeyCode(std::uint32_t keyCode, std::uint32_t modifierFlags);
  /// The key of a press or a release, with the modifiers that are held after it.
  [[nodiscard]] static MASShortcut shortcutWithEvent(const QKeyEvent &event);

  MASShortcut(std::uint32_t keyCode, std::uint32_t modifierFlags);

  [[nodiscard]] std::uint32_t keyCode() const { return m_keyCode; }
  [[nodiscard]] std::uint32_t modifierFlags() const { return m_modifierFlags; }

  /// The same as hot keys are registered with.
  [[nodiscard]] std::uint32_t carbonKeyCode() const { return m_keyCode; }
  [[nodiscard]] std::uint32_t carbonFlags() const;

  /// The key as it is shown: a character of the layout, a glyph or a name; empty for a modifier.
  [[nodiscard]] QString keyCodeString() const;
  /// The key as a menu names it: a small letter, or the name of the key in a key sequence.
  [[nodiscard]] QString keyCodeStringForKeyEquivalent() const;
  /// The glyphs of the modifiers, in their fixed order.
  [[nodiscard]] QString modifierFlagsString() const;
  [[nodiscard]] QString description() const;

  /// The archive: data that names its class and holds "KeyCode" and "ModifierFlags".
  [[nodiscard]] QByteArray archivedData() const;
  /// Nothing when `data` is not such an archive.
  [[nodiscard]] static std::optional<MASShortcut> unarchived(const QByteArray &data);

  bool operator==(const MASShortcut &) const = default;

 private:
  std::uint32_t m_keyCode;
  std::uint32_t m_modifierFlags;
};

}  // namespace velmora

template <>
struct std::hash<velmora::MASShortcut> {
  std::size_t operator()(const velmora::MASShortcut &shortcut) const noexcept {
    return std::hash<std::uint64_t>{}(std::uint64_t{shortcut.modifierFlags()} << 32 | shortcut.keyCode());
  }
};
