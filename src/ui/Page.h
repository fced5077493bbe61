// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>
#include <QUrl>

namespace velmora {

/// The address of a page that Velmora brings along, for a web view: "Help", and "basic9" and "basic10" for
/// while it listens. In the language of the interface where there is one ("Help_de.html"), else in English;
/// invalid when there is no page of that name. Main thread.
[[nodiscard]] QUrl pageNamed(const QString &name);

}  // namespace velmora
