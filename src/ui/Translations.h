// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>
#include <QStringList>

class QLocale;

namespace velmora {

/// Has the application speak the user's language where there is a catalogue for it, the toolkit's own texts
/// included, and English elsewhere. To be called once, after the application is made and before its first
/// window. True when there was one.
bool installTranslations(const QLocale &locale);

/// The codes of the languages that there are.
[[nodiscard]] QStringList interfaceLanguages();

/// The code of the language that the application speaks: "de", say, and "en" without a catalogue.
[[nodiscard]] QString interfaceLanguage();

}  // namespace velmora
