// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Spelling words, and saying them after the user.
#include "assistant/skills/Tables.h"

namespace velmora {
namespace {

Answer spell(const Request &request) {
  const std::string word = request.slot("word");
  std::string text = word + ": ";
  text[0] = static_cast<char>(text[0] - 'a' + 'A');
  for (const char c : word) {
    text += static_cast<char>(c - 'a' + 'A');
    text += ", ";
  }
  text.replace(text.size() - 2, 2, ".");
  return {text};
}

Answer repeat(const Request &request) {
  std::string text;
  for (const std::string &word : request.words.slotsOf("word")) (text += text.empty() ? "" : " ") += word;
  text[0] = static_cast<char>(text[0] - 'a' + 'A');
  return {text + '.'};
}

}  // namespace

SkillTable wordSkills() {
  return {
      .skills =
          {
              {"spelling",
               "(spell | how (do you | do i | to) spell | how is | what is the spelling of) [the word] "
               "<word> [spelled]",
               spell,
               {"how do you spell necessary", "spell rhythm"}},
              {"repeating",
               "(repeat after me | say after me | say the (word | words)) <word>+",
               repeat,
               {"repeat after me hello world"}},
          },
  };
}

}  // namespace velmora
