// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/vectors.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
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

// 1, 2, 3, ...: every element tells where it came from.
Samples Counting(int count) {
    Samples samples(count);
    std::iota(samples.begin(), samples.end(), 1.f);
    return samples;
}

// Runs operation(source, array, count) for lengths around the widths of vectors, on addresses
// aligned and not. array[i] starts as 1000, source[i] as i + 1. Each element must become
// expected(i), the neighbours on both sides must stay.
void ExpectElements(const std::function<VecStatus(const float*, float*, int)>& operation,
                    const std::function<float(int)>& expected) {
    for (int offset = 1; offset < 5; ++offset) {
        for (int count = 1; count < 40; ++count) {
            const Samples source = Counting(count);
            Samples array(count + offset + 1, 1000.f);
            ASSERT_EQ(operation(source.data(), array.data() + offset, count), kVecDone);
            for (int i = 0; i < count; ++i)
                ASSERT_EQ(array[offset + i], expected(i)) << i << " of " << count;
            ASSERT_EQ(array[offset - 1], 1000.f);
            ASSERT_EQ(array[offset + count], 1000.f);
        }
    }
}

TEST(ArrayPrimitives, ReachEveryElementAndNoOther) {
    const auto index = [](int i) { return static_cast<float>(i + 1); };
    ExpectElements(VecCopy, index);
    ExpectElements(VecMove, index);
    ExpectElements([](auto, float* array, int n) { return VecZero(array, n); },
                   [](int) { return 0.f; });
    ExpectElements([](auto, float* array, int n) { return VecFill(-3, array, n); },
                   [](int) { return -3.f; });
    ExpectElements([](auto, float* array, int n) { return VecAddConstant(0.5f, array, n); },
                   [](int) { return 1000.5f; });
    ExpectElements(VecAdd, [&](int i) { return 1000 + index(i); });
    ExpectElements([](auto source, auto array, int n) { return VecScale(source, 0.25f, array, n); },
                   [&](int i) { return index(i) / 4; });
    ExpectElements([](auto, auto array, int n) { return VecScaleInPlace(0.25f, array, n); },
                   [](int) { return 250.f; });
    ExpectElements([](auto, auto array, int n) { return SseScale(array, n, -2); },
                   [](int) { return -2000.f; });
    ExpectElements([](auto, auto array, int n) { return VecRamp(0.5f, 0.25f, array, n); },
                   [](int i) { return 1000 * (0.5f + 0.25f * static_cast<float>(i)); });
}

TEST(ArrayPrimitives, WorkInPlaceAndMoveBothWays) {
    Samples samples = Counting(21);
    VecScale(samples.data(), 3, samples.data(), 21);
    VecAdd(samples.data(), samples.data(), 21);
    Samples down = Counting(24);
    VecMove(down.data() + 3, down.data(), 21);
    Samples up = Counting(24);
    VecMove(up.data(), up.data() + 3, 21);
    for (int i = 0; i < 21; ++i) {
        EXPECT_EQ(samples[i], 6 * (i + 1));
        EXPECT_EQ(down[i], i + 4);
        EXPECT_EQ(up[i + 3], i + 1);
    }
}

TEST(ArrayPrimitives, RefuseNullBeforeLengthAndTouchNothing) {
    float a = 7, b = 7;
    double wide = 7;
    for (const int count : {0, -1, std::numeric_limits<int>::min()}) {
        const std::vector<VecStatus> answers = {VecCopy(&a, &b, count),
                                                VecMove(&a, &b, count),
                                                VecZero(&a, count),
                                                VecZeroDouble(&wide, count),
                                                VecFill(1, &a, count),
                                                VecAddConstant(1, &a, count),
                                                VecAdd(&a, &b, count),
                                                VecAddConstantDouble(1, &wide, count),
                                                VecScale(&a, 2, &b, count),
                                                VecScaleInPlace(2, &a, count),
                                                VecRamp(2, 1, &a, count),
                                                VecMinMax(&a, count, &b, &b),
                                                SseAbsMax(&a, count, &b),
                                                SseScale(&a, count, 2),
                                                VecFloatToDouble(&a, &wide, count),
                                                VecDoubleToFloat(&wide, &a, count)};
        EXPECT_THAT(answers, Each(-6));
    }
    const std::vector<VecStatus> answers = {VecCopy(nullptr, &b, 1),
                                            VecMove(&a, nullptr, 0),
                                            VecZero(nullptr, 0),
                                            VecAdd(nullptr, &b, 1),
                                            VecScale(nullptr, 2, &b, 1),
                                            VecRamp(2, 0, nullptr, -1),
                                            VecMinMax(&a, 1, &b, nullptr),
                                            SseAbsMax(&a, 1, nullptr),
                                            VecFloatToDouble(&a, nullptr, 1)};
    EXPECT_THAT(answers, Each(-8));
    EXPECT_EQ(a, 7);
    EXPECT_EQ(b, 7);
    EXPECT_EQ(wide, 7);
}

