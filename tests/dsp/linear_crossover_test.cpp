// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/linear_crossover.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <tuple>
#include <vector>

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
    {8000, false, {5000}},  // everything is below what the rate does not reach
};

// A crossover with one channel.
struct Splitter {
    explicit Splitter(const Setting& setting) : bands(setting.Bands()) {
        BuildLinear(crossover, bands, setting.frequencies.data(), setting.sampleRate,
                    setting.fixedQ);
    }

    // Each band of its own input, in blocks as a host's come; in and out may be one.
    void Split(const Audio& in, Audio& out, int blockSize) {
        const int total = static_cast<int>(in[0].size());
        for (int i = 0; i < total; i += blockSize)
            for (int b = 0; b < bands; ++b)
                RunLinearBand(crossover, channel, b, in[b].data() + i, out[b].data() + i,
                              std::min(blockSize, total - i));
    }
    Audio Split(const Samples& in, int blockSize) {
        Audio out(bands, in);
        Split(Audio(bands, in), out, blockSize);
        return out;
    }

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
            const auto& [sampleRate, fixedQ, frequencies] = setting;
            const auto taps = SlowLinear::Band(frequencies, sampleRate, fixedQ, b);
            // The transforms' error: 12 stages of 32-bit arithmetic on samples of full scale.
            for (std::size_t i = 0; i < kNoise.size(); i += 3)
                ASSERT_NEAR(bands[b][i], SlowLinear::Filtered(taps, kNoise, i), 2e-6)
                    << sampleRate << " Hz, band " << b << " at " << i;
        }
    }
}

// Bands further apart than their transitions are wide leave nothing out and nothing twice, but for
// the low-passes' gain: their window has its top half a sample beside the centre, where it
// is 8.5e-6 below 1.
TEST(LinearCrossover, SumsToItsInputOnTime) {
    for (const int bands : {1, 2, 3, 4, 5, 6}) {
        Setting setting{44100, false, {}};
        for (int b = 1; b < bands; ++b) setting.frequencies.push_back(3500 * b);
        const Audio split = Splitter(setting).Split(kNoise, 333);
        const int late = bands > 1 ? kLinearCrossoverLatency : 0;
        for (std::size_t i = 0; i < kNoise.size(); ++i) {
            double sum = 0;
            for (const Samples& band : split) sum += band[i];
            const bool early = static_cast<int>(i) < late;
            ASSERT_NEAR(sum, early ? 0 : kNoise[i - late], 1e-5 * bands) << bands << " at " << i;
        }
    }
}

TEST(LinearCrossover, DoesNotCareHowTheBlocksAreCut) {
    const Setting& setting = kSettings[2];
    const Audio expected = Splitter(setting).Split(kNoise, 9000);
    for (const int blockSize : {1, 7, 64, 333, 2048, 5000}) {
        Splitter splitter(setting);
        ReserveLinearChannel(splitter.channel, setting.Bands(), blockSize);
        for (int round = 0; round < 2; ++round) {
            Audio bands(setting.Bands(), kNoise);
            {
                const AllocationTrap trap("RunLinearBand");
                splitter.Split(bands, bands, blockSize);
                ResetLinearChannel(splitter.channel);
            }
            ASSERT_EQ(bands, expected) << blockSize;
        }
    }
}

// Bands of the same input are transformed together; nobody must hear of it.
TEST(LinearCrossover, GivesEachBandItsOwnInput) {
    const Setting& setting = kSettings[3];
    const int bands = setting.Bands();
    Audio in = Noise(bands, 9000, 1);
    in[2] = in[1];
    std::copy(in[1].begin(), in[1].begin() + 5500, in[3].begin());  // parts in the midst of a hop
    std::fill(in[4].begin(), in[4].end(), 0.0f);
    Audio together = in;
    Splitter(setting).Split(in, together, 64);
    for (int b = 0; b < bands; ++b)
        EXPECT_EQ(Splitter(setting).Split(in[b], 64)[b], together[b]) << b;
}

TEST(LinearCrossover, ShortensHybridKernelsWithTheFrequency) {
    for (const auto& [frequency, sampleRate, length] :
         {std::tuple(10000.0, 44100.0, 55),  // 55.3
          {11000.0, 44100.0, 51},            // 50.3, made odd
          {500.0, 44100.0, 1025},            // 1105.8: no longer than all
          {20000.0, 192000.0, 121},          // 120.4
          {1e9, 44100.0, 1}}) {
        LinearCrossover crossover;
        BuildLinear(crossover, 2, &frequency, sampleRate, true);
        EXPECT_EQ(crossover.kernels[0].activeLength, length) << frequency;
    }
}

TEST(LinearCrossover, TakesMemoryOnlyForWhatIsUsed) {
    const double high[] = {4000, 9000, 15000}, low[] = {30, 100, 500};
    LinearCrossover crossover;
    BuildLinear(crossover, 4, high, 48000, true);
    LinearCrossoverChannel channel;
    const AllocationTrap trap("BuildLinear, ResetLinearChannel");
    BuildLinear(crossover, 4, low, 48000, true);
    ResetLinearChannel(channel);
    ReserveLinearChannel(channel, 1, 64);
}

// Three roundings to 32 bits: of the sine's quotient, of the window and of their product. An
// impulse comes out as the taps, times the gain.
TEST(FirKernel, HasTheTapsOfTheFormula) {
    for (const Setting& setting : kSettings) {
        FirKernel kernel;
        kernel.normalise = setting.fixedQ;
        kernel.gain = -3;
        const double frequency = setting.frequencies.back();
        DesignLowPass(kernel, {frequency, setting.sampleRate, SlowLinear::kTaps,
                               setting.fixedQ ? frequency : -1});
        ComputeSpectrum(kernel, 2048);
        alignas(16) float block[2048] = {0, 0, 0, 1}, spectrum[2050];
        TransformBlock(kernel, block, spectrum);
        FilterSpectrum(kernel, spectrum, block);
        const auto taps = SlowLinear::LowPass(frequency, setting.sampleRate, setting.fixedQ);
        for (int i = 0; i < SlowLinear::kTaps; ++i) {
            ASSERT_NEAR(kernel.taps[i], taps[i], 2e-7 * std::abs(taps[i]) + 1e-12) << i;
            ASSERT_NEAR(block[i + 3] / (setting.fixedQ ? -3 : -3 * 2048), taps[i], 2e-7) << i;
        }
    }
}
