// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// What the assistant answers.
//
//   Dialogue dialogue;
//   Reply reply = dialogue.answer("let's play a guessing game", "");
//   reply = dialogue.answer("fifty", reply.state);
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <string_view>

namespace velmora {

/// One answer.
struct Reply {
  std::string skill;   ///< the name of the skill that answered, "unknown" when the request was not understood
  std::string text;    ///< to be shown
  std::string speech;  ///< the same to be spoken: numbers, times and dates in words
  bool followOn = false;  ///< the answer asks something back: listen again
  std::string state;      ///< to be given with the next request; at most `Dialogue::kLargestState` bytes
};

/// Finds the skill that a request belongs to and lets it answer. Keeps nothing between requests: what a
/// conversation remembers travels in its state, which comes back from outside and is therefore never trusted.
/// Stateless, so any number of threads may ask one object, if its clock and its random source allow it.
class Dialogue {
 public:
  /// The time on the user's clock.
  using Clock = std::function<std::chrono::local_seconds()>;
  /// A number from `low` to `high`, both included.
  using RandomSource = std::function<int(int low, int high)>;

  static constexpr std::size_t kLargestState = 1024;

  /// With the system's clock in the user's time zone and the system's random numbers; both thread-safe.
  Dialogue();
  Dialogue(Clock clock, RandomSource random);

  /// The answer to recognised `words` (any case, any punctuation) in the conversation of `state`; an empty
  /// state starts one, and so does one that is damaged. Never throws for what the arguments contain.
  [[nodiscard]] Reply answer(std::string_view words, std::string_view state) const;
  /// The answer to speech that was not recognised with confidence.
  [[nodiscard]] Reply answerToUnclearSpeech(std::string_view state) const;
  /// The answer when nobody spoke.
  [[nodiscard]] Reply answerToSilence(std::string_view state) const;

 private:
  Clock m_clock;
  RandomSource m_random;
};

}  // namespace velmora
