// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/vectors.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <numeric>
#include <vector>

#include "dsp/linear_ramp.h"
#include "foundation/objects/tolerances.h"

namespace {

using Samples = std::vector<float>;
using testing::Each;
using testing::ElementsAre;

struct Primitive {
    std::function<VecStatus(float*, int)> run;
    std::function<float(int)> expected;  // of element i, which was 1000
};

const Samples kIndices = [] {
    Samples indices(64);
    std::iota(indices.begin(), indices.end(), 0.f);
    return indices;
}();

const std::vector<Primitive> kPrimitives = {
    {VecZero, [](int) { return 0.f; }},
    {[](float* array, int n) { return VecCopy(kIndices.data(), array, n); },
     [](int i) { return static_cast<float>(i); }},
    {[](float* array, int n) { return VecAdd(kIndices.data(), array, n); },
     [](int i) { return 1000 + static_cast<float>(i); }},
    {[](float* array, int n) { return VecAddConstant(0.5f, array, n); },
     [](int) { return 1000.5f; }},
    {[](float* array, int n) { return VecScaleInPlace(0.25f, array, n); },
     [](int) { return 250.f; }},
    {[](float* array, int n) { return VecRamp(0.5f, 0.25f, array, n); },
     [](int i) { return 1000 * (0.5f + 0.25f * static_cast<float>(i)); }},
};

TEST(ArrayPrimitives, ReachEveryElementAndNoOther) {
    for (const Primitive& primitive : kPrimitives) {
        for (int count = 1; count < 40; ++count) {  // around the widths of vectors
            Samples array(count + 2, 1000.f);
            ASSERT_EQ(primitive.run(array.data() + 1, count), kVecDone);
            for (int i = 0; i < count; ++i)
                ASSERT_EQ(array[i + 1], primitive.expected(i)) << i << " of " << count;
            ASSERT_EQ(array.front(), 1000.f);
            ASSERT_EQ(array.back(), 1000.f);
        }
    }
}

TEST(ArrayPrimitives, RefuseNullBeforeLengthAndTouchNothing) {
    float a = 7;
    double wide = 7;
    for (const int count : {0, -1, std::numeric_limits<int>::min()}) {
        for (const Primitive& primitive : kPrimitives) {
            EXPECT_EQ(primitive.run(&a, count), -6);
            EXPECT_EQ(primitive.run(nullptr, count), -8);
        }
        EXPECT_EQ(VecAddConstantDouble(1, &wide, count), -6);
        EXPECT_EQ(VecZeroDouble(&wide, count), -6);
        EXPECT_EQ(VecFloatToDouble(&a, &wide, count), -6);
        EXPECT_EQ(VecDoubleToFloat(&wide, &a, count), -6);
        EXPECT_EQ(SseAbsMax(&a, count, &a), -6);
    }
    EXPECT_EQ(VecFloatToDouble(&a, nullptr, 1), -8);
    EXPECT_EQ(VecDoubleToFloat(nullptr, &a, 1), -8);
    EXPECT_EQ(SseAbsMax(&a, 1, nullptr), -8);
    EXPECT_EQ(a, 7);
    EXPECT_EQ(wide, 7);
}

TEST(LargestSample, IsFoundWhereverItStandsAndNeverMissesANaN) {
    float largest = 0;
    for (int count = 1; count < 40; ++count) {
        for (int place = 0; place < count; ++place) {
            Samples samples(count, 0.5f);
            samples[place] = -0.75f;
            SseAbsMax(samples.data(), count, &largest);
            EXPECT_EQ(largest, 0.75f);
        }
    }
    Samples broken(64, 0.f);
    broken[17] = -std::numeric_limits<float>::quiet_NaN();
    SseAbsMax(broken.data(), 64, &largest);
    EXPECT_FALSE(largest < 1e-20f) << "a broken line must not pass for a silent one";
}

TEST(Conversions, WidenExactlyAndRoundToNearest) {
    // 2^-24 is half a unit in the last place of a 32-bit 1.
    const double half = 0x1p-24;
    const std::vector<double> wide = {1 + half, 1 + half + 0x1p-40, 1 + 3 * half, -0.1, 1e-310};
    Samples narrow(5);
    VecDoubleToFloat(wide.data(), narrow.data(), 5);
    EXPECT_THAT(narrow, ElementsAre(1.f, 1 + 0x1p-23f, 1 + 0x1p-22f, -0.1f, 0.f));

    std::vector<double> back(5);
    VecFloatToDouble(narrow.data(), back.data(), 5);
    EXPECT_THAT(back, ElementsAre(1., 1 + 0x1p-23, 1 + 0x1p-22, -0x1.99999ap-4, 0.));
    VecAddConstantDouble(kDenormalGuard, &back[4], 1);
    EXPECT_EQ(back[4], 1.0000000036274937e-15);
}

TEST(GainRamp, DoesNotAccumulateAndTakesATinyStepForNone) {
    constexpr int kCount = 100000;
    Samples ones(kCount, 1.f);
    VecRamp(0.25f, 1e-5f, ones.data(), kCount);
    // Three roundings of numbers below 2; a sum of a hundred thousand steps would be off by 1e-3.
    for (int i = 0; i < kCount; i += 997) EXPECT_NEAR(ones[i], 0.25 + i * 1e-5, 2e-7);

    Samples loud(1000, 1e20f);
    VecRamp(0, 0.9e-20f, loud.data(), 1000);
    EXPECT_THAT(loud, Each(0.f));
}

TEST(LinearRamp, LeadsFromTheLastValueToTheTargetAndStaysWhereTheParameterDoes) {
    const LinearRamp ramp(0.25, 1.75, 48);
    EXPECT_TRUE(ramp.IsMoving());
    EXPECT_EQ(ramp.At(0), 0.25);
    EXPECT_DOUBLE_EQ(ramp.At(48), 1.75) << "the next block starts at the target";
    double filled[48];
    ramp.Fill(filled, 3, 7, 48);
    for (int i = 0; i < 48; ++i) EXPECT_EQ(filled[i], ramp.At(3 + 7 * i));

    EXPECT_FALSE(LinearRamp(1e-51, 0, 64).IsMoving());
    EXPECT_EQ(LinearRamp(1e-51, 0, 64).Start(), 0) << "at the target, not at the last value";
    EXPECT_TRUE(LinearRamp(1e-49, 0, 64).IsMoving());
}

}  // namespace
