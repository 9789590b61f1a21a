// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include "dsp/biquad.h"

// Second-order audio filters: design, the sample-by-sample run and cascades run by the block.
//
// Units    hertz, decibels; q has no unit
// Ranges   0 < frequency < sampleRate / 2 and q > 0, kept by the caller; gain any
// Threads  coefficients are written under their owner's lock. The version, not the lock, carries a
//          change to the block run's states
// Memory   RunBlock allocates a state at its first use; nothing else does
// Errors   a type without a design throws MException("Invalid filter type.", 2)
// Method   R. Bristow-Johnson, "Cookbook formulae for audio EQ biquad filter coefficients";
//          transposed direct form II

namespace MAudioFilters {

enum class FilterType : std::int32_t {
    Peak = 0,
    LowShelf = 1,
    HighShelf = 2,
    LowPass = 3,
    HighPass = 4,
    BandPass = 7,  // 0 dB at the centre
    Notch = 8,
    AllPass = 9,
    FirstOrderAllPass = 10,  // has no design here: its owner stores the coefficients
};

// What one channel of the sample-by-sample run remembers.
using FilterMemory = BiquadMemory;

// Who stores coefficients directly raises the version too.
template <typename Real>
struct Filter {
    Real cosW = 0;              // cos(w), w = 2 pi frequency / sampleRate
    Real alpha = 0;             // sin(w) / (2 q)
    std::uint32_t version = 0;  // raised by each computation of coefficients
    FilterType type = FilterType::Peak;
    Real gain = 0;  // decibels, of the peak and the shelves
    Real frequency = 0;
    Real sampleRate = 0;
    Real q = 0;

    // Divided by the denominator's leading one; a1 and a2 with inverted sign.
    Real b0 = 0;
    Real b2 = 0;
    Real a2 = 0;
    Real b1 = 0;
    Real a1 = 0;

    // Stores the five and computes the coefficients. Throws as ComputeCoefficients does.
    void Set(FilterType newType, Real newFrequency, Real newSampleRate, Real newQ, Real newGain);

    // Coefficients from type, cosW and alpha; amplitude is the square root of the gain as a factor.
    // A type without a design throws; the version is raised all the same, the coefficients stay.
    void ComputeCoefficients(Real amplitude);

    // Loops keep the filter and the memory in locals, where the compiler can see that they don't
    // alias the samples.
    Real RunSample(Real x, FilterMemory& memory) const {
        const Real y = b0 * x + memory.s2;
        memory.s2 = b1 * x + memory.s1 + a1 * y;
        memory.s1 = b2 * x + a2 * y;
        return y;
    }
};

extern template struct Filter<double>;

// One channel's companion of one filter. Assigning a new one is its reset: it frees the block
// run's states.
struct FilterRunState {
    // State of the block run for one kind of sample, and the filter's version that it has.
    template <typename Sample>
    struct Block {
        std::uint32_t version = 0;
        BiquadHolder<Sample> biquad;  // null until its first use
    };

    Block<double> wide;
    Block<float> narrow;
    FilterMemory memory;
};

struct FilterCascade {
    static constexpr int kRoom = 5;

    Filter<double> filters[kRoom];
    std::int32_t count = 0;  // filters in use, the first ones
};

// Filters a block through the cascade, one after the other. states has one entry for each filter in
// use; a filter whose version has changed hands over its coefficients and the history goes on.
// Source and destination may be one array. kDenormalGuard is added after each filter, so that the
// next one's feedback never decays to subnormal numbers. An empty cascade writes nothing.
void RunBlock(const FilterCascade& cascade, FilterRunState* states, const double* source,
              double* destination, int count);
void RunBlock(const FilterCascade& cascade, FilterRunState* states, const float* source,
              float* destination, int count);

}  // namespace MAudioFilters
