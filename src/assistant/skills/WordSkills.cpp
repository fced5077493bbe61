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
  for (const std::string &word : request.words.slotsOf("said")) (text += text.empty() ? "" : " ") += word;
  text[0] = static_cast<char>(text[0] - 'a' + 'A');
  return {text + '.'};
}

}  // namespace

SkillTable wordSkills() {
  return {
      .skills =
          {
              {"spelling",
               "(spell [out] | how (do you | do i | to | would you | can i | does one | should i | do "
               "we) (spell | write) | <what_is> the [correct | right] spelling (of | for) | (tell me | "
               "show me | do you know) how (to | you | do you) (spell | write)) [the word] <word> [for "
               "me] | how is [the word] <word> (spelled | written)",
               spell,
               {"how do you spell necessary", "spell rhythm"}},
              {"repeating",
               "(repeat after me | say after me | repeat [the] words | say the (word | words) | repeat "
               "this | repeat the word) <said>+",
               repeat,
               {"repeat after me hello world"}},
          },
  };
}

}  // namespace velmora
