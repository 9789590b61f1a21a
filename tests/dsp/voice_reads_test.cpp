// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/voice_reads.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "dsp/sinc_kernel.h"
#include "dsp/vibrato.h"
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

class VoiceReadsOf : public testing::TestWithParam<ProcessorVariant> {};

}  // namespace

TEST(SincKernel, MeetsItsPublishedPoints) {
    for (const auto& [distance, level] : {std::pair(0, 0.8314723729548406),
                                          {1, 0.1586992324220288},
                                          {5, 0.021746367042796304},
                                          {10, 0.006634270236629583},
                                          {14, -0.0010516598523142608},
                                          {18, 4.721331043794107e-06}})
        EXPECT_NEAR(SincKernel::Get().Table(distance * 128), level, 1e-13) << distance;
}

// Wherever a read stands among others, however many there are and whatever lies around its window.
TEST_P(VoiceReadsOf, AgreeWithTheLiteralSumsAndDependOnTheirWindowsAlone) {
    if (!HasProcessorVariant(GetParam())) GTEST_SKIP() << "not on this processor";
    const VoiceReads& reads = GetVoiceReads(GetParam());
    for (int first = 0; first < kLength; first += 20) {
        const ReadPoints points = PointsFrom(first);
        double sums[kMaxReads], sum[4];
        float sinc[2][kMaxReads], pair[2][kMaxReads], cubic[kMaxReads], alone[4];
        reads.sincSums(kLeft, points, sums);
        reads.sinc(kLeft, points, sinc[0]);
        reads.sinc(kRight, points, sinc[1]);
        reads.sincPair(kLeft, kRight, points, pair[0], pair[1]);
        reads.cubic(kLeft, points, cubic);
        for (int i = 0; i < kMaxReads; ++i) {
            const int cell = points.cells[i];
            ReadPoints one;
            one.count = 1;
            std::fill_n(one.cells, 4, cell);
            std::fill_n(one.fractions, 4, points.fractions[i]);
            // Relative to the terms of the sum, which add up to about 2 at full scale.
            const double literal = LiteralSincSum(kLeft.cells, kLength, cell, points.fractions[i]);
            ASSERT_NEAR(sums[i], literal, 1e-12) << "read " << i;
            reads.sincSums({Window(cell, 18, 18).data(), kLength}, one, sum);
            ASSERT_EQ(sum[0], sums[i]);
            ASSERT_EQ(sinc[0][i], static_cast<float>(sums[i]));
            ASSERT_EQ(pair[0][i], sinc[0][i]);
            ASSERT_EQ(pair[1][i], sinc[1][i]);
            reads.cubic({Window(cell, 1, 2).data(), kLength}, one, alone);
            ASSERT_EQ(alone[0], cubic[i]);
            ASSERT_NEAR(cubic[i], LiteralCubicRead(kLeft.cells, kLength, cell, points.fractions[i]),
                        1e-6);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Processors, VoiceReadsOf,
                         testing::Values(ProcessorVariant::Baseline, ProcessorVariant::Avx2,
                                         ProcessorVariant::Avx512));

// In a line that rises by 1/1000 each sample a read tells how long ago its place was written.
TEST(Vibrato, ReadsAtItsOffsetBehindTheOrigin) {
    for (const bool sinc : {false, true}) {
        MAudioFilters::Vibrato<float> line;
        line.Configure(100, sinc);
        for (int i = 0; i < 500; ++i) line.Write(static_cast<float>(i) / 1000);
        for (const double offset : {0.0, -0.25, -1.0, -17.6, -99.99, -200.0}) {
            const double place = 499 - (sinc ? 19 : 2) + offset;
            const float sample = sinc ? line.ReadSinc(offset) : line.ReadCubic(offset);
            EXPECT_NEAR(sample, place / 1000, 5e-5) << offset;
        }
    }
}
