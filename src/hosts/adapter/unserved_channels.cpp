// SPDX-License-Identifier: GPL-3.0-or-later
#include "hosts/adapter/unserved_channels.h"

#include <algorithm>

#include "dsp/vectors.h"

void SilenceUnserved(float* const* channels, int channelCount, int served, int sampleCount) {
    float* const* const end = channels + std::min(served, channelCount);
    for (int c = served; c < channelCount; ++c)
        if (std::find(channels, end, channels[c]) == end) VecZero(channels[c], sampleCount);
}
