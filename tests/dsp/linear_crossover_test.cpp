// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/linear_crossover.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <tuple>
#include <vector>

#include "foundation/text/exception.h"
#include "support/allocation_trap.h"
#include "support/signals.h"
#include "support/slow_linear_crossover.h"

namespace {

using Samples = std::vector<float>;

struct Setting {
    double sampleRate;
    bool fixedQ;
    std::vector<double> frequencies;

    int Bands() const { return static_cast<int>(frequencies.size()) + 1; }
};

const Setting kSettings[] = {
    {44100, false, {1000}},
    {44100, true, {200, 2000}},
    {48000, false, {200, 1000, 5000}},
    {48000, true, {100, 500, 2000, 8000}},
    {96000, false, {2000, 6000, 12000, 20000}},
    {192000, true, {100, 300, 1000, 3000, 8000}},
};

// A crossover with one channel.
struct Splitter {
    explicit Splitter(const Setting& setting) : bands(setting.Bands()) {
        BuildLinear(crossover, bands, setting.frequencies.data(), setting.sampleRate,
                    setting.fixedQ);
    }

    // Every band's output for blocks of blockSize of its own input, as a host's blocks come.
    Audio Split(const Audio& in, int blockSize) {
        Audio out = in;
        const int total = static_cast<int>(in[0].size());
        for (int i = 0; i < total; i += blockSize)
            for (int b = 0; b < bands; ++b)
                RunLinearBand(crossover, channel, b, in[b].data() + i, out[b].data() + i,
                              std::min(blockSize, total - i));
        return out;
    }
    // Of one input.
    Audio Split(const Samples& in, int blockSize) { return Split(Audio(bands, in), blockSize); }

    int bands;
    LinearCrossover crossover;
    LinearCrossoverChannel channel;
};

const Samples kNoise = Noise(1, 9000, 1)[0];

}  // namespace

TEST(LinearCrossover, SplitsAsTheFormulasSay) {
    for (const Setting& setting : kSettings) {
        const Audio bands = Splitter(setting).Split(kNoise, 64);
        for (std::size_t b = 0; b < bands.size(); ++b) {
            const auto taps =
                SlowLinear::Band(setting.frequencies, setting.sampleRate, setting.fixedQ, b);
            // The transforms' error: 12 stages of 32-bit arithmetic on samples of full scale.
            for (std::size_t i = 0; i < kNoise.size(); i += 3)
                ASSERT_NEAR(bands[b][i], SlowLinear::Filtered(taps, kNoise, i), 2e-6)
                    << setting.sampleRate << " Hz, band " << b << " at " << i;
        }
    }
}

// Bands further apart than their transitions are wide leave nothing out and nothing twice, but for
// the low-passes' gain: their window has its top half a sample beside the centre, where it
// is 8.5e-6 below 1.
TEST(LinearCrossover, SumsToItsInputOnTime) {
    for (const double sampleRate : {44100.0, 192000.0}) {
        for (const int bands : {1, 2, 3, 4, 5, 6}) {
            Setting setting{sampleRate, false, {}};
            for (int b = 1; b < bands; ++b) setting.frequencies.push_back(0.08 * b * sampleRate);
            const Audio split = Splitter(setting).Split(kNoise, 333);
            const int late = bands > 1 ? kLinearCrossoverLatency : 0;
            for (std::size_t i = 0; i < kNoise.size(); ++i) {
                double sum = 0;
                for (const Samples& band : split) sum += band[i];
                const bool early = static_cast<int>(i) < late;
                ASSERT_NEAR(sum, early ? 0 : kNoise[i - late], 1e-5 * bands)
                    << bands << " at " << i;
            }
        }
    }
}

TEST(LinearCrossover, DoesNotCareHowTheBlocksAreCut) {
    const Setting& setting = kSettings[2];
    const Audio expected = Splitter(setting).Split(kNoise, 9000);
    for (const int blockSize : {1, 7, 64, 333, 2048, 5000}) {
        Splitter splitter(setting);
        ReserveLinearChannel(splitter.channel, setting.Bands(), blockSize);
        Samples block(kNoise.begin(), kNoise.begin() + blockSize);
        {
            const AllocationTrap trap("RunLinearBand");
            for (int i = 0; i < 5000; i += blockSize)
                for (int b = 0; b < setting.Bands(); ++b)
                    RunLinearBand(splitter.crossover, splitter.channel, b, block.data(),
                                  block.data(), blockSize);
            ResetLinearChannel(splitter.channel);
        }
        EXPECT_EQ(splitter.Split(kNoise, blockSize), expected) << blockSize;
    }
}

