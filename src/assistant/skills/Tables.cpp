// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/skills/Tables.h"

namespace velmora {

std::span<const SkillTable> skillTables() {
  static const std::vector<SkillTable> tables{
      timeSkills(),   dateSkills(), arithmeticSkills(), conversionSkills(), chanceSkills(),    wordSkills(),
      guessingGame(), quiz(),       shoppingSkills(),   volumeSkills(),     amusementSkills(), smallTalk(),
  };
  return tables;
}

}  // namespace velmora
