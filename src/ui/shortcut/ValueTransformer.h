// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>
#include <QVariant>
#include <memory>

namespace velmora {

/// Turns the value that is stored into the one that is shown, and back where it can. Main thread.
class ValueTransformer {
 public:
  virtual ~ValueTransformer() = default;

  [[nodiscard]] virtual bool allowsReverseTransformation() const = 0;
  [[nodiscard]] virtual QVariant transformedValue(const QVariant &value) const = 0;
  [[nodiscard]] virtual QVariant reverseTransformedValue(const QVariant &value) const = 0;

  /// Makes a transformer known by a name; a later one takes its place.
  static void setValueTransformer(const std::shared_ptr<const ValueTransformer> &transformer,
                                  const QString &name);
  /// Null when there is none of that name. "MASDictionaryTransformer" is always there.
  [[nodiscard]] static std::shared_ptr<const ValueTransformer> valueTransformerForName(const QString &name);
};

}  // namespace velmora
