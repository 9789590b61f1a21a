// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/biquad.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <random>
#include <vector>

namespace {

using Signal = std::vector<double>;

// A resonant band-pass and a damped low-pass, poles at radius 0.95 and 0.7.
const BiquadTaps kResonant = {0.05, 0.01, -0.04, 1, -1.2, 0.9025};
const BiquadTaps kDamped = {0.3, -0.2, 0.1, 1, 0.4, 0.49};

Signal Noise(int count) {
    std::mt19937 generator(11);
    std::uniform_real_distribution<double> level(-1, 1);
    Signal noise(count);
    for (double& x : noise) x = static_cast<float>(level(generator));  // exact in both kinds
    return noise;
}

// The difference equation as it is written, on whole signals: no state that could be wrong.
double DirectForm(const BiquadTaps& t, const Signal& x, const Signal& y, std::size_t n) {
    const auto at = [n](const Signal& s, std::size_t back) { return back > n ? 0 : s[n - back]; };
    return t.b0 * at(x, 0) + t.b1 * at(x, 1) + t.b2 * at(x, 2) - t.a1 * at(y, 1) - t.a2 * at(y, 2);
}

BiquadHolder<double> MakeDouble(const BiquadTaps& taps) {
    BiquadStateDouble* state = nullptr;
    EXPECT_EQ(BiquadCreateDouble(&state, &taps, 1, nullptr), kVecDone);
    return BiquadHolder<double>(state);
}

BiquadHolder<float> Make(const BiquadTaps& taps) {
    BiquadState* state = nullptr;
    EXPECT_EQ(BiquadCreate(&state, &taps, 1, nullptr), kVecDone);
    return BiquadHolder<float>(state);
}

TEST(Biquad, FollowsItsDifferenceEquation) {
    const Signal x = Noise(3000);
    Signal expected(x.size());
    for (std::size_t n = 0; n < x.size(); ++n) expected[n] = DirectForm(kResonant, x, expected, n);

    Signal y(x.size());
    const auto wide = MakeDouble(kResonant);
    BiquadRunDouble(x.data(), y.data(), 3000, wide.get());

    std::vector<float> narrow(x.begin(), x.end());
    const auto state = Make(kResonant);
    BiquadRun(narrow.data(), narrow.data(), 3000, state.get());

    for (std::size_t n = 0; n < x.size(); ++n) {
        // Two forms round differently, by some units of 2^-53 times the resonance.
        ASSERT_NEAR(y[n], expected[n], 1e-13) << n;
        // 64-bit history: only the output is rounded, once.
        ASSERT_NEAR(narrow[n], expected[n], 0x1p-24 * std::abs(expected[n]) + 1e-13) << n;
    }
}

TEST(Biquad, KeepsWhatTheOldTapsMadeOfThePast) {
    const auto state = Make(kResonant);
    std::array<float, 4> run = {1, 0, 0, 0};
    BiquadRun(run.data(), run.data(), 2, state.get());
    EXPECT_EQ(BiquadSetTaps(&kDamped, state.get()), kVecDone);
    BiquadRun(run.data() + 2, run.data() + 2, 2, state.get());

    // The input has ended: the first output is the impulse response of the old taps, the second
    // has the old taps' part of the past and the new ones' feedback.
    const BiquadTaps& r = kResonant;
    const double y1 = r.b1 - r.a1 * r.b0;
    const double y2 = r.b2 - r.a2 * r.b0 - r.a1 * y1;
    const double y3 = -r.a2 * y1 - kDamped.a1 * y2;
    EXPECT_FLOAT_EQ(run[2], static_cast<float>(y2));
    EXPECT_FLOAT_EQ(run[3], static_cast<float>(y3));
}

TEST(Biquad, RefusesWhatItCannotFilter) {
    BiquadState* none = nullptr;
    EXPECT_EQ(BiquadCreate(nullptr, &kDamped, 1, nullptr), -8);
    EXPECT_EQ(BiquadCreate(&none, nullptr, 1, nullptr), -8);
    EXPECT_EQ(BiquadCreate(&none, &kDamped, 2, nullptr), -6);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(BiquadRelease(none), -8);
    EXPECT_EQ(BiquadSetTaps(&kDamped, none), -8);

    const auto state = Make(kDamped);
    float sample = 1;
    EXPECT_EQ(BiquadRun(nullptr, &sample, 1, state.get()), -8);
    EXPECT_EQ(BiquadRun(&sample, nullptr, 1, state.get()), -8);
    EXPECT_EQ(BiquadRun(&sample, &sample, 1, none), -8);
    EXPECT_EQ(BiquadRun(&sample, &sample, 0, state.get()), -6);
    EXPECT_EQ(BiquadSetTaps(nullptr, state.get()), -8);
    EXPECT_EQ(sample, 1);
}

}  // namespace
