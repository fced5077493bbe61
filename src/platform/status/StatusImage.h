// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QColor>
#include <QIcon>
#include <QString>
#include <optional>

namespace velmora {

/// The resource ":/icons/<name>.svg" in the sizes that status bars have. With a `color` only its shape
/// counts, and is of that colour. An image of 22 by 22 with nothing in its outer three is drawn on whole
/// pixels, the 16 in its middle at whole multiples. The application's icon, after one line in the log, when
/// there is no such image.
[[nodiscard]] QIcon statusImage(const QString &name, const std::optional<QColor> &color);

}  // namespace velmora
