// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/voice_reads.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "dsp/sinc_kernel.h"
#include "dsp/vibrato.h"
#include "support/literal_reads.h"

namespace {

constexpr int kSmallLine = 101;  // most windows wrap around it

std::vector<float> Noise(int count) {
    std::vector<float> noise(static_cast<std::size_t>(count));
    std::uint32_t seed = 1;
    for (float& sample : noise) {
        seed = seed * 1664525 + 1013904223;
        sample = static_cast<float>(static_cast<double>(seed) / 2147483648.0 - 1);
    }
    return noise;
}

// Every cell of a line once, with fractions from 0 to just below 1.
ReadPoints PointsFrom(int first, int count, int length) {
    ReadPoints points;
    points.count = count;
    for (int i = 0; i < kMaxReads; ++i) {
        points.cells[i] = (first + i) % length;
        points.fractions[i] = std::fmod((first + i) * 0.61803398874989, 1);
    }
    points.fractions[0] = 0;
    points.fractions[1] = std::nextafter(1.0, 0.0);
    return points;
}

std::vector<ProcessorVariant> Variants() {
    std::vector<ProcessorVariant> variants;
    for (const auto variant :
         {ProcessorVariant::Baseline, ProcessorVariant::Avx2, ProcessorVariant::Avx512})
        if (HasProcessorVariant(variant)) variants.push_back(variant);
    return variants;
}

TEST(SincKernel, MeetsItsPublishedPoints) {
    const struct {
        int distance;
        double level;
        double tolerance;
    } points[] = {
        {0, 0.8314723729548406, 1e-13},      {1, 0.1586992324220288, 1e-13},
        {2, -0.13174368939679199, 1e-13},    {3, 0.09437042038205042, 1e-13},
        {5, 0.021746367042796304, 1e-13},    {8, 0.014894145069194628, 1e-13},
        {10, 0.006634270236629583, 1e-13},   {12, -0.0002336544724468609, 1e-13},
        {14, -0.0010516598523142608, 1e-13}, {16, -0.0002483677962776488, 2e-11},
        {18, 4.721331043794107e-06, 1e-13},
    };
    for (const auto& point : points)
        EXPECT_NEAR(SincKernel::Get().Table(point.distance * SincKernel::kPhases), point.level,
                    point.tolerance)
            << point.distance;
}

// The sums of all variants, with windows in the middle and around both ends of the line.
TEST(VoiceReads, AgreeWithTheLiteralSumOnEveryProcessor) {
    const std::vector<float> noise = Noise(kSmallLine);
    const LineView line = {noise.data(), kSmallLine};
    for (const ProcessorVariant variant : Variants()) {
        const VoiceReads& reads = GetVoiceReads(variant);
        for (int first = 0; first < kSmallLine; first += 5) {
            const ReadPoints points = PointsFrom(first, kMaxReads, kSmallLine);
            double sums[kMaxReads];
            reads.sincSums(line, points, sums);
            for (int i = 0; i < kMaxReads; ++i) {
                const double expected =
                    LiteralSincSum(noise.data(), kSmallLine, points.cells[i], points.fractions[i]);
                // Relative to the terms of the sum, which add up to about 2 at full scale.
                ASSERT_NEAR(sums[i], expected, 1e-12) << reads.name << " read " << i;
            }
        }
    }
}

TEST(VoiceReads, DoNotDependOnTheirPlaceOrNumber) {
    const std::vector<float> left = Noise(kSmallLine);
    std::vector<float> right = left;
    std::reverse(right.begin(), right.end());
    for (const ProcessorVariant variant : Variants()) {
        const VoiceReads& reads = GetVoiceReads(variant);
        const ReadPoints all = PointsFrom(3, kMaxReads, kSmallLine);
        float sinc[2][kMaxReads];
        float cubic[kMaxReads];
        reads.sinc({left.data(), kSmallLine}, all, sinc[0]);
        reads.sinc({right.data(), kSmallLine}, all, sinc[1]);
        reads.cubic({left.data(), kSmallLine}, all, cubic);

        float pair[2][kMaxReads];
        reads.sincPair({left.data(), kSmallLine}, {right.data(), kSmallLine}, all, pair[0],
                       pair[1]);
        for (int i = 0; i < kMaxReads; ++i) {
            ReadPoints one;
            one.count = 1;
            std::fill_n(one.cells, 4, all.cells[i]);
            std::fill_n(one.fractions, 4, all.fractions[i]);
            float alone[4];
            reads.sinc({left.data(), kSmallLine}, one, alone);
            EXPECT_EQ(alone[0], sinc[0][i]) << reads.name;
            reads.cubic({left.data(), kSmallLine}, one, alone);
            EXPECT_EQ(alone[0], cubic[i]) << reads.name;
            EXPECT_EQ(pair[0][i], sinc[0][i]) << reads.name;
            EXPECT_EQ(pair[1][i], sinc[1][i]) << reads.name;
        }
    }
}

// A window's neighbours may hold anything, such as what a host sends on a bad day.
TEST(VoiceReads, TouchNothingOutsideTheirWindow) {
    constexpr int kLength = 200;
    constexpr int kCell = 100;
    for (const ProcessorVariant variant : Variants()) {
        const VoiceReads& reads = GetVoiceReads(variant);
        std::vector<float> cells(kLength, std::nanf(""));
        std::fill(cells.begin() + kCell - 18, cells.begin() + kCell + 19, 0.5f);
        ReadPoints points = PointsFrom(kCell, 1, kLength);
        float sample[4];
        std::fill_n(points.cells, 4, kCell);
        reads.sinc({cells.data(), kLength}, points, sample);
        EXPECT_NEAR(sample[0], 0.5, 1e-4) << reads.name;  // the kernel's sum over whole distances
        reads.cubic({cells.data(), kLength}, points, sample);
        EXPECT_EQ(sample[0], 0.5f) << reads.name;
    }
}

// A polynomial of the second degree passes a Catmull-Rom read unchanged.
TEST(VoiceReads, FollowAParabolaWithTheCubicRead) {
    MAudioFilters::Vibrato<float> line;
    line.Configure(100, false);
    const auto curve = [](double t) { return 0.5 + 0.01 * t - 0.0002 * t * t; };
    for (int i = 0; i < 200; ++i) line.Write(static_cast<float>(curve(i)));
    // The newest sample is the one at 199; reads start 2 behind it.
    for (const double offset : {0.0, -0.25, -1.0, -17.6, -99.99, -150.5})
        EXPECT_NEAR(line.ReadCubic(offset), curve(199 - 2 + offset), 2e-6) << offset;
}

double GainAt(double frequency, bool sinc) {
    MAudioFilters::Vibrato<float> line;
    line.Configure(200, sinc);
    double power = 0;
    for (int i = 0; i < 8500; ++i) {
        line.Write(static_cast<float>(std::sin(std::numbers::pi * frequency * i)));
        const double sample = sinc ? line.ReadSinc(-150.37) : line.ReadCubic(-150.37);
        if (i >= 500) power += sample * sample / 8000;
    }
    return std::sqrt(2 * power);
}

// Frequencies as a share of the Nyquist frequency.
TEST(VoiceReads, PassWhatIsHeardAndStopWhatWouldAlias) {
    EXPECT_NEAR(GainAt(0.1, true), 1, 1e-3);
    EXPECT_NEAR(GainAt(0.6, true), 1, 1e-3);
    EXPECT_NEAR(GainAt(0.83147, true), 0.5, 2e-2);  // a windowed sinc is at half at its cut-off
    EXPECT_LT(GainAt(0.99, true), 2e-3);
    EXPECT_NEAR(GainAt(0.05, false), 1, 1e-3);
}

TEST(Vibrato, ReachesBackTwiceItsLineSamples) {
    for (const bool sinc : {false, true}) {
        MAudioFilters::Vibrato<float> line;
        line.Configure(300, sinc);
        EXPECT_EQ(line.Length(), 600 + (sinc ? 39 : 5));
        const int originBehindNewest = sinc ? 19 : 2;
        line.Write(1.0f);
        double loudest = 0;
        int delay = 0;
        for (int i = 1; i <= 700; ++i) {
            line.Write(0.0f);
            const double sample = std::abs(sinc ? line.ReadSinc(-500.0) : line.ReadCubic(-500.0));
            if (sample > loudest) {
                loudest = sample;
                delay = i;
            }
        }
        EXPECT_EQ(delay, 500 + originBehindNewest);
    }
}

}  // namespace
