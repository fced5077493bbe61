// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QComboBox>

namespace velmora {

/// Lets the user choose a microphone among those attached when the list opens, or the desktop's default one.
/// One that was chosen stays in the list while it is unplugged. Main thread.
class MicrophoneBox : public QComboBox {
  Q_OBJECT

 public:
  explicit MicrophoneBox(QWidget *parent = nullptr);

  /// The name of the chosen microphone; empty for the default one.
  [[nodiscard]] QString microphone() const { return currentData().toString(); }
  void setMicrophone(const QString &name);

  void showPopup() override;

 protected:
  void focusInEvent(QFocusEvent *event) override;
  void showEvent(QShowEvent *event) override;

 private:
  /// Takes up to a quarter of a second where the sound server does not answer.
  void refresh();
  void fill(const QString &chosen);
};

}  // namespace velmora
