// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>

#include "platform/audio/Resampler.h"

namespace velmora {

/// By libsoxr. Throws as `Resampler` does.
std::unique_ptr<Resampler::Filter> makeSoxrFilter(int fromRate, int toRate, SampleType output,
                                                  Resampler::Blocks blocks);

}  // namespace velmora
