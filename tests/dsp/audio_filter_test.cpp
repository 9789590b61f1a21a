// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/audio_filter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <vector>

#include "foundation/objects/tolerances.h"
#include "foundation/text/exception.h"
#include "support/signals.h"

namespace {

using namespace MAudioFilters;
using Complex = std::complex<double>;

constexpr double kRate = 48000;

Filter<double> Make(FilterType type, double frequency, double q, double gain = 0) {
    Filter<double> filter;
    filter.Set(type, frequency, kRate, q, gain);
    return filter;
}

// Response at a frequency: the transform of the impulse response, which must have decayed.
Complex Response(const Filter<double>& filter, double frequency) {
    const Complex turn = std::polar(1., -2 * std::numbers::pi * frequency / kRate);
    FilterMemory memory;
    Complex sum = 0, at = 1;
    for (int i = 0; i < 1 << 16; ++i, at *= turn) sum += filter.RunSample(i == 0, memory) * at;
    return sum;
}

// A filter type with the polynomials of its analogue prototype in Bristow-Johnson's cookbook, the
// highest power of s first, and s = 1j at the filter's frequency.
struct Shape {
    FilterType type;
    double gain;
    double numerator[3], denominator[3];
};

std::vector<Shape> Shapes(double q) {
    std::vector<Shape> shapes = {{FilterType::LowPass, 0, {0, 0, 1}, {1, 1 / q, 1}},
                                 {FilterType::HighPass, 0, {1, 0, 0}, {1, 1 / q, 1}},
                                 {FilterType::BandPass, 0, {0, 1 / q, 0}, {1, 1 / q, 1}},
                                 {FilterType::Notch, 0, {1, 0, 1}, {1, 1 / q, 1}},
                                 {FilterType::AllPass, 0, {1, -1 / q, 1}, {1, 1 / q, 1}}};
    for (const double gain : {9., -12.}) {
        const double a = std::pow(10, gain / 40), r = std::sqrt(a) / q;
        shapes.push_back({FilterType::Peak, gain, {1, a / q, 1}, {1, 1 / (a * q), 1}});
        shapes.push_back({FilterType::LowShelf, gain, {a, a * r, a * a}, {a, r, 1}});
        shapes.push_back({FilterType::HighShelf, gain, {a * a, a * r, a}, {1, r, a}});
    }
    return shapes;
}

Complex At(const double (&p)[3], Complex s) { return p[0] * s * s + p[1] * s + p[2]; }

}  // namespace

TEST(FilterDesign, IsTheBilinearTransformOfItsPrototype) {
    for (const double q : {0.5, 0.7, 4.}) {
        for (const Shape& shape : Shapes(q)) {
            for (const double frequency : {40., 1000., 15000.}) {
                const Filter<double> filter = Make(shape.type, frequency, q, shape.gain);
                for (const double at : {0., 25., 900., 1000., 7000., 23000.}) {
                    // The transform maps tan(w / 2) to the analogue frequency axis.
                    const Complex s(0, std::tan(std::numbers::pi * at / kRate) /
                                           std::tan(std::numbers::pi * frequency / kRate));
                    const Complex expected = At(shape.numerator, s) / At(shape.denominator, s);
                    // The guard on the coefficients weighs 1e-15 / w^2, 4e-11 at 40 Hz; the rest is
                    // rounding of poles that close to 1.
                    EXPECT_LT(std::abs(Response(filter, at) - expected), 1e-8)
                        << static_cast<int>(shape.type) << " at " << frequency << ", q " << q;
                }
            }
        }
    }
    EXPECT_EQ(Make(FilterType::BandPass, 1000, 0.7).b1, 1.0000000036274937e-15) << "the guard";
}

TEST(FilterDesign, RefusesATypeWithoutAShapeAndKeepsTheOldOne) {
    for (const int type : {-1, 5, 6, 10, 11}) {
        Filter<double> filter = Make(FilterType::LowPass, 1000, 0.7);
        const Complex before = Response(filter, 900);
        EXPECT_THAT([&] { filter.Set(static_cast<FilterType>(type), 2000, kRate, 0.7, 0); },
                    testing::Throws<MException>(
                        testing::AllOf(testing::Field(&MException::message, "Invalid filter type."),
                                       testing::Field(&MException::code, 2))));
        EXPECT_EQ(Response(filter, 900), before);
        EXPECT_EQ(filter.version, 2u);
    }
}

// Blocks of any size against single samples, new coefficients in the middle included: the history
// goes on. After an impulse it decays to the guard, never to subnormal numbers.
TEST(FilterCascade, FiltersBlocksOfAnySizeAsItDoesSamples) {
    constexpr int kCount = 40000;
    for (const int block : {500, 1, 4, 125}) {
        FilterCascade cascade;
        cascade.count = 3;
        cascade.filters[0] = Make(FilterType::HighPass, 300, 1.3);
        cascade.filters[1] = Make(FilterType::Peak, 1500, 2, 6);
        cascade.filters[2] = Make(FilterType::LowPass, 9000, 0.5);
        std::vector<float> narrow(kCount, 0.f);
        std::ranges::copy(Noise(1, 1000, 1)[0], narrow.begin());
        std::vector<double> wide(narrow.begin(), narrow.end());
        FilterRunState states[3];
        for (int at = 0; at < kCount; at += block) {
            if (at == 500) cascade.filters[1].Set(FilterType::Peak, 700, kRate, 1, -6);
            const std::vector<double> input(&wide[at], &wide[at] + block);
            RunBlock(cascade, states, &wide[at], &wide[at], block);
            RunBlock(cascade, states, &narrow[at], &narrow[at], block);
            for (int i = at; i < at + block; ++i) {
                double expected = input[i - at];
                for (int k = 0; k < cascade.count; ++k)
                    expected =
                        cascade.filters[k].RunSample(expected, states[k].memory) + kDenormalGuard;
                ASSERT_NEAR(wide[i], expected, 1e-14) << i;
                // Each filter rounds its output, some 2 at most, and no history is rounded.
                ASSERT_NEAR(narrow[i], expected, 4e-7) << i;
                ASSERT_TRUE(std::isnormal(narrow[i]) && std::isnormal(states[2].memory.s2)) << i;
            }
        }
    }
}
