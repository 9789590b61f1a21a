// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/frame/gain_compensator.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>
#include <utility>

#include "plugin/frame/frame_plugin.h"

namespace {

constexpr int kRate = 48000;

// Gain of the weighting at a frequency: from the same two designs, but in the frequency domain.
double WeightingGain(double hertz) {
    double gain = std::pow(10, 0.00216);
    for (const bool shelf : {true, false}) {
        MAudioFilters::Filter<double> f;
        f.Set(shelf ? MAudioFilters::FilterType::HighShelf : MAudioFilters::FilterType::HighPass,
              shelf ? 1501.5 : 38.05, kRate, shelf ? 0.7072 : 0.5, shelf ? 4 : 0);
        const std::complex<double> z = std::polar(1.0, -2 * std::numbers::pi * hertz / kRate);
        gain *= std::abs((f.b0 + (f.b1 + f.b2 * z) * z) / (1.0 - (f.a1 + f.a2 * z) * z));
    }
    return gain;
}

// Loudness in decibels from `from` to `to` seconds, weighted by ITU-R BS.1770-4's own filters at
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

}  // namespace

TEST(MovingSum, IsTheSumOfTheLastValues) {
    Audio noise = Noise(1, 3000, 1);
    for (float& value : noise[0]) value *= value;  // powers
    for (const int block : {1, 7, 100, 101, 250}) {
        MovingSum sum;
        sum.Prepare(100);
        for (int from = 0; from + block <= 3000; from += block) {
            const std::vector<double> values(noise[0].begin() + from,
                                             noise[0].begin() + from + block);
            sum.Push(values.data(), block);
            double expected = 0;
            for (int i = std::max(0, from + block - 100); i < from + block; ++i)
                expected += noise[0][static_cast<std::size_t>(i)];
            ASSERT_NEAR(sum.Sum(), expected, 1e-12) << block << " at " << from;
        }
    }
}

TEST(GainCompensation, WeighsByFrequency) {
    // One sine in, another of the same level out: the gain is the ratio of the weights.
    for (const auto& [in, out] : {std::pair{1000.0, 50.0}, {30.0, 1000.0}, {8000.0, 1000.0}}) {
        MGainCompensator compensator;
        compensator.Prepare(kRate, 1, 0);
        for (int from = 0; from < 4 * kRate; from += 480) {
            float input[480], output[480];
            for (int i = 0; i < 480; ++i) {
                const double t = 2 * std::numbers::pi * (from + i) / kRate;
                input[i] = static_cast<float>(0.5 * std::sin(t * in));
                output[i] = static_cast<float>(0.5 * std::sin(t * out));
            }
            const float* const inputs[] = {input};
            float* const outputs[] = {output};
            compensator.AnalyseInput(inputs, 480, 1);
            compensator.Apply(outputs, 480, 1);
        }
        // The window holds a whole number of periods; what is left are the filters' transients.
        EXPECT_NEAR(compensator.Gain(), WeightingGain(in) / WeightingGain(out), 1e-4);
    }
}

TEST(GainCompensation, HoldsTheLoudnessOfNoise) {
    for (const float gain : {0.25f, 1.0f, 3.0f})
        for (const int block : {64, 1000}) {
            FramePlugin plugin;
            plugin.SetHostSampleRate(kRate);
            plugin.agcEnabled = 1;
            plugin.gain = gain;
            plugin.latency = 500;
            plugin.Prepare(block);
            const Audio in = Noise(2, 8 * kRate, 0.3f);
            const Audio out = plugin.Run(in, 2, block);
            EXPECT_EQ(out[0][0], 0);  // fades in
            for (std::size_t i = 500; i < 2 * kRate; ++i)
                ASSERT_LE(std::abs(out[1][i]), std::abs(in[1][i - 500] * gain) * 1.000001f + 1e-9);
            EXPECT_NEAR(Loudness(out, 5, 8), Loudness(in, 5, 8), 0.1) << gain;
        }
}

TEST(GainCompensation, StaysWithinItsRange) {
    struct Case {
        float in, out;
        double gain;
    };
    for (const Case& each : {Case{0, 0, 1}, Case{1, 1e-3f, 100}, Case{1e-4f, 1, 0.01}}) {
        MGainCompensator compensator;
        compensator.Prepare(kRate, 1, 0);
        const Audio in = Noise(1, kRate / 10, each.in);
        for (int block = 0; block < 30; ++block) {
            Audio out = Noise(1, kRate / 10, each.out);
            compensator.AnalyseInput(ReadPointers(in).data(), kRate / 10, 1);
            compensator.Apply(WritePointers(out).data(), kRate / 10, 1);
        }
        EXPECT_DOUBLE_EQ(compensator.Gain(), each.gain);
    }
}
