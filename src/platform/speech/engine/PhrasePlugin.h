// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>

#include "platform/speech/PhraseDecoder.h"

namespace velmora {

class PhrasePlugin : public QObject, public PhraseDecoderFactory {
  Q_OBJECT
  Q_PLUGIN_METADATA(IID "velmora.PhraseDecoderFactory/1")
  Q_INTERFACES(velmora::PhraseDecoderFactory)

 public:
  [[nodiscard]] std::string problem() const override;
  [[nodiscard]] std::unique_ptr<PhraseDecoder> make(const std::vector<std::string> &phrases) const override;
};

}  // namespace velmora
