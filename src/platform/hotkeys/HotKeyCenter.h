// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Combinations of keys that reach the program whichever window has the focus.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace velmora {

/// Where hot keys are registered. Keys are virtual key codes, modifiers the bits of `hot_key_modifier`. Main
/// thread.
class HotKeyCenter {
 public:
  using Pressed = std::function<void(std::uint32_t id)>;

  virtual ~HotKeyCenter() = default;
  HotKeyCenter(const HotKeyCenter &) = delete;
  HotKeyCenter &operator=(const HotKeyCenter &) = delete;

  /// That of the desktop the application runs on, there as long as the application object is, which releases
  /// all hot keys: the X server's, on Wayland the portal's, else one whose every registration is refused.
  static HotKeyCenter &shared();

  /// Registers a combination under an `id` of the caller's that is not in use. The reason when that fails,
  /// such as another program that holds it. Where the desktop answers later, a refusal is a line in the log.
  [[nodiscard]] virtual std::optional<std::string> registerHotKey(std::uint32_t id, std::uint32_t keyCode,
                                                                  std::uint32_t modifiers) = 0;
  /// Nothing when it is not registered.
  virtual void unregisterHotKey(std::uint32_t id) = 0;
  virtual void unregisterAll() = 0;

  /// Whether another program holds the combination, as far as can be told without waiting for anyone but the
  /// window system.
  [[nodiscard]] virtual bool isHeldByAnother(std::uint32_t keyCode, std::uint32_t modifiers) = 0;

  /// Who is told of each press, once however long it lasts.
  void setPressed(Pressed pressed) { m_pressed = std::move(pressed); }

 protected:
  HotKeyCenter() = default;
  void press(std::uint32_t id) const {
    if (const Pressed pressed = m_pressed) pressed(id);
  }

 private:
  Pressed m_pressed;
};

}  // namespace velmora