// The extreme is planted at every place of every length.
TEST(Extremes, AreFoundWhereverTheyStand) {
    for (int count = 1; count < 40; ++count) {
        for (int place = 0; place < count; ++place) {
            Samples samples(count, 0.5f);
            float low, high, largest;

            samples[place] = -0.75f;
            VecMinMax(samples.data(), count, &low, &high);
            SseAbsMax(samples.data(), count, &largest);
            EXPECT_EQ(low, -0.75f);
            EXPECT_EQ(high, count == 1 ? -0.75f : 0.5f);
            EXPECT_EQ(largest, 0.75f);

            for (float& sample : samples) sample = -2;
            samples[place] = -1;
            VecMinMax(samples.data(), count, &low, &high);
            EXPECT_EQ(low, count == 1 ? -1 : -2);
            EXPECT_EQ(high, -1);
        }
    }
}

TEST(Extremes, OrderTheWholeRangeOfFloats) {
    const float infinity = std::numeric_limits<float>::infinity();
    const float tiny = std::numeric_limits<float>::denorm_min();
    const Samples ascending = {-infinity, -1e30f, -1, -tiny, 0, tiny, 1e-20f, 1, 1e30f, infinity};
    for (std::size_t from = 0; from + 1 < ascending.size(); ++from) {
        const Samples pair = {ascending[from + 1], ascending[from]};
        float low, high;
        VecMinMax(pair.data(), 2, &low, &high);
        EXPECT_EQ(low, pair[1]);
        EXPECT_EQ(high, pair[0]);
    }
    Samples broken(64, 0.f);
    broken[17] = -std::numeric_limits<float>::quiet_NaN();
    float largest;
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

    VecAddConstantDouble(kDenormalGuard, back.data() + 1, 4);
    EXPECT_THAT(back, ElementsAre(1., 1 + 0x1p-23 + 1e-15, 1 + 0x1p-22 + 1e-15,
                                  -0x1.99999ap-4 + 1e-15, 1.0000000036274937e-15));
    VecZeroDouble(back.data(), 4);
    EXPECT_THAT(back, ElementsAre(0., 0., 0., 0., 1.0000000036274937e-15));
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
    Samples same(9, 0.3f);
    VecRamp(1, 0, same.data(), 9);
    EXPECT_THAT(same, Each(0.3f));
    VecRamp(0.5f, 0, same.data(), 9);
    EXPECT_THAT(same, Each(0.15f));
}

TEST(LinearRamp, LeadsFromTheLastValueToTheTarget) {
    const LinearRamp ramp(0.25, 1.75, 48);
    EXPECT_TRUE(ramp.IsMoving());
    EXPECT_EQ(ramp.At(0), 0.25);
    EXPECT_DOUBLE_EQ(ramp.At(24), 1);
    EXPECT_DOUBLE_EQ(ramp.At(48), 1.75) << "the next block starts at the target";
    EXPECT_DOUBLE_EQ(ramp.At(96), 3.25);

    std::vector<double> filled(48);
    ramp.Fill(filled.data(), 3, 7, 48);
    for (int i = 0; i < 48; ++i) EXPECT_EQ(filled[i], ramp.At(3 + 7 * i));
}

TEST(LinearRamp, StaysWhereTheParameterDoes) {
    for (const LinearRamp& ramp : {LinearRamp(0.7, 0.7, 64), LinearRamp(1e-51, 0, 64)}) {
        EXPECT_FALSE(ramp.IsMoving());
        EXPECT_EQ(ramp.At(1000), ramp.Start());
    }
    EXPECT_EQ(LinearRamp(1e-51, 0, 64).Start(), 0) << "at the target, not at the last value";
    EXPECT_TRUE(LinearRamp(1e-49, 0, 64).IsMoving());
    EXPECT_EQ(LinearRamp(2, 3, 0).At(0), 2) << "an empty block divides by nothing";
}

}  // namespace
