// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/audio_filter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <random>
#include <vector>

#include "foundation/objects/tolerances.h"
#include "foundation/text/exception.h"

namespace {

using namespace MAudioFilters;
using Complex = std::complex<double>;
using Signal = std::vector<double>;

constexpr double kRate = 48000;

Filter<double> Make(FilterType type, double frequency, double q, double gain = 0) {
    Filter<double> filter;
    filter.Set(type, frequency, kRate, q, gain);
    return filter;
}

// Response at a frequency: the transform of the impulse response, which must have decayed.
Complex Response(const Filter<double>& filter, double frequency) {
    constexpr int kLength = 1 << 16;
    const Complex turn = std::polar(1., -2 * std::numbers::pi * frequency / kRate);
    FilterMemory memory;
    Complex sum = 0, at = 1;
    for (int i = 0; i < kLength; ++i, at *= turn) sum += filter.RunSample(i == 0, memory) * at;
    return sum;
}

// The analogue prototypes of Bristow-Johnson's cookbook, s = 1j at the filter's frequency.
Complex Prototype(FilterType type, Complex s, double q, double gain) {
    const double a = std::pow(10, gain / 40);
    const double r = std::sqrt(a) / q;
    const Complex s2 = s * s;
    const Complex plain = s2 + s / q + 1.;
    switch (type) {
        case FilterType::Peak:
            return (s2 + s * (a / q) + 1.) / (s2 + s / (a * q) + 1.);
        case FilterType::LowShelf:
            return a * (s2 + r * s + a) / (a * s2 + r * s + 1.);
        case FilterType::HighShelf:
            return a * (a * s2 + r * s + 1.) / (s2 + r * s + a);
        case FilterType::LowPass:
            return 1. / plain;
        case FilterType::HighPass:
            return s2 / plain;
        case FilterType::BandPass:
            return (s / q) / plain;
        case FilterType::Notch:
            return (s2 + 1.) / plain;
        default:
            return (s2 - s / q + 1.) / plain;
    }
}

struct Shape {
    FilterType type;
    double gain;
};
constexpr Shape kShapes[] = {
    {FilterType::Peak, 9},      {FilterType::Peak, -9},      {FilterType::LowShelf, 6},
    {FilterType::LowShelf, -6}, {FilterType::HighShelf, 12}, {FilterType::HighShelf, -12},
    {FilterType::LowPass, 0},   {FilterType::HighPass, 0},   {FilterType::BandPass, 0},
    {FilterType::Notch, 0},     {FilterType::AllPass, 0}};

TEST(FilterDesign, IsTheBilinearTransformOfItsPrototype) {
    for (const auto& [type, gain] : kShapes) {
        for (const double frequency : {40., 1000., 15000.}) {
            for (const double q : {0.5, 0.7, 4.}) {
                const Filter<double> filter = Make(type, frequency, q, gain);
                for (const double at : {0., 25., 900., 1000., 7000., 23000.}) {
                    // The transform maps tan(w / 2) to the analogue frequency axis.
                    const double warped = std::tan(std::numbers::pi * at / kRate) /
                                          std::tan(std::numbers::pi * frequency / kRate);
                    const Complex expected = Prototype(type, Complex(0, warped), q, gain);
                    // The guard on the coefficients weighs 1e-15 / w^2, 4e-11 at 40 Hz; the rest is
                    // rounding of poles that close to 1.
                    EXPECT_LT(std::abs(Response(filter, at) - expected), 1e-8)
                        << static_cast<int>(type) << " at " << frequency << ", q " << q
                        << ", heard at " << at;
                }
            }
        }
    }
}

TEST(FilterDesign, MeetsItsNameAtTheCutOffAndTheEnds) {
    const double nyquist = kRate / 2;
    const struct {
        FilterType type;
        double gain, at, decibels;
    } points[] = {
        {FilterType::LowPass, 0, 2000, -3.0103},  {FilterType::LowPass, 0, 0, 0},
        {FilterType::HighPass, 0, 2000, -3.0103}, {FilterType::HighPass, 0, nyquist, 0},
        {FilterType::LowShelf, 6, 0, 6},          {FilterType::LowShelf, 6, nyquist, 0},
        {FilterType::LowShelf, 6, 2000, 3},       {FilterType::HighShelf, -8, nyquist, -8},
        {FilterType::HighShelf, -8, 0, 0},        {FilterType::HighShelf, -8, 2000, -4},
        {FilterType::Peak, 5, 2000, 5},           {FilterType::BandPass, 0, 2000, 0}};
    for (const auto& [type, gain, at, decibels] : points) {
        const Filter<double> filter = Make(type, 2000, std::numbers::sqrt2 / 2, gain);
        EXPECT_NEAR(20 * std::log10(std::abs(Response(filter, at))), decibels, 1e-5)
            << static_cast<int>(type) << " at " << at;
    }
}

TEST(FilterDesign, KeepsCoefficientsOffZeroByAGuardThatIsNotHeard) {
    EXPECT_EQ(Make(FilterType::BandPass, 1000, 0.7).b1, 1.0000000036274937e-15);
    for (const FilterType type : {FilterType::Peak, FilterType::LowShelf, FilterType::HighShelf}) {
        const Filter<double> filter = Make(type, 1000, 0.7);
        // No gain, no change: what is left is one guard in b0 and two where b and a cancel, each
        // rounded to the last place of a number below 2.
        EXPECT_NEAR(filter.b0 - 1, 1e-15, 4e-16);
        EXPECT_NEAR(filter.b1 + filter.a1, 2e-15, 5e-16);
        EXPECT_NEAR(filter.b2 + filter.a2, 2e-15, 5e-16);
    }
}

TEST(FilterDesign, RefusesATypeWithoutAShape) {
    for (const int type : {-1, 5, 6, 10, 11}) {
        Filter<double> filter = Make(FilterType::LowPass, 1000, 0.7);
        const Filter<double> before = filter;
        try {
            filter.Set(static_cast<FilterType>(type), 2000, kRate, 0.7, 0);
            ADD_FAILURE() << type << " was taken";
        } catch (const MException& refusal) {
            EXPECT_EQ(refusal.message, "Invalid filter type.");
            EXPECT_EQ(refusal.code, 2);
        }
        EXPECT_EQ(filter.version, before.version + 1);
        for (const auto field : {&Filter<double>::b0, &Filter<double>::b1, &Filter<double>::b2,
                                 &Filter<double>::a1, &Filter<double>::a2})
            EXPECT_EQ(filter.*field, before.*field);
    }
}

Signal Noise(int count) {
    std::mt19937 generator(5);
    std::uniform_real_distribution<double> level(-1, 1);
    Signal noise(count);
    for (double& x : noise) x = static_cast<float>(level(generator));  // exact in both kinds
    return noise;
}

FilterCascade ThreeFilters() {
    FilterCascade cascade;
    cascade.filters[0] = Make(FilterType::HighPass, 300, 1.3);
    cascade.filters[1] = Make(FilterType::Peak, 1500, 2, 6);
    cascade.filters[2] = Make(FilterType::LowPass, 9000, 0.5);
    cascade.count = 3;
    return cascade;
}

// The same by the sample-by-sample run.
Signal RunSamples(const FilterCascade& cascade, Signal signal) {
    for (int k = 0; k < cascade.count; ++k) {
        FilterMemory memory;
        for (double& x : signal) x = cascade.filters[k].RunSample(x, memory) + kDenormalGuard;
    }
    return signal;
}

TEST(FilterCascade, FiltersBlocksOfAnySizeAsItDoesSamples) {
    const FilterCascade cascade = ThreeFilters();
    const Signal x = Noise(1000);
    const Signal expected = RunSamples(cascade, x);
    for (const int block : {1000, 1, 7, 64, 333}) {
        Signal wide(x.size());
        std::vector<float> narrow(x.begin(), x.end());
        FilterRunState states[3];
        for (int at = 0; at < 1000; at += block) {
            const int count = std::min(block, 1000 - at);
            RunBlock(cascade, states, &x[at], &wide[at], count);
            RunBlock(cascade, states, &narrow[at], &narrow[at], count);
        }
        EXPECT_EQ(wide, expected) << block;
        // Each filter rounds its output, some 2 at most, and the peak doubles what is there.
        for (int i = 0; i < 1000; ++i) ASSERT_NEAR(narrow[i], expected[i], 6e-7) << i;
    }
}

TEST(FilterCascade, TakesNewCoefficientsByTheVersionAndKeepsTheHistory) {
    FilterCascade cascade;
    cascade.count = 1;
    Filter<double>& filter = cascade.filters[0];
    filter = Make(FilterType::LowPass, 500, 0.7);

    const Signal x = Noise(300);
    Signal y(x.size()), expected(x.size());
    FilterRunState state;
    FilterMemory memory;
    const auto run = [&](int from) {
        RunBlock(cascade, &state, x.data() + from, y.data() + from, 100);
        for (int i = from; i < from + 100; ++i) expected[i] = filter.RunSample(x[i], memory);
    };
    run(0);
    filter.Set(FilterType::LowPass, 500, kRate, 3, 0);
    run(100);
    // The owner of a first-order all-pass stores its coefficients itself.
    filter.type = FilterType::FirstOrderAllPass;
    filter.b0 = filter.a1 = 0.9;
    filter.b1 = -1;
    filter.b2 = filter.a2 = 0;
    ++filter.version;
    run(200);
    for (std::size_t i = 0; i < x.size(); ++i) ASSERT_NEAR(y[i], expected[i], 3e-15) << i;

    state = {};
    Signal again(100);
    RunBlock(cascade, &state, x.data(), again.data(), 100);
    EXPECT_NEAR(again[0], 0.9 * x[0], 2e-15) << "a reset forgets the history";
}

// An impulse and a second of silence that carries the frame's guard, as the effect gets it.
TEST(DecayingFilter, NeverReachesSubnormalNumbers) {
    const int second = static_cast<int>(kRate);
    for (const auto& [type, gain] : kShapes) {
        FilterCascade cascade;
        cascade.filters[0] = Make(type, 1000, 0.7, gain);
        cascade.filters[1] = cascade.filters[0];
        cascade.count = 2;

        std::vector<float> signal(second, kDenormalGuard);
        signal[0] = 1;
        FilterMemory memory;
        for (const float x : signal) {
            const double y = cascade.filters[0].RunSample(x, memory);
            for (const double number : {y, memory.s1, memory.s2})
                ASSERT_NE(std::fpclassify(number), FP_SUBNORMAL) << static_cast<int>(type);
        }

        FilterRunState states[2];
        RunBlock(cascade, states, signal.data(), signal.data(), second);
        for (const float y : signal) ASSERT_TRUE(std::isnormal(y)) << static_cast<int>(type);
    }
}

}  // namespace
