// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/analog_crossover.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <numbers>
#include <optional>
#include <vector>

#include "support/allocation_trap.h"
#include "support/reference_crossover.h"
#include "support/signals.h"

namespace {

using Complex = std::complex<double>;
using Limits = std::vector<double>;
using Form = std::optional<ProcessorVariant>;  // none: band by band

constexpr int kModes = 6;

// A crossover with the states of up to eight channels.
struct Splitter {
    Splitter(const Limits& limits, double sampleRate, int mode) {
        for (AnalogCrossoverState& state : states) ReserveAnalogState(state);
        Build(limits, sampleRate, mode);
    }

    void Build(const Limits& limits, double sampleRate, int mode) {
        const int bands = static_cast<int>(limits.size()) + 1;
        BuildAnalog(crossover, bands, limits.data(), sampleRate, mode);
    }

    // Samples from..to of all channels into outputs, whose rows are band by band.
    void Run(Form form, const Audio& inputs, Audio& outputs, int from, int to) {
        const int channels = static_cast<int>(inputs.size()), count = to - from;
        const auto sources = ReadPointers(inputs, from);
        const auto rows = WritePointers(outputs, from);
        AnalogCrossoverState* pointers[8];
        for (int c = 0; c < 8; ++c) pointers[c] = &states[c];
        if (form) {
            const AllocationTrap trap("All bands");
            return RunAnalogBands(*form, crossover, pointers, channels, sources.data(), rows.data(),
                                  count);
        }
        for (int row = 0; row < crossover.bands * channels; ++row) {
            const int c = row % channels;
            std::vector<double> samples(sources[c], sources[c] + count);
            double* const data = samples.data();
            RunAnalogBand(crossover, states[c], row / channels, data, data, count);
            std::copy(samples.begin(), samples.end(), rows[row]);
        }
    }

    // What all operations make of a mono signal: the bands at once, the same band by band, and the
    // signal with the phase of their sum.
    Audio RunAll(const std::vector<float>& input) {
        const int bands = crossover.bands, count = static_cast<int>(input.size());
        Audio outputs = Silence(2 * bands, count);
        outputs.push_back(input);
        Run({}, {input}, outputs, 0, count);
        std::rotate(outputs.begin(), outputs.begin() + bands, outputs.begin() + 2 * bands);
        Run(BestProcessorVariant(), {input}, outputs, 0, count);
        const AllocationTrap trap("The all-pass");
        RunAnalogAllPass(crossover, states[0], outputs.back().data(), count);
        return outputs;
    }

    AnalogCrossover crossover;
    std::array<AnalogCrossoverState, 8> states;
};

Complex Response(const std::vector<float>& impulseResponse, double frequency, double sampleRate) {
    const Complex delay = std::polar(1., -2 * std::numbers::pi * frequency / sampleRate);
    Complex sum = 0;
    for (std::size_t i = impulseResponse.size(); i-- > 0;)
        sum = sum * delay + static_cast<double>(impulseResponse[i]);
    return sum;
}

}  // namespace

TEST(AnalogCrossover, HasTheResponsesOfItsFormulas) {
    constexpr double kTolerance = 2e-6;  // 32-bit rounding of some thousand samples of up to 1
    constexpr double kRates[] = {44100, 96000, 192000}, kLimits[] = {1000, 200, 8000, 100, 3000};
    std::vector<float> impulse(1 << 16);  // the slowest section has decayed by then
    impulse[0] = 1;
    for (int i = 0; i < kModes * 5; ++i) {
        const int mode = i % kModes, bands = i / kModes + 2;
        const double sampleRate = kRates[i % 7 % 3];
        SCOPED_TRACE(testing::Message() << bands << " bands, mode " << mode);
        const ReferenceCrossover reference = {mode, sampleRate, {kLimits, kLimits + (bands - 1)}};
        const Audio outputs = Splitter(reference.limits, sampleRate, mode).RunAll(impulse);
        for (const double frequency : {15., 150., 700., 1000., 2500., 6000., 20000.}) {
            Complex sum = 0;
            for (int b = 0; b < bands; ++b) {
                const Complex band = Response(outputs[b], frequency, sampleRate);
                EXPECT_LT(std::abs(band - reference.Band(b, frequency)), kTolerance) << frequency;
                sum += band;
            }
            // A band above all would have the all-passes alone. In mode 0 they only approximate
            // the sum, within a quarter turn.
            const Complex leftOut = Response(outputs[2 * bands], frequency, sampleRate);
            const Complex expected = reference.Band(bands, frequency) * (mode == 0 ? -1. : 1.);
            EXPECT_LT(std::abs(leftOut - expected), kTolerance) << frequency;
            EXPECT_LT(std::abs(sum - leftOut), mode > 0 ? 6 * kTolerance : std::sqrt(2.))
                << frequency;
        }
    }
}

