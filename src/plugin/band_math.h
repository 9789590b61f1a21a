// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cmath>

#include "dsp/linear_ramp.h"

// What happens to the samples of one band: gain, balance, dry against wet.
//
// Units    gains as factors; pan -1 left .. 1 right; wet 0..1
// Threads  any; count 1 or more
// Memory   none
// Method   64-bit arithmetic, rounded once a sample; no sample depends on its place in an array but
//          by its ramp

// 10^(decibels / 20), remembered for the next time.
class DecibelFactor {
public:
    double Of(double newDecibels) {
        if (newDecibels == decibels) return factor;
        decibels = newDecibels;
        return factor = std::pow(10, decibels * 0.05);
    }

private:
    double decibels = 0;
    double factor = 1;
};

// Whether a gain leaves everything as it is.
bool IsUnity(const LinearRamp& gain);

// Source and destination may be one array, which a unity gain then leaves alone.
void Scale(const LinearRamp& gain, const float* source, float* destination, int count);

// Moves signal across: towards the right the left channel gets less, and the right one adds what it
// has lost. In place.
void Balance(const LinearRamp& pan, float* left, float* right, int count);

// out = wet * out + (1 - wet) * dry
void MixDry(const LinearRamp& wet, const float* dry, float* out, int count);
