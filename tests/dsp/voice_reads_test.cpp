// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/voice_reads.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "dsp/sinc_kernel.h"
#include "support/literal_reads.h"
#include "support/signals.h"

namespace {

constexpr int kLength = 101;  // most windows wrap around it
const Audio kNoise = Noise(2, kLength, 1);
const LineView kLeft = {kNoise[0].data(), kLength};
const LineView kRight = {kNoise[1].data(), kLength};

// Cells all along the line, with fractions from 0 to just below 1.
ReadPoints PointsFrom(int first) {
    ReadPoints points;
    points.count = kMaxReads;
    for (int i = 0; i < kMaxReads; ++i) {
        points.cells[i] = (first + 3 * i) % kLength;
        points.fractions[i] = std::fmod((first + i) * 0.61803398874989, 1);
    }
    points.fractions[0] = 0;
    points.fractions[1] = std::nextafter(1.0, 0.0);
    return points;
}

// The left line's cells around one; the others hold what a host sends on a bad day.
std::vector<float> Window(int cell, int before, int after) {
    std::vector<float> cells(kLength, std::nanf(""));
    for (int i = cell - before + kLength; i <= cell + after + kLength; ++i)
        cells[i % kLength] = kLeft.cells[i % kLength];
    return cells;
}

// Wherever a read stands among others, however many there are and whatever lies around its window.
void CheckReads(const VoiceReads& reads) {
    for (int first = 0; first < kLength; first += 20) {
        const ReadPoints points = PointsFrom(first);
        double sums[kMaxReads], sum[4];
        float right[kMaxReads], pair[2][kMaxReads], cubic[kMaxReads], alone[4];
        reads.sincSums(kLeft, points, sums);
        reads.sinc(kRight, points, right);
        reads.sincPair(kLeft, kRight, points, pair[0], pair[1]);
        reads.cubic(kLeft, points, cubic);
        for (int i = 0; i < kMaxReads; ++i) {
            const int cell = points.cells[i];
            const double fraction = points.fractions[i];
            ReadPoints one;
            one.count = 1;
            std::fill_n(one.cells, 4, cell);
            std::fill_n(one.fractions, 4, fraction);
            reads.sincSums({Window(cell, 18, 18).data(), kLength}, one, sum);
            reads.cubic({Window(cell, 1, 2).data(), kLength}, one, alone);
            // Relative to the terms of the sum, which add up to about 2 at full scale.
            ASSERT_NEAR(sum[0], LiteralSincSum(kLeft.cells, kLength, cell, fraction), 1e-12) << i;
            ASSERT_NEAR(alone[0], LiteralCubicRead(kLeft.cells, kLength, cell, fraction), 1e-6);
            ASSERT_EQ(sums[i], sum[0]);
            ASSERT_EQ(cubic[i], alone[0]);
            ASSERT_EQ(pair[0][i], static_cast<float>(sum[0]));
            ASSERT_EQ(pair[1][i], right[i]);
        }
    }
}

}  // namespace

TEST(SincKernel, MeetsItsPublishedPoints) {
    for (const auto& [distance, level] : {std::pair(0, 0.8314723729548406),
                                          {5, 0.021746367042796304},
                                          {14, -0.0010516598523142608},
                                          {18, 4.721331043794107e-06}})
        EXPECT_NEAR(SincKernel::Get().Table(distance * 128), level, 1e-13) << distance;
}

TEST(VoiceReads, AgreeWithTheLiteralSumsOnEveryProcessor) {
    for (const auto variant :
         {ProcessorVariant::Baseline, ProcessorVariant::Avx2, ProcessorVariant::Avx512}) {
        SCOPED_TRACE(GetVoiceReads(variant).name);
        if (HasProcessorVariant(variant)) CheckReads(GetVoiceReads(variant));
    }
}
