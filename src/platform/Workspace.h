// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// What the desktop opens for the program.
//
//   openUrl(QUrl("https://velmora.example/help"));
#pragma once

#include <functional>

class QUrl;

namespace velmora {

/// Opens a web page (http, https) or a letter (mailto) in the user's own program for it. False, after one
/// line in the log, for every other address and where the desktop opens nothing. Main thread.
bool openUrl(const QUrl &url);

/// Has `opener` take the addresses in the place of the desktop; an empty one brings the desktop back. For
/// tests. Main thread.
void setUrlOpener(std::function<bool(const QUrl &)> opener);

}  // namespace velmora
