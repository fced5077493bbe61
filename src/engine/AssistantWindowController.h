// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "engine/AssistantScreen.h"

namespace velmora {

class AssisView;
class WebView;

/// The assistant screen in a window of its own. Main thread.
class AssistantWindowController final : public AssistantScreen {
  Q_OBJECT

 public:
  AssistantWindowController(AssistantHost &host, UserDefaults &defaults);
  ~AssistantWindowController() override { endConversation(); }

  /// Opens the window, or brings it to the front. The first time it is put below or above `anchor`, a
  /// rectangle of the desktop such as the status item's; where the desktop likes without one.
  void showWindow(const QRect &anchor = {});

  /// What the gear opens; null until the window is first shown.
  [[nodiscard]] QMenu *settingMenu() const { return gearMenu(); }

 protected:
  void loadPages() override;
  void setPagesHidden(bool hidden) override;
  void unloadPages() override;
  void listeningStarted() override;
  void closeScreen() override { close(); }

 private:
  void placeAt(const QRect &anchor);

  AssisView *m_assisView = nullptr;  // behind the plot and the buttons
  WebView *m_myWebview2 = nullptr;
};

}  // namespace velmora
