// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Words of a speaker and states of a conversation, through several answers.
#include <QTimeZone>

#include "assistant/dialogue/Dialogue.h"
#include "assistant/skills/ShoppingList.h"
#include "assistant/speech/SpokenText.h"
#include "fuzz/Input.h"
#include "fuzz/Setup.h"

namespace velmora {
namespace {

const StateSeal::Key kKey{1, 2, 3};

void check(const Reply &reply, const Dialogue &dialogue) {
  fuzz::require(!reply.text.empty() && !reply.speech.empty(), "there is always an answer");
  fuzz::require(reply.state.size() <= StateSeal::kLargest, "a state does not grow");
  fuzz::require(!reply.volume || (*reply.volume >= 0 && *reply.volume <= 100), "a volume is in percent");
  if (reply.followOn) {
    fuzz::require(!dialogue.pendingQuestion(reply.state).empty(), "who asks back knows what was asked");
  }
  std::size_t words = 0;
  for (const std::string &sentence : sentencesOf(reply.speech)) words += sentence.size();
  fuzz::require(words > 0 && words <= reply.speech.size(), "sentences are the text in pieces");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  fuzz::Input input(data, size);
  ShoppingList list;
  int random = input.byte();
  const QDateTime now(QDate(2026, 2, 28).addDays(input.byte()), QTime(23, 59, 58), QTimeZone::utc());
  const Services services{.clock = [&] { return now; },
                          .random = [&](int low, int high) { return low + random++ % (high - low + 1); },
                          .shoppingList = list};
  const StateSeal seal(kKey);
  const Dialogue dialogue(services, seal);
  const auto time = std::chrono::floor<std::chrono::seconds>(
      std::chrono::sys_time<std::chrono::milliseconds>(std::chrono::milliseconds(now.toMSecsSinceEpoch())));
  std::string state;
  while (!input.isEmpty()) {
    const int kind = input.byte();
    // As it was left, bytes of a stranger, or what another version of ours may have sealed.
    if (kind % 8 == 6) state = input.piece();
    if (kind % 8 == 7) {
      try {
        state = seal.seal(input.piece(), time);
      } catch (const std::length_error &) {
      }
    }
    const Dialogue::Context context{.state = state, .volume = kind};
    Reply reply;
    if (kind % 8 == 0) {
      reply = dialogue.answerToSilence(context);
    } else if (kind % 8 == 1) {
      reply = dialogue.answerToUnclearSpeech(context);
    } else {
      const std::string words = input.piece();
      (void)spokenForm(words);
      (void)Language::instance().completeness(words, dialogue.pendingQuestion(state));
      reply = dialogue.answer(words, context);
    }
    check(reply, dialogue);
    state = reply.state;
  }
  return 0;
}

}  // namespace velmora
