// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/frame/gain_compensator.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>
#include <utility>

#include "plugin/frame/frame_plugin.h"

namespace {

constexpr int kRate = 48000;

// Decibels from `from` to `to` seconds, weighted by the filters that ITU-R BS.1770-4 gives for
// 48 kHz, tables 1 and 2.
double Loudness(const Audio& audio, int from, int to) {
    double power = 0;
    for (const auto& channel : audio) {
        double a1 = 0, a2 = 0, b1 = 0, b2 = 0;
        for (int i = 0; i < to * kRate; ++i) {
            const double x = channel[static_cast<std::size_t>(i)];
            const double u = x + 1.69065929318241 * a1 - 0.73248077421585 * a2;
            const double v = 1.53512485958697 * u - 2.69169618940638 * a1 + 1.19839281085285 * a2;
            a2 = std::exchange(a1, u);
            const double w = v + 1.99004745483398 * b1 - 0.99007225036621 * b2;
            const double y = w - 2 * b1 + b2;
            b2 = std::exchange(b1, w);
            if (i >= from * kRate) power += y * y;
        }
    }
    return 10 * std::log10(power);
}

Audio Sine(double hertz) {
    Audio audio(1);
    for (int i = 0; i < 4 * kRate; ++i)
        audio[0].push_back(static_cast<float>(0.5 * std::sin(2 * M_PI * hertz * i / kRate)));
    return audio;
}

// The gain at the end of an input and the output that came of it.
double FinalGain(const Audio& in, Audio out) {
    constexpr int kBlock = 480;
    MGainCompensator compensator;
    compensator.Prepare(kRate, 1, 0);
    for (int from = 0; from < static_cast<int>(in[0].size()); from += kBlock) {
        compensator.AnalyseInput(ReadPointers(in, from).data(), kBlock, 1);
        compensator.Apply(WritePointers(out, from).data(), kBlock, 1);
    }
    return compensator.Gain();
}

}  // namespace

TEST(MovingSum, IsTheSumOfTheLastValues) {
    std::vector<double> values(3000);
    for (std::size_t i = 0; i < values.size(); ++i) values[i] = static_cast<double>(i * i % 101);
    for (const int block : {1, 7, 100, 250}) {
        MovingSum sum;
        sum.Prepare(100);
        for (int end = block; end <= 3000; end += block) {
            sum.Push(values.data() + end - block, block);
            const auto from = values.begin() + std::max(end - 100, 0);
            ASSERT_EQ(sum.Sum(), std::accumulate(from, values.begin() + end, 0.0)) << end;
        }
    }
}

TEST(GainCompensation, HoldsTheLoudnessOfNoise) {
    for (const auto& [gain, block] : {std::pair{0.25f, 64}, {1.0f, 1000}, {3.0f, 64}}) {
        FramePlugin plugin;
        plugin.SetHostSampleRate(kRate);
        plugin.agcEnabled = 1;
        plugin.gain = gain;
        plugin.latency = 500;
        plugin.Prepare(block);
        const Audio in = Noise(2, 8 * kRate, 0.3f);
        const Audio out = plugin.Run(in, block);
        EXPECT_EQ(out[0][0], 0);  // fades in
        for (std::size_t i = 500; i < 2 * kRate; ++i)
            ASSERT_LE(std::abs(out[1][i]), std::abs(in[1][i - 500] * gain) * 1.000001f + 1e-9);
        EXPECT_NEAR(Loudness(out, 5, 8), Loudness(in, 5, 8), 0.1) << gain;
    }
}

TEST(GainCompensation, EvensTheWeightedLoudnessWithinItsRange) {
    const auto noise = [](float peak) { return Noise(1, 4 * kRate, peak); };
    for (const auto& [in, out] : {std::pair{Sine(1000), Sine(50)},
                                  {Sine(30), Sine(1000)},
                                  {Sine(8000), Sine(1000)},
                                  {noise(1), noise(1e-3f)},
                                  {noise(1e-4f), noise(1)}}) {
        const double expected = std::clamp(Loudness(in, 3, 4) - Loudness(out, 3, 4), -40.0, 40.0);
        // The designs are fits to the published filters.
        EXPECT_NEAR(20 * std::log10(FinalGain(in, out)), expected, 0.15);
    }
    EXPECT_EQ(FinalGain(noise(0), noise(0)), 1);
}
