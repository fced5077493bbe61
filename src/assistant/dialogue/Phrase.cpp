// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/dialogue/Phrase.h"

#include <stdexcept>
#include <utility>

namespace velmora {
namespace {

bool isWordCharacter(char c) { return (c >= 'a' && c <= 'z') || c == '\'' || c == '.' || c == '_'; }

class Parser {
 public:
  explicit Parser(std::string_view text) : m_rest(text) {}

  Phrase all() {
    Phrase phrase = alternatives();
    if (!m_rest.empty()) fail();
    return phrase;
  }

 private:
  [[noreturn]] void fail() const {
    throw std::invalid_argument("not a phrase from here on: \"" + std::string(m_rest) + '"');
  }

  char next() {
    m_rest.remove_prefix(std::min(m_rest.find_first_not_of(" \n\t"), m_rest.size()));
    return m_rest.empty() ? '\0' : m_rest.front();
  }

  bool take(char c) {
    if (next() != c) return false;
    m_rest.remove_prefix(1);
    return true;
  }

  std::string name() {
    std::size_t length = 0;
    while (length < m_rest.size() && isWordCharacter(m_rest[length])) ++length;
    if (length == 0) fail();
    std::string text(m_rest.substr(0, length));
    m_rest.remove_prefix(length);
    return text;
  }

  Phrase alternatives() {
    std::vector<Phrase> all;
    do {
      all.push_back(sequence());
    } while (take('|'));
    if (all.size() == 1) return std::move(all.front());
    return {.kind = Phrase::Kind::alternatives, .children = std::move(all)};
  }

  Phrase sequence() {
    Phrase phrase{.kind = Phrase::Kind::sequence};
    for (char c = next(); c != '\0' && c != '|' && c != ')' && c != ']'; c = next())
      phrase.children.push_back(repeated(item()));
    if (phrase.children.empty()) fail();
    return phrase;
  }

  Phrase item() {
    if (take('(')) {
      Phrase inner = alternatives();
      if (!take(')')) fail();
      return inner;
    }
    if (take('[')) {
      Phrase inner = alternatives();
      if (!take(']')) fail();
      return around(Phrase::Kind::optional, std::move(inner));
    }
    if (take('<')) {
      Phrase rule{.kind = Phrase::Kind::rule, .text = name()};
      if (!take('>')) fail();
      return rule;
    }
    return {.kind = Phrase::Kind::word, .text = name()};
  }

  Phrase repeated(Phrase phrase) {
    if (take('*')) return around(Phrase::Kind::anyNumber, std::move(phrase));
    if (take('+')) return around(Phrase::Kind::atLeastOnce, std::move(phrase));
    return phrase;
  }

  static Phrase around(Phrase::Kind kind, Phrase inner) {
    Phrase outer{.kind = kind};
    outer.children.push_back(std::move(inner));
    return outer;
  }

  std::string_view m_rest;
};

}  // namespace

Phrase Phrase::parse(std::string_view text) { return Parser(text).all(); }

}  // namespace velmora