// The limits move in the middle.
TEST(AnalogCrossover, GivesTheSameByEveryFormHoweverItIsCut) {
    constexpr double kBound = 1e-9;       // as the header says
    constexpr double kRounding = 1.2e-7;  // two results of 32 bits, relative
    constexpr double kBefore[] = {20, 60, 20, 3000, 90000}, kAfter[] = {30, 50, 40, 2000, 80000};
    const std::vector<int> whole = {700, 1400}, cut = {1, 9, 137, 700, 701, 1100, 1400};
    for (int i = 0; i < 6 * kModes; ++i) {
        const int limits = i / kModes, mode = i % kModes, channels = 1 + i % 8;
        SCOPED_TRACE(testing::Message() << limits << " limits, mode " << mode);
        const auto split = [&](Form form, const Audio& inputs, const std::vector<int>& ends) {
            Splitter splitter({kBefore, kBefore + limits}, 192000, mode);
            Audio outputs = Silence((limits + 1) * static_cast<int>(inputs.size()), 1400);
            for (int from = 0; const int to : ends) {
                splitter.Run(form, inputs, outputs, from, to);
                if (to == 700) splitter.Build({kAfter, kAfter + limits}, 192000, mode);
                from = to;
            }
            return outputs;
        };
        const Audio inputs = Noise(channels, 1400, 1), plain = split({}, inputs, whole);
        Audio previous;
        for (const ProcessorVariant variant :
             {ProcessorVariant::Baseline, ProcessorVariant::Avx2, ProcessorVariant::Avx512}) {
            if (!HasProcessorVariant(variant)) continue;
            const Audio outputs = split(variant, inputs, whole);
            EXPECT_TRUE(outputs == split(variant, inputs, cut));
            EXPECT_TRUE(variant != ProcessorVariant::Avx512 || outputs == previous);
            previous = outputs;
            const Audio alone = split(variant, {inputs.back()}, cut);
            for (int b = 0; b <= limits; ++b)
                EXPECT_TRUE(alone[b] == outputs[b * channels + channels - 1]);
            for (std::size_t row = 0; row < plain.size(); ++row)
                EXPECT_LT(LargestDifference({outputs[row]}, {plain[row]}),
                          kBound + kRounding * Peak({plain[row]}));
        }
    }
}

TEST(AnalogCrossover, KeepsItsHistoryWhileBandsAndModeStay) {
    constexpr double kStep = 0.05;  // for a limit that moves by 1 %; a lost history is a step of 1
    constexpr double kSilence = 1e-9;  // with the denormal guard in it
    const std::vector<float> level(4800, 1), silence(4800);
    for (int mode = 0; mode < kModes; ++mode) {
        SCOPED_TRACE(mode);
        Splitter splitter({1000, 8000}, 48000, mode);
        const auto buildLoud = [&](const Limits& limits, int newMode) {
            splitter.RunAll(level);
            splitter.Build(limits, 48000, newMode);
        };
        buildLoud({1010, 8000}, mode);
        const Audio moved = splitter.RunAll(level);
        EXPECT_LT(LargestDifference({moved[0], moved[3], moved[6]}, Audio(3, level)), kStep);
        buildLoud({1010}, mode);
        EXPECT_LT(Peak(splitter.RunAll(silence)), kSilence);
        buildLoud({1010}, (mode + 1) % kModes);
        EXPECT_LT(Peak(splitter.RunAll(silence)), kSilence);
        buildLoud({1010}, (mode + 1) % kModes);
        ClearAnalogState(splitter.states[0]);
        const Audio cleared = splitter.RunAll(silence);
        EXPECT_LT(Peak(cleared), kSilence);
        // What stays is the guard that each filter adds.
        EXPECT_NEAR(cleared[0].back(), cleared[2].back(), 1e-18);
        EXPECT_NEAR(cleared[1].back(), cleared[3].back(), 1e-18);
    }
}

TEST(AnalogCrossover, StaysStableWhereverLimitsStand) {
    const std::vector<float> noise = Noise(1, 20000, 1)[0];
    for (const double sampleRate : {8000., 16. * 384000})
        for (const Limits& limits : {Limits{std::nan(""), HUGE_VAL, -HUGE_VAL, 0, -1},
                                     Limits{20000, 4000, 3999.999, 5e-324, 20}})
            for (int mode = 0; mode < kModes; ++mode)
                EXPECT_LT(Peak(Splitter(limits, sampleRate, mode).RunAll(noise)), 20)
                    << sampleRate << ", mode " << mode;
}
