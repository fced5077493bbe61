// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Numbers, days and times as people say them: the rules that the phrases of several skills use, and what the
// words of their slots mean.
#pragma once

#include <QDate>
#include <QTime>
#include <optional>
#include <string_view>
#include <vector>

#include "assistant/dialogue/Grammar.h"

namespace velmora {

/// The rules that every grammar has:
/// - `<decimal>`, a slot: 0 to a million, with a sign and a fraction; `<quantity>`, the same for a measure
/// - `<word>`, a slot: a word that can be spelled
/// - `<day>`, a slot: a date, a weekday, a holiday, "tomorrow"…
/// - `<clock>`, a slot: a time of the day
/// - `<ask>`: "tell me", "do you know"…
/// - `<what_is>`: "what is", "what's"
[[nodiscard]] std::vector<Rule> vocabulary();

/// The day that `words` of `<day>` name, seen from `today`: the next one of its kind where they leave that
/// open, today included; a year that is not said is this one where `nearest`. Nothing for other words.
enum class Which { next, nearest };
[[nodiscard]] std::optional<QDate> dayFromWords(std::string_view words, QDate today, Which which);

/// The time that `words` of `<clock>` name; where they leave it open, whether morning or afternoon is that
/// which comes first after `now`.
[[nodiscard]] std::optional<QTime> clockFromWords(std::string_view words, QTime now);

/// "Sunday, 3 May 2026".
[[nodiscard]] std::string dateText(QDate date);

/// "5:07 PM".
[[nodiscard]] std::string timeText(QTime time);

}  // namespace velmora
