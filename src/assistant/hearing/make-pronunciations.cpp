// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// A tool of the build: writes the pronunciations of the words of the skills, and of common ones, as a source
// file.
//   make-pronunciations OUTPUT DICTIONARY…
// A word that several dictionaries have is taken from the first.
#include <fstream>
#include <iostream>
#include <set>

#include "assistant/dialogue/Language.h"
#include "assistant/hearing/CommonWords.h"

int main(int argc, char *argv[]) {
  if (argc < 3) return 2;
  std::set<std::string> missing;
  const auto &language = velmora::Language::instance();
  missing.insert(language.commands().words().begin(), language.commands().words().end());
  for (const auto &answers : language.answers())
    missing.insert(answers.grammar.words().begin(), answers.grammar.words().end());
  for (const auto *common : {&velmora::frequentWords(), &velmora::otherCommonWords()})
    missing.insert(common->begin(), common->end());
  missing.erase(std::string(velmora::Grammar::kAnything));

  std::ofstream out(argv[1]);
  out << "// Made by make-pronunciations.\n#include \"assistant/hearing/Pronunciations.h\"\n\n"
         "namespace velmora {\n\nstd::string_view pronunciations() {\n  return R\"dict(";
  for (int i = 2; i < argc; ++i) {
    std::ifstream lines(argv[i]);
    std::set<std::string> found;
    for (std::string line; std::getline(lines, line);) {
      const std::string entry = line.substr(0, line.find(' '));
      const std::string word = entry.substr(0, entry.find('(', 1));
      if (!missing.contains(word)) continue;
      found.insert(word);
      out << line << '\n';
    }
    for (const std::string &word : found) missing.erase(word);
  }
  out << ")dict\";\n}\n\n}  // namespace velmora\n";
  for (const std::string &word : missing) {
    std::cerr << "the word \"" << word
              << "\" has no pronunciation: add it to resources/assistant/pronunciations.dict\n";
  }
  return missing.empty() && out.flush() ? 0 : 1;
}
