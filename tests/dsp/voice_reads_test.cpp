// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/voice_reads.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "dsp/shape_table.h"
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

// Bit by bit, wherever the counts end within a vector.
void CheckSteps(const VoiceReads& reads, int count) {
    const ShapeTable shape;
    double phases[kMaxReads], levels[kMaxReads], sum[kMaxReads];
    float mixed[kMaxReads];
    const PhaseRun run = {0.3, 0.987, 123456789};
    reads.fillPhases(run, phases, count);
    reads.readShape(shape, phases, 7.3, {-1, 30, -5}, levels, count);
    ReadPoints points;
    points.count = count;
    reads.locate({kLength, kLength - 3, 99.5}, levels, points);
    for (int i = 0; i < count; ++i) {
        ASSERT_NEAR(phases[i], std::fmod(0.3 + (123456789.0 + i) * 0.987, 1), 1e-7);
        ASSERT_EQ(levels[i], (shape.At(phases[i] + 7.3) - 1) * 30 - 5);
        const double place = levels[i] + 99.5;
        ASSERT_EQ(points.cells[i], (static_cast<int>(place) + kLength - 2 + i) % kLength);
        ASSERT_EQ(points.fractions[i], std::fmod(place, 1));
    }
    const double* const tremolos[] = {nullptr, phases};
    for (const double* const tremolo : tremolos) {
        std::fill_n(sum, kMaxReads, 0.1);
        reads.mixPair({kLeft.cells, 0.3}, {kRight.cells, 0.7}, tremolo, mixed, count);
        reads.addGained({kLeft.cells, 0.3}, tremolo, levels, sum, count);
        for (int i = 0; i < count; ++i) {
            const double gain = tremolo != nullptr ? tremolo[i] : 1;
            const double both = kLeft.cells[i] * 0.3 + kRight.cells[i] * 0.7;
            ASSERT_EQ(mixed[i], static_cast<float>(both * gain));
            ASSERT_EQ(sum[i], 0.1 + kLeft.cells[i] * gain * 0.3 * levels[i]);
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
        if (!HasProcessorVariant(variant)) continue;
        CheckReads(GetVoiceReads(variant));
        for (const int count : {1, 7, kMaxReads}) CheckSteps(GetVoiceReads(variant), count);
    }
}
