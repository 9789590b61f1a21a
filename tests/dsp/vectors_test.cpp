// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/vectors.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "dsp/vectors_variants.h"
#include "support/signals.h"

namespace {

using Samples = std::vector<float>;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kTiny = std::numeric_limits<float>::denorm_min();
constexpr int kMaxCount = 70;  // some widths of vectors

// 0, 0.5, 1, ...
const Samples kHalves = [] {
    Samples halves(2 * kMaxCount);
    for (int i = 0; i < 2 * kMaxCount; ++i) halves[i] = 0.5f * i;
    return halves;
}();
const float* const h = kHalves.data();
const std::vector<std::int32_t> kInts(kMaxCount, 1 << 30);
const std::vector<std::int16_t> kShorts(kMaxCount, -32768);
const Samples kPairs(2 * kMaxCount, -1000);
double wide[kMaxCount];

// What elements of 1000 become: first, first + step, ...; a NaN: compared between processors only.
template <typename Run>
struct Row {
    Run run;
    double first, step;
};

const Row<void (*)(const VectorLoops&, int, float*)> kLoops[] = {
    {[](auto& v, int n, float* x) { v.fill(n, 0.25f, x); }, 0.25, 0},
    {[](auto& v, int n, float* x) { v.addConstant(n, 0.25f, x); }, 1000.25, 0},
    {[](auto& v, int n, float* x) { v.add(n, h, x), v.add3(n, h, x, x); }, 1000, 1},
    {[](auto& v, int n, float* x) { v.subtract3(n, h, x, x); }, -1000, 0.5},
    {[](auto& v, int n, float* x) { v.scale(n, x, 0.1f, x), v.scaleInPlace(n, 3, x); }, 300, 0},
    {[](auto& v, int n, float* x) { v.ramp(n, 0.5f, 0.25f, x); }, 500, 250},
    {[](auto& v, int n, float* x) { v.ramp(n, 0.1f, 0.3f, x); }, kNaN, 0},
    {[](auto& v, int n, float* x) { v.abs(n, x, x), v.absInPlace(n, x); }, 1000, 0},
    {[](auto& v, int n, float* x) { v.compareLimit(n, x, x, 0.5f); }, 0.5, 0},
    {[](auto& v, int n, float* x) { v.multiplyComplex(n / 2, h, x, x); }, kNaN, 0},
    {[](auto& v, int n, float* x) { v.magnitude(n / 2, Samples(x, x + n).data(), x); }, kNaN, 0},
    {[](auto& v, int n, float* x) { v.magnitude(n, kPairs.data(), x); }, 1414.2135623730951, 0},
    {[](auto& v, int n, float* x) { v.int32ToFloat(n, kInts.data(), x); }, 0x1p30, 0},
    {[](auto& v, int n, float* x) { v.int16ToFloat(n, kShorts.data(), x); }, -32768, 0},
    {[](auto& v, int n, float* x) {
         v.floatToDouble(n, x, wide);
         v.addConstantDouble(n, 0x1p-15, wide);  // half a unit in the last place: the even one
         v.doubleToFloat(n, wide, x);
     },
     1000, 0},
    {[](auto& v, int n, float* x) { v.fillDouble(n, 3, wide), v.doubleToFloat(n, wide, x); }, 3, 0},
    {[](auto& v, int n, float* x) { v.sum(n, x, x); }, kNaN, 0},
    {[](auto& v, int n, float* x) { v.min(n, x, x); }, 1000, 0},
    {[](auto& v, int n, float* x) { v.max(n, x, x); }, 1000, 0},
    {[](auto& v, int n, float* x) { v.absMax(n, x, x); }, 1000, 0},
};

const Row<VecStatus (*)(float*, int)> kPrimitives[] = {
    {VecZero, 0, 0},
    {[](float* x, int n) { return VecSubtract3(h, x, x, n); }, -1000, 0.5},
    {[](float* x, int n) { return VecScale(h, 3, x, n); }, 0, 1.5},
    {[](float* x, int n) { return SseScaleTo(x, h, n, 3); }, 0, 1.5},
    {[](float* x, int n) { return VecRamp(0.5f, 0, x, n); }, 500, 0},
    {[](float* x, int n) { return VecRamp(1, 0, x, n); }, 1000, 0},
    {[](float* x, int n) { return VecPhase(n > 0 ? kPairs.data() : x, x, n); }, -2.356194490192, 0},
};

template <typename Run>
void ExpectElements(Run run, double first, double step) {
    for (int count = 1; count < kMaxCount; ++count) {
        Samples array(count + 2, 1000), after = array;
        for (int i = 0; i < count; ++i) after[i + 1] = static_cast<float>(first + i * step);
        run(array.data() + 1, count);
        ASSERT_EQ(array, after);
    }
}

// What a loop makes of noise with everything in it that floats can be. The bits of a NaN may
// differ.
Samples OfSpecials(int row, const VectorLoops& loops, int count) {
    Samples noise = Noise(1, count, 2)[0];
    const float specials[] = {kNaN, -kNaN, kInfinity, -kInfinity, 0, -0.0f, kTiny, -kTiny, 3e38f};
    for (int i = 0; i < count; i += 3) noise[i] = specials[(i / 3 + count) % std::size(specials)];
    kLoops[row].run(loops, count, noise.data());
    std::replace_if(
        noise.begin(), noise.end(), [](float x) { return std::isnan(x); }, 12345.0f);
    return noise;
}

}  // namespace

