// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "ui/preferences/MicrophoneBox.h"

#include "platform/audio/AudioEngine.h"

namespace velmora {
namespace {

constexpr int kShownLetters = 24;

}  // namespace

MicrophoneBox::MicrophoneBox(QWidget *parent) : QComboBox(parent) {
  // Names may be long; the list itself is as wide as they are.
  setSizeAdjustPolicy(AdjustToMinimumContentsLengthWithIcon);
  setMinimumContentsLength(kShownLetters);
  connect(this, &QComboBox::currentTextChanged, this, &QWidget::setToolTip);
  addItem(tr("The desktop’s default"), QString());
}

void MicrophoneBox::setMicrophone(const QString &name) {
  if (isVisible()) {
    fill(name);
  } else {
    if (findData(name) < 0) addItem(name, name);
    setCurrentIndex(findData(name));
  }
}

void MicrophoneBox::showPopup() {
  refresh();
  QComboBox::showPopup();
}

void MicrophoneBox::focusInEvent(QFocusEvent *event) {
  refresh();
  QComboBox::focusInEvent(event);
}

void MicrophoneBox::showEvent(QShowEvent *event) {
  refresh();
  QComboBox::showEvent(event);
}

void MicrophoneBox::refresh() { fill(microphone()); }

void MicrophoneBox::fill(const QString &chosen) {
  QList<std::pair<QString, QString>> microphones;  // text and name
  bool attached = chosen.isEmpty();
  for (const AudioDevice &device : AudioEngine::inputDevices().value_or(std::vector<AudioDevice>())) {
    const QString name = QString::fromStdString(device.name);
    microphones.emplaceBack(QString::fromStdString(device.description), name);
    attached = attached || name == chosen;
  }
  if (!attached) microphones.emplaceBack(tr("%1 (not attached)").arg(chosen), chosen);
  const QSignalBlocker quiet(this);
  while (count() > 1) removeItem(count() - 1);
  for (const auto &[text, name] : microphones) addItem(text.isEmpty() ? name : text, name);
  setCurrentIndex(findData(chosen));
  setToolTip(currentText());
}

}  // namespace velmora
