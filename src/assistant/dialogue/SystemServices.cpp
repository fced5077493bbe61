// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/dialogue/SystemServices.h"

#include <chrono>
#include <ctime>
#include <random>

#include "foundation/Log.h"

namespace velmora {
namespace {

StateSeal::Key keyFor(const std::optional<std::filesystem::path> &folder) {
  try {
    if (folder) return StateSeal::keyIn(*folder / "conversation.key");
  } catch (const std::runtime_error &error) {
    log("Conversation key error: ", error.what());
  }
  return StateSeal::randomKey();
}

int systemRandom(int low, int high) {
  std::random_device device;
  return std::uniform_int_distribution(low, high)(device);
}

/// How long the machine has been running, its sleep included.
std::chrono::seconds uptime() {
  timespec time{};
  ::clock_gettime(CLOCK_BOOTTIME, &time);
  return std::chrono::seconds(time.tv_sec);
}

}  // namespace

SystemServices::SystemServices(const std::optional<std::filesystem::path> &folder)
    : m_shoppingList(folder ? *folder / "shopping-list.txt" : std::filesystem::path()),
      m_seal(keyFor(folder)) {}

Services SystemServices::services() {
  const auto started = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now()) - uptime();
  return {.clock = [] { return QDateTime::currentDateTime(); },
          .random = systemRandom,
          .shoppingList = m_shoppingList,
          .steadyClock = [started] { return started + uptime(); }};
}

}  // namespace velmora
