// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>
#include <map>
#include <memory>
#include <vector>

#include "foundation/MainQueue.h"
#include "platform/hotkeys/HotKeyCenter.h"
#include "platform/hotkeys/KeyCodes.h"

namespace velmora {

/// Passive grabs on the root window, over a connection of their own, so that they come and go without a word
/// of the toolkit's. They are made anew when the layout of the keyboard changes.
class XcbHotKeyCenter final : public QObject, public HotKeyCenter {
 public:
  XcbHotKeyCenter();
  ~XcbHotKeyCenter() override;

  [[nodiscard]] std::optional<std::string> registerHotKey(std::uint32_t id, std::uint32_t keyCode,
                                                          std::uint32_t modifiers) override;
  void unregisterHotKey(std::uint32_t id) override;
  void unregisterAll() override;
  [[nodiscard]] bool isHeldByAnother(std::uint32_t keyCode, std::uint32_t modifiers) override;

 private:
  struct Grab {
    const Key *key;
    std::uint32_t modifiers;
    std::vector<std::uint8_t> positions = {};
  };
  class Server;

  [[nodiscard]] bool take(Grab &grab);
  void release(Grab &grab);
  void takeAnew();
  void pressed(std::uint8_t position, std::uint16_t state);

  std::unique_ptr<Server> m_server;
  std::map<std::uint32_t, Grab> m_grabs;
  std::vector<std::uint16_t> m_locks;
  Alive m_alive;
};

}  // namespace velmora