TEST(ArrayPrimitives, DoTheSameOnEveryProcessor) {
    for (const auto variant :
         {ProcessorVariant::Baseline, ProcessorVariant::Avx2, ProcessorVariant::Avx512}) {
        if (!HasProcessorVariant(variant)) continue;
        const VectorLoops& loops = GetVectorLoops(variant);
        for (int row = 0; row < static_cast<int>(std::size(kLoops)); ++row) {
            SCOPED_TRACE(std::string(loops.name) + ", row " + std::to_string(row));
            const auto& [run, first, step] = kLoops[row];
            const auto runs = [&loops, run = run](float* x, int n) { run(loops, n, x); };
            if (!std::isnan(first)) ExpectElements(runs, first, step);
            for (int count = 1; count < kMaxCount; ++count)
                ASSERT_EQ(OfSpecials(row, loops, count),
                          OfSpecials(row, kBaselineVectorLoops, count));
        }
    }
}

TEST(ArrayPrimitives, RefuseNullBeforeLengthAndTouchNothing) {
    float a = 7;
    for (const auto& [run, first, step] : kPrimitives) {
        ExpectElements(run, first, step);
        for (const int count : {0, -1, std::numeric_limits<int>::min()}) {
            EXPECT_EQ(run(&a, count), -6);
            EXPECT_EQ(run(nullptr, count), -8);
        }
    }
    EXPECT_EQ(a, 7);
}

TEST(ArrayPrimitives, FindExtremesAmongAllNumbersThatThereAre) {
    const struct {
        Samples source;
        float smallest, largest;
        std::int32_t index;
    } kCases[] = {
        {{3, -2, 3, 1}, -2, 3, 0},
        {{kNaN, -kTiny, -3e38f, -kTiny}, -3e38f, -kTiny, 1},
        {{-kNaN, -1, kInfinity, kNaN}, -1, kInfinity, 2},
        {{kNaN, -kNaN}, kInfinity, -kInfinity, 0},
    };
    for (const auto& [source, smallest, largest, index] : kCases) {
        const int count = static_cast<int>(source.size());
        float minimum, maximum, value, loudest;
        std::int32_t place;
        VecMinMax(source.data(), count, &minimum, &maximum);
        VecMaxIndex(source.data(), count, &value, &place);
        SseAbsMax(source.data(), count, &loudest);
        EXPECT_EQ(Samples({minimum, maximum, value}), Samples({smallest, largest, largest}));
        EXPECT_EQ(place, index);
        EXPECT_EQ(std::isnan(loudest), std::isnan(source[0]));
    }
}

// A large element in front would swallow the small ones in 32 bits.
TEST(ArrayPrimitives, AddUpInWideNumbers) {
    Samples source(37, 0.5f);
    source[0] = 0x1p24f;
    EXPECT_EQ(SseSum(source.data(), 37), 0x1p24f + 18);
    EXPECT_EQ(SseSum(nullptr, 37), 0);
}

TEST(ArrayPrimitives, MoveOverThemselvesAndWindow) {
    Samples array = {0, 1, 2, 3, 4, 5};
    VecMove(array.data(), array.data() + 1, 5);
    VecMove(array.data() + 2, array.data(), 4);
    EXPECT_EQ(array, Samples({1, 2, 3, 4, 3, 4}));
    for (const Samples& window : {Samples{1}, {0, 0}, {0, 1, 0}, {0, 0.5f, 1, 0.5f, 0}}) {
        Samples ones(window.size(), 1);
        VecWindowTriangular(ones.data(), static_cast<int>(ones.size()));
        EXPECT_EQ(ones, window);
    }
}
