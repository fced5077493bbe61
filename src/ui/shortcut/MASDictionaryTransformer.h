// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>

#include "ui/shortcut/MASShortcut.h"
#include "ui/shortcut/ValueTransformer.h"

namespace velmora {

/// Between a `MASShortcut` in a variant and a dictionary with the numbers "keyCode" and "modifierFlags".
class MASDictionaryTransformer final : public ValueTransformer {
 public:
  [[nodiscard]] bool allowsReverseTransformation() const override { return true; }
  /// Reads an archive of a shortcut as well; anything else is no shortcut, an invalid variant.
  [[nodiscard]] QVariant transformedValue(const QVariant &value) const override;
  /// No shortcut becomes an empty dictionary: to store nothing would bring a registered default back.
  [[nodiscard]] QVariant reverseTransformedValue(const QVariant &value) const override;
};

/// The shortcut in a variant, if there is one.
[[nodiscard]] std::optional<MASShortcut> shortcutOf(const QVariant &value);
[[nodiscard]] QVariant variantOf(const std::optional<MASShortcut> &shortcut);

}  // namespace velmora
