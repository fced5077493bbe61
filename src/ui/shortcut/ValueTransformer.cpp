// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "ui/shortcut/ValueTransformer.h"

#include <QHash>

#include "ui/shortcut/MASDictionaryTransformer.h"

namespace velmora {

namespace {

QHash<QString, std::shared_ptr<const ValueTransformer>> &transformers() {
  static QHash<QString, std::shared_ptr<const ValueTransformer>> known{
      {QStringLiteral("MASDictionaryTransformer"), std::make_shared<MASDictionaryTransformer>()}};
  return known;
}

}  // namespace

void ValueTransformer::setValueTransformer(const std::shared_ptr<const ValueTransformer> &transformer,
                                           const QString &name) {
  transformers().insert(name, transformer);
}

std::shared_ptr<const ValueTransformer> ValueTransformer::valueTransformerForName(const QString &name) {
  return transformers().value(name);
}

}  // namespace velmora
