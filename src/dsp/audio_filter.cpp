// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/audio_filter.h"

#include <cmath>
#include <numbers>

#include "foundation/objects/tolerances.h"
#include "foundation/text/exception.h"

namespace MAudioFilters {

namespace {

constexpr int kInvalidFilterType = 2;

// Numerator and denominator as the bilinear transform gives them.
struct Polynomials {
    double b0, b1, b2;
    double a0, a1, a2;
};

Polynomials LowShelf(double c, double alpha, double amplitude) {
    const double A = amplitude;
    const double be = 2 * std::sqrt(A) * alpha;
    const double p = c * (A - 1);
    const double m = c * (A + 1);
    return {A * (A + 1 - p + be), 2 * A * (A - 1 - m), A * (A + 1 - p - be),
            A + 1 + p + be,       -2 * (A - 1 + m),    A + 1 + p - be};
}

Polynomials HighShelf(double c, double alpha, double amplitude) {
    const double A = amplitude;
    const double be = 2 * std::sqrt(A) * alpha;
    const double p = c * (A - 1);
    const double m = c * (A + 1);
    return {A * (A + 1 + p + be), -2 * A * (A - 1 + m), A * (A + 1 + p - be),
            A + 1 - p + be,       2 * (A - 1 - m),      A + 1 - p - be};
}

Polynomials Design(FilterType type, double c, double al, double amplitude) {
    const double A = amplitude;
    switch (type) {
        case FilterType::Peak:
            return {1 + al * A, -2 * c, 1 - al * A, 1 + al / A, -2 * c, 1 - al / A};
        case FilterType::LowShelf:
            return LowShelf(c, al, A);
        case FilterType::HighShelf:
            return HighShelf(c, al, A);
        case FilterType::LowPass:
            return {(1 - c) / 2, 1 - c, (1 - c) / 2, 1 + al, -2 * c, 1 - al};
        case FilterType::HighPass:
            return {(1 + c) / 2, -(1 + c), (1 + c) / 2, 1 + al, -2 * c, 1 - al};
        case FilterType::BandPass:
            return {al, 0, -al, 1 + al, -2 * c, 1 - al};
        case FilterType::Notch:
            return {1, -2 * c, 1, 1 + al, -2 * c, 1 - al};
        case FilterType::AllPass:
            return {1 - al, -2 * c, 1 + al, 1 + al, -2 * c, 1 - al};
        case FilterType::FirstOrderAllPass:
            break;
    }
    throw MException("Invalid filter type.", kInvalidFilterType);
}

// The array primitives under one name for both kinds of sample.
void Create(BiquadState** state, const BiquadTaps& taps) { BiquadCreate(state, &taps, 1, nullptr); }
void Create(BiquadStateDouble** state, const BiquadTaps& taps) {
    BiquadCreateDouble(state, &taps, 1, nullptr);
}

void SetTaps(const BiquadTaps& taps, BiquadState* state) { BiquadSetTaps(&taps, state); }
void SetTaps(const BiquadTaps& taps, BiquadStateDouble* state) {
    BiquadSetTapsDouble(&taps, state);
}

void Run(const float* source, float* destination, int count, BiquadState* state) {
    BiquadRun(source, destination, count, state);
    VecAddConstant(kDenormalGuard, destination, count);
}
void Run(const double* source, double* destination, int count, BiquadStateDouble* state) {
    BiquadRunDouble(source, destination, count, state);
    VecAddConstantDouble(kDenormalGuard, destination, count);
}

template <typename Sample>
void TakeTaps(const Filter<double>& filter, FilterRunState::Block<Sample>& block) {
    if (block.biquad != nullptr && block.version == filter.version) return;
    const BiquadTaps taps{filter.b0, filter.b1, filter.b2, 1, -filter.a1, -filter.a2};
    if (block.biquad == nullptr) {
        BiquadStateT<Sample>* created = nullptr;
        Create(&created, taps);
        block.biquad.reset(created);
    } else {
        SetTaps(taps, block.biquad.get());
    }
    block.version = filter.version;
}

template <typename Sample>
void RunCascade(const FilterCascade& cascade, FilterRunState* states,
                FilterRunState::Block<Sample> FilterRunState::*kind, const Sample* source,
                Sample* destination, int count) {
    for (int k = 0; k < cascade.count; ++k) {
        FilterRunState::Block<Sample>& block = states[k].*kind;
        TakeTaps(cascade.filters[k], block);
        Run(k == 0 ? source : destination, destination, count, block.biquad.get());
    }
}

}  // namespace

template <typename Real>
void Filter<Real>::Set(FilterType newType, Real newFrequency, Real newSampleRate, Real newQ,
                       Real newGain) {
    type = newType;
    frequency = newFrequency;
    sampleRate = newSampleRate;
    q = newQ;
    gain = newGain;
    const Real w = 2 * std::numbers::pi_v<Real> * frequency / sampleRate;
    cosW = std::cos(w);
    alpha = std::sin(w) / (2 * q);
    ComputeCoefficients(std::pow(Real{10}, gain * Real{0.5} * Real{0.05}));
}

template <typename Real>
void Filter<Real>::ComputeCoefficients(Real amplitude) {
    ++version;
    const Polynomials design = Design(type, cosW, alpha, amplitude);
    const Real k = 1 / design.a0;
    const Real e = kDenormalGuard;  // no coefficient is ever exactly zero
    b0 = k * design.b0 + e;
    b1 = k * design.b1 + e;
    b2 = k * design.b2 + e;
    a1 = -(k * design.a1) + e;
    a2 = -(k * design.a2) + e;
}

template struct Filter<double>;

void RunBlock(const FilterCascade& cascade, FilterRunState* states, const double* source,
              double* destination, int count) {
    RunCascade(cascade, states, &FilterRunState::wide, source, destination, count);
}

void RunBlock(const FilterCascade& cascade, FilterRunState* states, const float* source,
              float* destination, int count) {
    RunCascade(cascade, states, &FilterRunState::narrow, source, destination, count);
}

}  // namespace MAudioFilters
