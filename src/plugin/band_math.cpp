// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/band_math.h"

#include "dsp/vectors.h"

namespace {

// Calls work(i, value of the ramp) for each sample; the loop over a value that stands still knows
// it as a constant.
template <typename Work>
void ForEachSample(const LinearRamp& ramp, int count, Work work) {
    const double start = ramp.Start();
    const double step = ramp.Step();
    if (ramp.IsMoving()) {
        for (int i = 0; i < count; ++i) work(i, start + i * step);
    } else {
        for (int i = 0; i < count; ++i) work(i, start);
    }
}

}  // namespace

bool IsUnity(const LinearRamp& gain) {
    return std::abs(gain.Step()) < kSameGain && std::abs(gain.Start() - 1) < kSameGain;
}

void Scale(const LinearRamp& gain, const float* source, float* destination, int count) {
    if (!IsUnity(gain)) {
        ForEachSample(gain, count, [=](int i, double factor) {
            destination[i] = static_cast<float>(source[i] * factor);
        });
    } else if (source != destination) {
        VecCopy(source, destination, count);
    }
}

void Balance(const LinearRamp& pan, float* left, float* right, int count) {
    ForEachSample(pan, count, [=](int i, double p) {
        const double l = left[i];
        const double r = right[i];
        left[i] = static_cast<float>(p < 0 ? l - p * r : (1 - p) * l);
        right[i] = static_cast<float>(p < 0 ? (p + 1) * r : r + p * l);
    });
}

void MixDry(const LinearRamp& wet, const float* dry, float* out, int count) {
    ForEachSample(wet, count, [=](int i, double w) {
        out[i] = static_cast<float>((1 - w) * dry[i] + w * out[i]);
    });
}
