// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// How settings are written to a file: JSON, in which dates, data and the types of numbers survive.
#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>
#include <optional>

namespace velmora {

/// The text of a settings file. Values of other types than the store's are left out.
[[nodiscard]] QByteArray encodeDefaults(const QVariantMap &values);

/// The values of a settings file; nothing when it is damaged. An empty file holds no values.
[[nodiscard]] std::optional<QVariantMap> decodeDefaults(const QByteArray &text);

/// Puts the damaged contents of `file` beside it under a name of its own and logs one line that says where.
void setAsideDamaged(const QString &file, const QByteArray &contents);

}  // namespace velmora
