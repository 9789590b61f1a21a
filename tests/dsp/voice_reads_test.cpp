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

// Neighbouring cells from the first on, with fractions from 0 to just below 1.
ReadPoints PointsFrom(int first) {
    ReadPoints points;
    points.count = kMaxReads;
    for (int i = 0; i < kMaxReads; ++i) {
        points.cells[i] = (first + i) % kLength;
        points.fractions[i] = std::fmod((first + i) * 0.61803398874989, 1);
    }
    points.fractions[0] = 0;
    points.fractions[1] = std::nextafter(1.0, 0.0);
    return points;
}

ReadPoints OnePoint(int cell, double fraction) {
    ReadPoints points;
    points.count = 1;
    std::fill_n(points.cells, 4, cell);
    std::fill_n(points.fractions, 4, fraction);
    return points;
}

class VoiceReadsOf : public testing::TestWithParam<ProcessorVariant> {
protected:
    void SetUp() override {
        if (!HasProcessorVariant(GetParam())) GTEST_SKIP() << "not on this processor";
    }
    const VoiceReads& reads = GetVoiceReads(GetParam());
};

}  // namespace

TEST(SincKernel, MeetsItsPublishedPoints) {
    const struct {
        int distance;
        double level;
        double tolerance = 1e-13;
    } points[] = {
        {0, 0.8314723729548406},      {1, 0.1586992324220288},
        {2, -0.13174368939679199},    {3, 0.09437042038205042},
        {5, 0.021746367042796304},    {8, 0.014894145069194628},
        {10, 0.006634270236629583},   {12, -0.0002336544724468609},
        {14, -0.0010516598523142608}, {16, -0.0002483677962776488, 2e-11},
        {18, 4.721331043794107e-06},
    };
    for (const auto& point : points)
        EXPECT_NEAR(SincKernel::Get().Table(point.distance * SincKernel::kPhases), point.level,
                    point.tolerance)
            << point.distance;
}

// Windows in the middle and around both ends of the line.
TEST_P(VoiceReadsOf, AgreeWithTheLiteralSum) {
    for (int first = 0; first < kLength; first += 5) {
        const ReadPoints points = PointsFrom(first);
        double sums[kMaxReads];
        reads.sincSums(kLeft, points, sums);
        for (int i = 0; i < kMaxReads; ++i) {
            const double expected =
                LiteralSincSum(kLeft.cells, kLength, points.cells[i], points.fractions[i]);
            // Relative to the terms of the sum, which add up to about 2 at full scale.
            ASSERT_NEAR(sums[i], expected, 1e-12) << "read " << i;
        }
    }
}

TEST_P(VoiceReadsOf, DoNotDependOnTheirPlaceOrNumber) {
    const ReadPoints all = PointsFrom(3);
    float sinc[2][kMaxReads], pair[2][kMaxReads], cubic[kMaxReads], alone[4];
    reads.sinc(kLeft, all, sinc[0]);
    reads.sinc(kRight, all, sinc[1]);
    reads.cubic(kLeft, all, cubic);
    reads.sincPair(kLeft, kRight, all, pair[0], pair[1]);
    for (int i = 0; i < kMaxReads; ++i) {
        const ReadPoints one = OnePoint(all.cells[i], all.fractions[i]);
        reads.sinc(kLeft, one, alone);
        EXPECT_EQ(alone[0], sinc[0][i]);
        reads.cubic(kLeft, one, alone);
        EXPECT_EQ(alone[0], cubic[i]);
        EXPECT_EQ(pair[0][i], sinc[0][i]);
        EXPECT_EQ(pair[1][i], sinc[1][i]);
    }
}

// A window's neighbours may hold anything, such as what a host sends on a bad day.
TEST_P(VoiceReadsOf, TouchNothingOutsideTheirWindow) {
    constexpr int kCell = 50;
    std::vector<float> cells(kLength, std::nanf(""));
    std::fill_n(cells.begin() + kCell - 18, 37, 0.5f);
    float sample[4];
    reads.sinc({cells.data(), kLength}, OnePoint(kCell, 0), sample);
    EXPECT_NEAR(sample[0], 0.5, 1e-4);  // the kernel's sum over whole distances
    std::ranges::fill(cells, std::nanf(""));
    std::fill_n(cells.begin() + kCell - 1, 4, 0.5f);
    reads.cubic({cells.data(), kLength}, OnePoint(kCell, 0.3), sample);
    EXPECT_EQ(sample[0], 0.5f);
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