// Bands of the same input are transformed together; nobody must hear of it.
TEST(LinearCrossover, GivesEachBandItsOwnInput) {
    const Setting& setting = kSettings[3];
    const int bands = setting.Bands();
    Audio in = Noise(bands, 9000, 1);
    in[2] = in[1];
    std::fill(in[3].begin(), in[3].end(), 0.0f);
    std::copy(in[1].begin(), in[1].begin() + 4096, in[4].begin());
    const Audio together = Splitter(setting).Split(in, 64);
    for (int b = 0; b < bands; ++b)
        EXPECT_EQ(Splitter(setting).Split(Audio(bands, in[b]), 64)[b], together[b]) << b;
}

TEST(LinearCrossover, ShortensHybridKernelsWithTheFrequency) {
    for (const auto& [frequency, sampleRate, length] :
         {std::tuple(10000.0, 44100.0, 55),  // 55.3
          {11000.0, 44100.0, 51},            // 50.3, made odd
          {1000.0, 44100.0, 553},            // 552.9
          {500.0, 44100.0, 1025},            // 1105.8: no longer than all
          {20000.0, 192000.0, 121},          // 120.4
          {1e9, 44100.0, 1}}) {
        LinearCrossover crossover;
        BuildLinear(crossover, 2, &frequency, sampleRate, true);
        EXPECT_EQ(crossover.kernels[0].activeLength, length) << frequency;
        EXPECT_EQ(crossover.kernels[0].fullLength, 1025);
        BuildLinear(crossover, 2, &frequency, sampleRate, false);
        EXPECT_EQ(crossover.kernels[0].activeLength, 1025);
    }
}

// Where a limit lies above the Nyquist frequency everything is below it.
TEST(LinearCrossover, TakesLimitsThatTheRateDoesNotReach) {
    const Audio bands = Splitter({8000, false, {5000}}).Split(kNoise, 64);
    EXPECT_LT(
        LargestDifference({Samples(bands[1].begin() + kLinearCrossoverLatency, bands[1].end())},
                          Silence(1, 9000 - kLinearCrossoverLatency)),
        1e-5);
}

TEST(LinearCrossover, MovesItsLimitsWithoutTakingMemory) {
    for (const bool fixedQ : {false, true}) {
        const double high[] = {4000, 9000, 15000}, low[] = {30, 100, 500};
        LinearCrossover crossover;
        BuildLinear(crossover, 4, high, 48000, fixedQ);
        const AllocationTrap trap("BuildLinear");
        BuildLinear(crossover, 4, low, 48000, fixedQ);
    }
}

TEST(LinearCrossover, OwnsNothingBeforeItIsUsed) {
    LinearCrossoverChannel channel;
    const AllocationTrap trap("ResetLinearChannel");
    ResetLinearChannel(channel);
    ReserveLinearChannel(channel, 1, 64);
}

TEST(LinearCrossover, TellsWhenSamplesAreMissing) {
    Splitter splitter(kSettings[0]);
    splitter.Split(Samples(5), 5);
    splitter.channel.bands[0].output.Clear();
    Samples samples(5);
    try {
        RunLinearBand(splitter.crossover, splitter.channel, 0, samples.data(), samples.data(), 5);
        FAIL();
    } catch (const MException& exception) {
        EXPECT_STREQ(exception.what(), "Not enough data in the queue.");
    }
}

// The small kernel of 513 taps; an impulse comes out as the taps, times the gain.
TEST(FirKernel, FiltersWithItsGain) {
    for (const auto& [normalise, gain, factor] :
         {std::tuple(true, 1.0f, 1.0f), {true, -3.0f, -3.0f}, {false, 1.0f, 1024.0f}}) {
        FirKernel kernel;
        kernel.normalise = normalise;
        kernel.gain = gain;
        DesignLowPass(kernel, {0.49 * 44100, 176400, 513});
        ComputeSpectrum(kernel, 1024);
        alignas(16) float block[1024] = {}, spectrum[1026];
        block[3] = 1;
        TransformBlock(kernel, block, spectrum);
        FilterSpectrum(kernel, spectrum, block);
        for (int i = 0; i < 513; ++i) EXPECT_NEAR(block[i + 3] / factor, kernel.taps[i], 1e-7) << i;
        EXPECT_NEAR(block[2], 0, 1e-7 * std::abs(factor));
    }
}
