// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QList>
#include <QSslCertificate>
#include <QString>

namespace velmora {

/// Whether `chain` (the server's certificate first) is valid now for a server of the name or address `host`
/// and goes back to an authority of the PEM file `roots`, of nobody else.
[[nodiscard]] bool isOfOwnAuthority(const QString &roots, const QList<QSslCertificate> &chain,
                                    const QString &host);

}  // namespace velmora
