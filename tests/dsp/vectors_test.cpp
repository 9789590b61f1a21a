// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/vectors.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <vector>

#include "dsp/vectors_variants.h"
#include "support/signals.h"

namespace {

using Samples = std::vector<float>;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kTiny = std::numeric_limits<float>::denorm_min();

// 0, 0.5, 1, ...
const Samples kHalves = [] {
    Samples halves(64);
    for (int i = 0; i < 64; ++i) halves[i] = 0.5f * i;
    return halves;
}();
const std::vector<std::int32_t> kLong(64, 1 << 30);
const std::vector<std::int16_t> kShort(64, -32768);

VecStatus AddByDoubles(float* array, int count) {
    double wide[64];
    if (const VecStatus fault = VecFloatToDouble(array, wide, count)) return fault;
    VecAddConstantDouble(0x1p-15, wide, count);
    return VecDoubleToFloat(wide, array, count);
}

VecStatus FillByDoubles(float* array, int count) {
    double wide[64];
    VecZeroDouble(wide, count);
    VecFillDouble(0.75, wide, count);
    return VecDoubleToFloat(wide, array, count);
}

// Two elements of 1000 at 45 degrees each; what comes of them goes into every element.
template <VecStatus (*primitive)(const float*, float*, int)>
VecStatus OfPairs(float* array, int count) {
    if (array == nullptr || count < 1) return primitive(array, array, count);
    const Samples pairs(2 * count, -1000);
    return primitive(pairs.data(), array, count);
}

const struct {
    VecStatus (*run)(float*, int);
    double first, step;  // what elements of 1000 become
} kPrimitives[] = {
    {VecZero, 0, 0},
    {[](float* array, int n) { return VecFill(0.25f, array, n); }, 0.25, 0},
    {FillByDoubles, 0.75, 0},
    {[](float* array, int n) { return VecCopy(kHalves.data(), array, n); }, 0, 0.5},
    {[](float* array, int n) { return VecMove(kHalves.data(), array, n); }, 0, 0.5},
    {[](float* array, int n) { return VecAdd(kHalves.data(), array, n); }, 1000, 0.5},
    {[](float* array, int n) { return VecAdd3(kHalves.data(), array, array, n); }, 1000, 0.5},
    {[](float* array, int n) { return VecSubtract3(kHalves.data(), array, array, n); }, -1000, 0.5},
    {[](float* array, int n) { return VecSubtract3(array, kHalves.data(), array, n); }, 1000, -0.5},
    {[](float* array, int n) { return VecAddConstant(0.25f, array, n); }, 1000.25, 0},
    {[](float* array, int n) { return VecScale(kHalves.data(), 3, array, n); }, 0, 1.5},
    {[](float* array, int n) { return VecScaleInPlace(0.25f, array, n); }, 250, 0},
    {[](float* array, int n) { return VecScaleInPlaceAlt(0.25f, array, n); }, 250, 0},
    {[](float* array, int n) { return SseScale(array, n, 0.25f); }, 250, 0},
    {[](float* array, int n) { return SseScaleTo(array, kHalves.data(), n, 3); }, 0, 1.5},
    {[](float* array, int n) { return VecRamp(0.5f, 0.25f, array, n); }, 500, 250},
    {[](float* array, int n) { return VecRamp(0.5f, 0, array, n); }, 500, 0},
    {[](float* array, int n) { return VecRamp(1, 0, array, n); }, 1000, 0},
    {[](float* array, int n) { return VecCompareLimit(array, array, n, 3); }, 3, 0},
    {[](float* array, int n) { return VecCompareLimit(kHalves.data(), array, n, 99); }, 0, 0.5},
    {OfPairs<VecMagnitude>, 1414.2135623730951, 0},
    {OfPairs<VecPhase>, -2.356194490192345, 0},
    {[](float* array, int n) { return VecInt32ToFloat(kLong.data(), array, n); }, 0x1p30, 0},
    {[](float* array, int n) { return VecInt16ToFloat(kShort.data(), array, n); }, -32768, 0},
    {[](float* array, int n) { return SseAbsMax(array, n, array); }, 1000, 0},
    {AddByDoubles, 1000, 0},  // half a unit in the last place rounds to the even neighbour
};

// Noise with everything in it that floats can be.
Samples Specials(int count, std::uint32_t seed) {
    Samples noise = Noise(1, count, 2, seed)[0];
    const float specials[] = {kNaN, -kNaN, kInfinity, -kInfinity, 0, -0.0f, kTiny, -kTiny, 3e38f};
    for (int i = 0; i < count; i += 3) noise[i] = specials[(i / 3 + seed) % std::size(specials)];
    return noise;
}

// The results of all loops for one count, in a row; a NaN, whose bits may differ, is a number.
Samples AllResults(const VectorLoops& loops, int n) {
    const Samples a = Specials(2 * n, 1), b = Specials(2 * n, 2);
    const std::vector<std::int32_t> ints(n, 0x4321567);
    const std::vector<std::int16_t> shorts(n, -12345);
    std::vector<double> wide(n);
    Samples all, out = b;
    const auto keep = [&](auto loop, auto... arguments) {
        loop(n, arguments...);
        all.insert(all.end(), out.begin(), out.end());
        out = b;  // in the same storage
    };
    float* const array = out.data();
    keep(loops.fill, 0.1f, array);
    keep(loops.addConstant, 0.1f, array);
    keep(loops.add, a.data(), array);
    keep(loops.add3, a.data(), b.data(), array);
    keep(loops.subtract3, a.data(), b.data(), array);
    keep(loops.scale, a.data(), 0.1f, array);
    keep(loops.scaleInPlace, 0.1f, array);
    keep(loops.ramp, 0.1f, 0.3f, array);
    keep(loops.abs, a.data(), array);
    keep(loops.absInPlace, array);
    keep(loops.compareLimit, a.data(), array, 0.1f);
    keep(loops.multiplyComplex, a.data(), b.data(), array);
    keep(loops.magnitude, a.data(), array);
    keep(loops.int32ToFloat, ints.data(), array);
    keep(loops.int16ToFloat, shorts.data(), array);
    for (auto loop : {loops.sum, loops.min, loops.max, loops.absMax}) keep(loop, a.data(), array);
    loops.fillDouble(n, 0.1, wide.data());
    loops.addConstantDouble(n, 0.2, wide.data());
    keep(loops.doubleToFloat, wide.data(), array);
    loops.floatToDouble(n, a.data(), wide.data());
    keep(loops.doubleToFloat, wide.data(), array);
    std::replace_if(
        all.begin(), all.end(), [](float x) { return std::isnan(x); }, 12345.0f);
    return all;
}

}  // namespace

