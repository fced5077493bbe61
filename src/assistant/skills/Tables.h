// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The tables of skills, one for each file of this folder.
#pragma once

#include "assistant/dialogue/Skill.h"

namespace velmora {

[[nodiscard]] SkillTable timeSkills();
[[nodiscard]] SkillTable dateSkills();
[[nodiscard]] SkillTable arithmeticSkills();
[[nodiscard]] SkillTable conversionSkills();
[[nodiscard]] SkillTable chanceSkills();
[[nodiscard]] SkillTable wordSkills();
[[nodiscard]] SkillTable amusementSkills();
[[nodiscard]] SkillTable guessingGame();
[[nodiscard]] SkillTable quiz();
[[nodiscard]] SkillTable shoppingSkills();
[[nodiscard]] SkillTable volumeSkills();
[[nodiscard]] SkillTable smallTalk();

}  // namespace velmora
