// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/vectors.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <vector>

#include "foundation/objects/tolerances.h"

namespace {

using Samples = std::vector<float>;

const Samples kHalves(64, 0.5f);

const struct {
    std::function<VecStatus(float*, int)> run;
    std::function<double(int)> expected;  // of element i, which was 1000
} kPrimitives[] = {
    {VecZero, [](int) { return 0; }},
    {[](float* array, int n) { return VecCopy(kHalves.data(), array, n); },
     [](int) { return 0.5; }},
    {[](float* array, int n) { return VecAdd(kHalves.data(), array, n); },
     [](int) { return 1000.5; }},
    {[](float* array, int n) { return VecAddConstant(0.25f, array, n); },
     [](int) { return 1000.25; }},
    {[](float* array, int n) { return VecScaleInPlace(0.25f, array, n); }, [](int) { return 250; }},
    {[](float* array, int n) { return VecRamp(0.5f, 0.25f, array, n); },
     [](int i) { return 1000 * (0.5 + 0.25 * i); }},
    {[](float* array, int n) { return VecRamp(0.5f, 0, array, n); }, [](int) { return 500; }},
};

}  // namespace

TEST(ArrayPrimitives, ReachEveryElementAndNoOther) {
    for (const auto& [run, expected] : kPrimitives) {
        for (int count = 1; count < 40; ++count) {  // around the widths of vectors
            Samples array(count + 2, 1000.f), after = array;
            for (int i = 0; i < count; ++i) after[i + 1] = static_cast<float>(expected(i));
            ASSERT_EQ(run(array.data() + 1, count), kVecDone);
            ASSERT_EQ(array, after);
        }
    }
}

TEST(ArrayPrimitives, RefuseNullBeforeLengthAndTouchNothing) {
    float a = 7;
    double wide = 7;
    for (const int count : {0, -1, std::numeric_limits<int>::min()}) {
        for (const auto& [run, expected] : kPrimitives) {
            EXPECT_EQ(run(&a, count), -6);
            EXPECT_EQ(run(nullptr, count), -8);
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
    for (const float extreme : {-0.75f, std::nanf("")}) {
        for (int place = 0; place < 39; ++place) {
            Samples samples(39, 0.5f);
            samples[place] = extreme;
            float largest = 0;
            SseAbsMax(samples.data(), 39, &largest);
            EXPECT_FALSE(largest < 0.75f) << "a broken line must not pass for a silent one";
        }
    }
}

TEST(Conversions, WidenExactlyAndRoundToNearest) {
    // 2^-24 is half a unit in the last place of a 32-bit 1.
    const double wide[] = {1 + 0x1p-24, 1 + 0x1p-24 + 0x1p-40, 1 + 0x3p-24, -0.1, 1e-310};
    Samples narrow(5);
    VecDoubleToFloat(wide, narrow.data(), 5);
    EXPECT_THAT(narrow, testing::ElementsAre(1.f, 1 + 0x1p-23f, 1 + 0x1p-22f, -0.1f, 0.f));
    std::vector<double> back(5);
    VecFloatToDouble(narrow.data(), back.data(), 5);
    VecAddConstantDouble(kDenormalGuard, &back[4], 1);
    EXPECT_THAT(back, testing::ElementsAre(1., 1 + 0x1p-23, 1 + 0x1p-22, -0x1.99999ap-4,
                                           1.0000000036274937e-15));
}