TEST(ArrayPrimitives, ReachEveryElementAndNoOther) {
    for (const auto& [run, first, step] : kPrimitives) {
        for (int count = 1; count < 40; ++count) {  // around the widths of vectors
            Samples array(count + 2, 1000.f), after = array;
            for (int i = 0; i < count; ++i) after[i + 1] = static_cast<float>(first + i * step);
            ASSERT_EQ(run(array.data() + 1, count), kVecDone);
            ASSERT_EQ(array, after) << &run - &kPrimitives[0].run;
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

TEST(ArrayPrimitives, GiveTheSameBitsOnEveryProcessor) {
    for (const auto variant : {ProcessorVariant::Avx2, ProcessorVariant::Avx512}) {
        if (!HasProcessorVariant(variant)) continue;
        for (int count = 1; count < 70; ++count)
            ASSERT_EQ(AllResults(GetVectorLoops(variant), count),
                      AllResults(kBaselineVectorLoops, count))
                << GetVectorLoops(variant).name << ", " << count;
    }
}

TEST(ArrayPrimitives, FindExtremesAmongAllNumbersThatThereAre) {
    const struct {
        Samples source;
        float smallest, largest;
        std::int32_t index;
    } kCases[] = {
        {{3, -2, 3, 1}, -2, 3, 0},
        {{-kTiny, -3e38f, kNaN, -kTiny}, -3e38f, -kTiny, 0},
        {{-kNaN, -1, kInfinity, kNaN}, -1, kInfinity, 2},
        {{-kInfinity, -kInfinity}, -kInfinity, -kInfinity, 0},
        {{kNaN, -kNaN}, kInfinity, -kInfinity, 0},
        {{-0.0f, 5e-45f, 0}, 0, 5e-45f, 1},
    };
    for (const auto& [source, smallest, largest, index] : kCases) {
        for (const int before : {0, 1, 30}) {  // NaNs in front
            Samples padded(before, kNaN);
            padded.insert(padded.end(), source.begin(), source.end());
            const int count = static_cast<int>(padded.size());
            float minimum, maximum, most, value;
            std::int32_t place;
            VecMinMax(padded.data(), count, &minimum, &maximum);
            VecMax(padded.data(), count, &most);
            VecMaxIndex(padded.data(), count, &value, &place);
            EXPECT_EQ(Samples({minimum, maximum, most, value}),
                      Samples({smallest, largest, largest, largest}));
            EXPECT_EQ(place, std::isnan(source[index]) ? 0 : before + index);
        }
    }
    float loudest;
    for (const Samples& source : {Samples{1, -2, 0}, Samples{kNaN, -kInfinity, -kNaN}}) {
        SseAbsMax(source.data(), 3, &loudest);
        EXPECT_TRUE(std::isnan(source[0]) ? std::isnan(loudest) : loudest == 2);
    }
}

// A large element in front would swallow the small ones in 32 bits.
TEST(ArrayPrimitives, AddUpInWideNumbers) {
    for (int count = 1; count < 40; ++count) {
        Samples source(count, 0.5f);
        source[0] = 0x1p24f;
        float sum;
        VecSum(source.data(), count, &sum, 0);
        EXPECT_EQ(sum, static_cast<float>(0x1p24 + 0.5 * (count - 1)));
        EXPECT_EQ(SseSum(source.data(), count), sum);
    }
    EXPECT_EQ(SseSum(nullptr, 3), 0);
}

TEST(ArrayPrimitives, MultiplyComplexNumbersInPlaceOfEitherFactor) {
    const Samples a = Noise(1, 66, 1, 1)[0], b = Noise(1, 66, 1, 2)[0];
    Samples apart(66), first = a, second = b, square = a;
    VecMultiplyComplex(a.data(), b.data(), apart.data(), 33);
    VecMultiplyComplex(first.data(), b.data(), first.data(), 33);
    VecMultiplyComplex(a.data(), second.data(), second.data(), 33);
    VecMultiplyComplex(square.data(), square.data(), square.data(), 33);
    EXPECT_EQ(first, apart);
    EXPECT_EQ(second, apart);
    for (int i = 0; i < 66; i += 2) {
        const std::complex<double> x(a[i], a[i + 1]), y(b[i], b[i + 1]);
        EXPECT_NEAR(std::abs(std::complex<double>(apart[i], apart[i + 1]) - x * y), 0, 2e-7);
        EXPECT_NEAR(std::abs(std::complex<double>(square[i], square[i + 1]) - x * x), 0, 2e-7);
    }
}

TEST(ArrayPrimitives, MoveOverThemselvesAndWindow) {
    Samples array = {0, 1, 2, 3, 4, 5};
    VecMove(array.data(), array.data() + 1, 5);
    EXPECT_EQ(array, Samples({0, 0, 1, 2, 3, 4}));
    VecMove(array.data() + 2, array.data(), 4);
    EXPECT_EQ(array, Samples({1, 2, 3, 4, 3, 4}));

    const Samples kWindows[] = {{1}, {0, 0}, {0, 1, 0}, {0, 0.5f, 1, 0.5f, 0}};
    for (const Samples& window : kWindows) {
        Samples ones(window.size(), 1);
        VecWindowTriangular(ones.data(), static_cast<int>(ones.size()));
        EXPECT_EQ(ones, window);
    }
}
