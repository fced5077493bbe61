// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/dialogue/Grammar.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace velmora {
namespace {

/// How likely a speaker is to say what may be left out, or to say one more of what may be repeated.
constexpr double kOption = 0.5;

struct SlotRange {
  int rule;
  std::size_t begin;
  std::size_t end;
};

std::vector<std::string> split(std::string_view sentence) {
  std::istringstream stream{std::string(sentence)};
  std::vector<std::string> words;
  for (std::string word; stream >> word;) words.push_back(word);
  return words;
}

}  // namespace

std::string Match::slot(std::string_view rule, std::size_t index) const {
  for (const Slot &slot : slots) {
    if (slot.rule == rule && index-- == 0) return slot.words;
  }
  return {};
}

std::vector<std::string> Match::slotsOf(std::string_view rule) const {
  std::vector<std::string> found;
  for (const Slot &slot : slots) {
    if (slot.rule == rule) found.push_back(slot.words);
  }
  return found;
}

/// One way through the automaton. There are few at a time, and sentences are short.
struct Grammar::Thread {
  int state = kStart;
  int intent = kNone;
  std::vector<SlotRange> slots = {};
};

Grammar::Grammar(std::span<const Rule> rules, std::string_view opening, std::string_view closing)
    : m_leaving(2) {
  for (const Rule &rule : rules) m_rules.push_back({rule, Phrase::parse(rule.phrase), false});
  if (!opening.empty()) {
    m_intentStart = newState();
    build(Phrase{.kind = Phrase::Kind::optional, .children = {Phrase::parse(opening)}}, kStart, m_intentStart,
          1.0);
  }
  if (!closing.empty()) {
    m_intentEnd = newState();
    build(Phrase{.kind = Phrase::Kind::optional, .children = {Phrase::parse(closing)}}, m_intentEnd, kEnd,
          1.0);
  }
  m_firstOfIntents = m_states;
}

int Grammar::add(std::string_view phrase) {
  const int begin = newState();
  connect({.from = m_intentStart, .to = begin, .intent = m_intents});
  build(Phrase::parse(phrase), begin, m_intentEnd, 1.0);
  return m_intents++;
}

int Grammar::newState() {
  m_leaving.emplace_back();
  return m_states++;
}

int Grammar::wordIndex(const std::string &word) {
  const auto found = std::find(m_words.begin(), m_words.end(), word);
  if (found != m_words.end()) return static_cast<int>(found - m_words.begin());
  m_words.push_back(word);
  return static_cast<int>(m_words.size()) - 1;
}

void Grammar::connect(Arc arc) {
  m_leaving[static_cast<std::size_t>(arc.from)].push_back(static_cast<int>(m_arcs.size()));
  m_arcs.push_back(arc);
}

void Grammar::build(const Phrase &phrase, int from, int to, double probability) {
  switch (phrase.kind) {
    case Phrase::Kind::word:
      return connect({.from = from, .to = to, .word = wordIndex(phrase.text), .probability = probability});
    case Phrase::Kind::rule: return buildRule(phrase.text, from, to, probability);
    case Phrase::Kind::sequence: {
      int here = from;
      for (std::size_t i = 0; i < phrase.children.size(); ++i) {
        const int next = i + 1 == phrase.children.size() ? to : newState();
        build(phrase.children[i], here, next, i == 0 ? probability : 1.0);
        here = next;
      }
      return;
    }
    case Phrase::Kind::alternatives:
      for (const Phrase &child : phrase.children)
        build(child, from, to, probability / static_cast<double>(phrase.children.size()));
      return;
    case Phrase::Kind::optional:
      build(phrase.children.front(), from, to, probability * kOption);
      return connect({.from = from, .to = to, .probability = probability * (1 - kOption)});
    case Phrase::Kind::anyNumber:
    case Phrase::Kind::atLeastOnce: {
      const int again = newState();
      const int done = newState();
      const bool atLeastOnce = phrase.kind == Phrase::Kind::atLeastOnce;
      connect({.from = from, .to = again, .probability = probability * (atLeastOnce ? 1.0 : kOption)});
      build(phrase.children.front(), again, done, 1.0);
      connect({.from = done, .to = again, .probability = kOption});
      connect({.from = done, .to = to, .probability = 1 - kOption});
      if (!atLeastOnce) connect({.from = from, .to = to, .probability = probability * (1 - kOption)});
      return;
    }
  }
}

