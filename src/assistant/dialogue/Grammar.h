// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The sentences that are understood at one point of a conversation, for the recogniser to listen for and for
// the dialogue to take apart: one source for both, so that whatever is heard has a meaning.
//
//   Grammar grammar(rules);
//   const int intent = grammar.add("what time is it in <city>");
//   auto match = grammar.match("what time is it in new york");   // match->slot("city") == "new york"
#pragma once

#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "assistant/dialogue/Phrase.h"

namespace velmora {

/// A part of phrases with a name.
struct Rule {
  std::string name;
  std::string phrase;
  bool isSlot = false;  ///< whoever answers wants to know which words it was
};

/// A sentence taken apart.
struct Match {
  struct Slot {
    std::string rule;
    std::string words;
    bool operator==(const Slot &) const = default;
  };

  int intent = 0;
  std::vector<Slot> slots = {};  ///< in the order in which they were said
  /// There are sentences that begin with this one and mean something else.
  bool mayContinue = false;

  /// The words of the `index`-th slot of `rule`; empty when there are not so many.
  [[nodiscard]] std::string slot(std::string_view rule, std::size_t index = 0) const;
  [[nodiscard]] std::vector<std::string> slotsOf(std::string_view rule) const;
};

/// A finite automaton over words. Immutable once the intents are added, then any thread.
class Grammar {
 public:
  /// A step from state `from` to state `to`.
  struct Arc {
    int from = 0;
    int to = 0;
    int word = kNoWord;        ///< index into `words()`
    double probability = 1.0;  ///< of this step among those from where its alternatives part
    int intent = kNone;        ///< that begins here
    int opens = kNone;         ///< slot that begins here: index of its rule
    int closes = kNone;        ///< slot that ends here: index of its rule
  };
  /// The word that stands for any words at all, one or more, at the end of a sentence.
  static constexpr std::string_view kAnything = "...";
  static constexpr int kNoWord = -1;
  static constexpr int kNone = -1;
  static constexpr int kStart = 0;
  static constexpr int kEnd = 1;

  /// A sentence may begin with `opening` and end with `closing`, which are phrases or empty. Throws
  /// `std::invalid_argument` as `Phrase::parse` does.
  explicit Grammar(std::span<const Rule> rules, std::string_view opening = {}, std::string_view closing = {});

  /// Adds the sentences of `phrase` and returns the number of their intent, counted from 0. What fits several
  /// intents belongs to the first. Throws `std::invalid_argument` too for
  /// a rule that is missing or a part of itself.
  int add(std::string_view phrase);

  /// Takes a sentence of lower-case words with single blanks apart; nothing when it is not one of the
  /// grammar.
  [[nodiscard]] std::optional<Match> match(std::string_view sentence) const;

  [[nodiscard]] std::span<const Arc> arcs() const { return m_arcs; }
  [[nodiscard]] int stateCount() const { return m_states; }
  [[nodiscard]] const std::vector<std::string> &words() const { return m_words; }

 private:
  struct Named {
    Rule rule;
    Phrase phrase;
    bool isBeingBuilt = false;
    std::map<int, int> begins = {};  ///< by the state after it, the state before it: built once for each
  };
  struct Thread;

  int newState();
  int wordIndex(const std::string &word);
  void connect(Arc arc);
  void build(const Phrase &phrase, int from, int to, double probability);
  void buildRule(const std::string &name, int from, int to, double probability);
  [[nodiscard]] bool leadsToSlot(int state) const;
  void follow(std::vector<Thread> &threads, std::vector<bool> &reached, Thread thread, std::size_t at) const;

  std::vector<Named> m_rules;
  int m_intentStart = kStart;  // where every intent's own words begin
  int m_intentEnd = kEnd;
  int m_firstOfIntents = kEnd + 1;  // states from here on are the intents' own
  int m_intents = 0;
  int m_states = 2;
  std::vector<Arc> m_arcs;
  std::vector<std::vector<int>> m_leaving;  // of each state, the arcs in the order of their making
  std::vector<std::string> m_words;
};

}  // namespace velmora
