// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/linear_crossover.h"

#include <algorithm>

namespace {

constexpr int kFftSize = 4096;
constexpr int kHop = kFftSize / 2;
constexpr int kKernelLength = 1024;

// A middle band's kernel is two kernels in a row; an outer band's is one, and late by that much
// less.
constexpr int kOuterDelay = kKernelLength / 2;

static_assert(kLinearCrossoverLatency == kHop + 2 * kOuterDelay);

void DelayOuter(MAudioFilters::Delay<float>& line, float* samples, int count) {
    line.Resize(kOuterDelay);
    float early[kOuterDelay];
    for (int first = 0; first < count; first += kOuterDelay) {
        const int n = std::min(kOuterDelay, count - first);
        VecCopy(samples + first, early, n);
        line.Exchange(early, samples + first, n);
    }
}

}  // namespace

void BuildLinear(LinearCrossover& crossover, int bands, const double* frequencies,
                 double sampleRate, bool fixedQ) {
    crossover.bands = bands;
    if (bands < 2) return;
    FirKernel* const kernels = crossover.kernels;
    for (int i = 0; i < bands - 1; ++i)
        DesignLowPass(kernels[i],
                      {frequencies[i], sampleRate, kKernelLength, fixedQ ? frequencies[i] : -1});
    TakeComplement(kernels[bands - 1], kernels[bands - 2]);
    ComputeSpectrum(kernels[bands - 1], kFftSize);
    for (int b = bands - 2; b > 0; --b) {
        ComputeSpectrum(kernels[b], kFftSize);
        TakeComplement(crossover.complement, kernels[b - 1]);
        ComputeSpectrum(crossover.complement, kFftSize);
        MultiplySpectrum(kernels[b], crossover.complement);
    }
    ComputeSpectrum(kernels[0], kFftSize);
}

void ReserveLinearChannel(LinearCrossoverChannel& channel, int bands, int maxCount) {
    if (bands < 2) return;
    for (int b = 0; b < bands; ++b) ReserveStream(channel.bands[b], channel.last, kHop, maxCount);
    channel.lowest.Resize(kOuterDelay);
    channel.highest.Resize(kOuterDelay);
}

void ResetLinearChannel(LinearCrossoverChannel& channel) {
    for (FirStream& stream : channel.bands) ResetStream(stream);
    channel.lowest.Clear();
    channel.highest.Clear();
}

void RunLinearBand(LinearCrossover& crossover, LinearCrossoverChannel& channel, int band,
                   const float* source, float* destination, int count) {
    if (crossover.bands < 2) {
        if (source != destination) VecCopy(source, destination, count);
        return;
    }
    FirKernel& kernel = crossover.kernels[band];
    PrepareTransform(kernel, kFftSize);
    RunStream(channel.bands[band], channel.last, kernel, source, destination, count);
    if (band == 0) DelayOuter(channel.lowest, destination, count);
    if (band == crossover.bands - 1) DelayOuter(channel.highest, destination, count);
}
