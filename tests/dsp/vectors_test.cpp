// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/vectors.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace {

using Samples = std::vector<float>;

const Samples kHalves(64, 0.5f);

VecStatus AddByDoubles(float* array, int count) {
    double wide[64];
    if (const VecStatus fault = VecFloatToDouble(array, wide, count)) return fault;
    VecAddConstantDouble(0x1p-15, wide, count);
    return VecDoubleToFloat(wide, array, count);
}

const struct {
    VecStatus (*run)(float*, int);
    double first, step;  // what elements of 1000 become
} kPrimitives[] = {
    {VecZero, 0, 0},
    {[](float* array, int n) { return VecCopy(kHalves.data(), array, n); }, 0.5, 0},
    {[](float* array, int n) { return VecAdd(kHalves.data(), array, n); }, 1000.5, 0},
    {[](float* array, int n) { return VecAddConstant(0.25f, array, n); }, 1000.25, 0},
    {[](float* array, int n) { return VecScaleInPlace(0.25f, array, n); }, 250, 0},
    {[](float* array, int n) { return VecRamp(0.5f, 0.25f, array, n); }, 500, 250},
    {[](float* array, int n) { return VecRamp(0.5f, 0, array, n); }, 500, 0},
    {[](float* array, int n) { return SseAbsMax(array, n, array); }, 1000, 0},
    {AddByDoubles, 1000, 0},  // half a unit in the last place rounds to the even neighbour
};

}  // namespace

TEST(ArrayPrimitives, ReachEveryElementAndNoOther) {
    for (const auto& [run, first, step] : kPrimitives) {
        for (int count = 1; count < 40; ++count) {  // around the widths of vectors
            Samples array(count + 2, 1000.f), after = array;
            for (int i = 0; i < count; ++i) after[i + 1] = static_cast<float>(first + i * step);
            ASSERT_EQ(run(array.data() + 1, count), kVecDone);
            ASSERT_EQ(array, after);
        }
    }
}

TEST(ArrayPrimitives, RefuseNullBeforeLengthAndTouchNothing) {
    float a = 7;
    for (const auto& [run, first, step] : kPrimitives) {
        for (const int count : {0, -1, std::numeric_limits<int>::min()}) {
            EXPECT_EQ(run(&a, count), -6);
            EXPECT_EQ(run(nullptr, count), -8);
        }
    }
    EXPECT_EQ(a, 7);
}
