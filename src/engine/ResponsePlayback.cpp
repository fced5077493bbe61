// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "engine/ResponsePlayback.h"

#include <QFile>
#include <utility>

#include "foundation/Log.h"
#include "foundation/fatal.h"
#include "platform/audio/AudioSource.h"

namespace velmora {
namespace {

/// Null where nothing can sound at all.
std::shared_ptr<AudioPlayer> startPrompt() {
  QFile file(QStringLiteral(":/velmora/begin_prompt.mp3"));
  if (!file.open(QFile::ReadOnly)) fatal("The resource begin_prompt.mp3 is missing");
  try {
    return std::make_shared<AudioPlayer>(file.readAll().toStdString());
  } catch (const NoSound &) {
    return nullptr;
  } catch (const AudioError &error) {
    fatal(std::string("The resource begin_prompt.mp3 cannot be played: ") + error.what());
  }
}

}  // namespace

ResponsePlayback::ResponsePlayback(ResponsePlaybackDelegate &delegate) : m_delegate(delegate) {}

ResponsePlayback::~ResponsePlayback() {
  if (m_player) m_player->setDelegate(nullptr);
}

void ResponsePlayback::playResponse(const std::string &mp3) {
  std::shared_ptr<AudioPlayer> player;
  try {
    player = std::make_shared<AudioPlayer>(mp3);
  } catch (const AudioError &error) {
    log("Audio out error ", "error:", error.what());
    m_delegate.speakerIcon(false);
    return;
  }
  const std::lock_guard start(m_start);
  std::shared_ptr<AudioPlayer> earlier;
  {
    const std::lock_guard lock(m_mutex);
    earlier = std::exchange(m_player, player);
    m_isOver = false;
  }
  // It has said its last word before the new one is announced, so that the display is that of the new one.
  if (earlier) earlier->setDelegate(nullptr);
  earlier.reset();
  player->play();
  m_delegate.speakerIcon(true);
  player->setDelegate(this);
  // An end that came before that would not be reported at all.
  if (!player->isPlaying()) finish();
}

void ResponsePlayback::stopSpeaking() {
  const std::lock_guard start(m_start);
  std::shared_ptr<AudioPlayer> player;
  {
    const std::lock_guard lock(m_mutex);
    player = m_player;
    m_isOver = true;  // an end that is about to be told is none any more
  }
  if (player) player->stop();
  m_delegate.speakerIcon(false);
}

bool ResponsePlayback::isSpeaking() const {
  const std::lock_guard lock(m_mutex);
  return m_player && m_player->isPlaying();
}

void ResponsePlayback::playStartPrompt() {
  std::shared_ptr<AudioPlayer> prompt;
  {
    const std::lock_guard lock(m_mutex);
    if (!m_prompt) m_prompt = startPrompt();
    prompt = m_prompt;
  }
  if (!prompt) return;
  prompt->stop();
  prompt->play();
}

void ResponsePlayback::finish() {
  {
    const std::lock_guard lock(m_mutex);
    if (std::exchange(m_isOver, true)) return;
  }
  m_delegate.speakerIcon(false);
  m_delegate.continueIfFollowUp();
}

void ResponsePlayback::audioPlayerDidFinishPlaying(AudioPlayer & /*player*/, bool /*successfully*/) {
  finish();
}

void ResponsePlayback::audioPlayerDecodeErrorDidOccur(AudioPlayer & /*player*/,
                                                      const std::string & /*error*/) {
  m_delegate.speakerIcon(false);
}

}  // namespace velmora