void Grammar::buildRule(const std::string &name, int from, int to, double probability) {
  const auto found = std::find_if(m_rules.begin(), m_rules.end(),
                                  [&](const Named &named) { return named.rule.name == name; });
  if (found == m_rules.end()) throw std::invalid_argument("there is no rule <" + name + '>');
  if (std::exchange(found->isBeingBuilt, true))
    throw std::invalid_argument("the rule <" + name + "> is a part of itself");
  // What goes on in the same way is one automaton, however many phrases lead to it: the recogniser pays for
  // each word of each.
  const auto [known, isNew] = found->begins.try_emplace(to, m_states);
  const int begin = isNew ? newState() : known->second;
  const int rule = static_cast<int>(found - m_rules.begin());
  if (isNew && found->rule.isSlot) {
    const int end = newState();
    build(found->phrase, begin, end, 1.0);
    connect({.from = end, .to = to, .closes = rule});
  } else if (isNew) {
    build(found->phrase, begin, to, 1.0);
  }
  connect(
      {.from = from, .to = begin, .probability = probability, .opens = found->rule.isSlot ? rule : kNone});
  found->isBeingBuilt = false;
}

/// Adds `thread`, which is between the words before `at` and those from there on, and whatever it reaches
/// without a word; a state that an earlier thread has reached is that one's.
void Grammar::follow(std::vector<Thread> &threads, std::vector<bool> &reached, Thread thread,
                     std::size_t at) const {
  const auto state = static_cast<std::size_t>(thread.state);
  if (reached[state]) return;
  reached[state] = true;
  for (const int index : m_leaving[state]) {
    const Arc &arc = m_arcs[static_cast<std::size_t>(index)];
    if (arc.word != kNoWord) continue;
    Thread next = thread;
    next.state = arc.to;
    if (arc.intent != kNone) next.intent = arc.intent;
    if (arc.opens != kNone) next.slots.push_back({arc.opens, at, at});
    if (arc.closes != kNone) {
      // Slots may lie inside slots: it is the last one of the rule that is still open.
      const auto open = std::find_if(next.slots.rbegin(), next.slots.rend(), [&](const SlotRange &slot) {
        return slot.rule == arc.closes && slot.end == slot.begin;
      });
      open->end = at;
    }
    follow(threads, reached, std::move(next), at);
  }
  threads.push_back(std::move(thread));
}

bool Grammar::leadsToSlot(int state) const {
  std::vector<int> open{state};
  std::vector<bool> reached(static_cast<std::size_t>(m_states));
  while (!open.empty()) {
    const auto here = static_cast<std::size_t>(open.back());
    open.pop_back();
    if (reached[here]) continue;
    reached[here] = true;
    for (const int index : m_leaving[here]) {
      const Arc &arc = m_arcs[static_cast<std::size_t>(index)];
      if (arc.opens != kNone || arc.closes != kNone) return true;
      open.push_back(arc.to);
    }
  }
  return false;
}

std::optional<Match> Grammar::match(std::string_view sentence) const {
  const std::vector<std::string> words = split(sentence);
  std::vector<Thread> threads;
  std::vector<bool> reached(static_cast<std::size_t>(m_states));
  follow(threads, reached, Thread{}, 0);
  for (std::size_t at = 0; at < words.size(); ++at) {
    const auto known = std::find(m_words.begin(), m_words.end(), words[at]);
    if (known == m_words.end()) return std::nullopt;
    const int word = static_cast<int>(known - m_words.begin());
    std::vector<Thread> next;
    reached.assign(reached.size(), false);
    for (Thread &thread : threads) {
      for (const int index : m_leaving[static_cast<std::size_t>(thread.state)]) {
        const Arc &arc = m_arcs[static_cast<std::size_t>(index)];
        if (arc.word != word) continue;
        Thread moved = thread;
        moved.state = arc.to;
        follow(next, reached, std::move(moved), at + 1);
      }
    }
    threads = std::move(next);
  }

  const auto ended =
      std::find_if(threads.begin(), threads.end(), [](const Thread &thread) { return thread.state == kEnd; });
  if (ended == threads.end() || ended->intent == kNone) return std::nullopt;
  // A word that adds nothing, of courtesy or like "now", is not waited for.
  const bool mayContinue = std::any_of(threads.begin(), threads.end(), [&](const Thread &thread) {
    if (thread.state < m_firstOfIntents) return false;
    const auto &leaving = m_leaving[static_cast<std::size_t>(thread.state)];
    const bool goesOn = std::any_of(leaving.begin(), leaving.end(), [this](int index) {
      return m_arcs[static_cast<std::size_t>(index)].word != kNoWord;
    });
    return goesOn && (thread.intent != ended->intent || leadsToSlot(thread.state));
  });
  Match match{.intent = ended->intent, .mayContinue = mayContinue};
  for (const SlotRange &slot : ended->slots) {
    std::string text;
    for (std::size_t i = slot.begin; i < slot.end; ++i) (text += text.empty() ? "" : " ") += words[i];
    match.slots.push_back({m_rules[static_cast<std::size_t>(slot.rule)].rule.name, std::move(text)});
  }
  return match;
}

}  // namespace velmora
