// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/hotkeys/HotKeyCenter.h"

#include <QGuiApplication>

#include "platform/hotkeys/PortalHotKeyCenter.h"
#include "platform/hotkeys/XcbHotKeyCenter.h"

namespace velmora {

namespace {

/// For a desktop that has no hot keys.
class NoHotKeyCenter final : public HotKeyCenter {
 public:
  [[nodiscard]] std::optional<std::string> registerHotKey(std::uint32_t, std::uint32_t,
                                                          std::uint32_t) override {
    return "this desktop has no hot keys";
  }
  void unregisterHotKey(std::uint32_t) override {}
  void unregisterAll() override {}
  [[nodiscard]] bool isHeldByAnother(std::uint32_t, std::uint32_t) override { return false; }
};

std::unique_ptr<HotKeyCenter> centerOfDesktop() {
  if (!QGuiApplication::instance()) return std::make_unique<NoHotKeyCenter>();
  const QString platform = QGuiApplication::platformName();
  if (platform == QLatin1String("xcb")) return std::make_unique<XcbHotKeyCenter>();
  if (platform.startsWith(QLatin1String("wayland"))) {
    return std::make_unique<PortalHotKeyCenter>(QDBusConnection::sessionBus());
  }
  return std::make_unique<NoHotKeyCenter>();
}

}  // namespace

HotKeyCenter &HotKeyCenter::shared() {
  static std::unique_ptr<HotKeyCenter> center;
  if (!center) {
    center = centerOfDesktop();
    if (QGuiApplication::instance()) qAddPostRoutine([] { center.reset(); });
  }
  return *center;
}

}  // namespace velmora
