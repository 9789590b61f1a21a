// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>
#include <utility>
#include <vector>

#include "support/signals.h"
#include "support/slow_linear_crossover.h"

// A plug-in of several bands once more, slow and literal: 64-bit samples, every filter run by
// itself, every convolution term by term. Limits stand still; everything else moves from block to
// block. Each effect is a gain and a delay.
//
// Units    hertz, decibels, samples

struct ReferenceBandSettings {
    struct Band {
        double gain = 0, pan = 0;
        bool mute = false, bypass = false;
        double effectGain = 1;  // what the effect does, besides a delay
    };
    double inputGain = 0, outputGain = 0, dryWet = 1;
    bool isDry = false, isWet = false;
    bool mixMovesGain = true, mixMovesPan = true;
    Band bands[6];

    // By chance, bands beyond those in use too. What stands still is one of five choices.
    static ReferenceBandSettings Drawn(std::minstd_rand& draw, int choice) {
        const auto between = [&](double low, double high) {
            return low + (high - low) * (draw() % 10001) / 10000;
        };
        ReferenceBandSettings settings;
        settings.inputGain = between(-6, 6);
        settings.outputGain = between(-6, 6);
        settings.dryWet = between(0, 1);
        settings.isDry = choice == 1;
        settings.isWet = choice == 2;
        settings.mixMovesGain = choice != 3;
        settings.mixMovesPan = choice != 4;
        for (Band& band : settings.bands) {
            band = {between(-9, 9), between(-1, 1), draw() % 5 == 0, draw() % 4 == 0};
            band.effectGain = 0.1 * static_cast<double>(&band - settings.bands) + 0.3;
        }
        return settings;
    }
};

struct ReferenceBands {
    using Signal = std::vector<double>;
    struct Block {
        int sampleCount;
        ReferenceBandSettings settings;
    };
    enum Kind { Analog, Linear, Hybrid };

    double sampleRate = 48000;
    std::vector<double> limits;
    Kind kind = Analog;
    int mode = 1;
    int effectDelay = 0;

    // Ramps lead from the settings of one block to those of the next one.
    Audio Run(const Audio& input, const std::vector<Block>& blocks) const {
        const std::size_t length = input[0].size();
        std::vector<Signal> sum(2, Signal(length));
        for (int b = 0; b <= int(limits.size()); ++b) {
            std::vector<Signal> dry;
            for (const auto& channel : input) dry.push_back(BandInput(b, channel, blocks));
            ForEachSample(blocks, [&](const Block& now, const Block& last, int at, double share) {
                Pan(now, last, b, share, dry[0][at], dry[1][at]);
                const auto& band = now.settings.bands[b];
                if (band.mute) return;
                const double wet = Wet(now, last, share);
                for (int c = 0; c < 2; ++c) {
                    const double delayed = at < effectDelay ? 0 : dry[c][at - effectDelay];
                    const double mixed = wet * band.effectGain * delayed + (1 - wet) * dry[c][at];
                    const double gain = Move(Factor(last.settings.outputGain),
                                             Factor(now.settings.outputGain), share);
                    sum[c][at] += gain * (band.bypass ? dry[c][at] : mixed);
                }
            });
        }
        Audio output;
        for (const Signal& channel : sum) output.emplace_back(channel.begin(), channel.end());
        return output;
    }

private:
    static double Factor(double decibels) { return std::pow(10, decibels / 20); }
    static double Move(double from, double to, double share) { return from + (to - from) * share; }

    static void ForEachSample(const std::vector<Block>& blocks, auto work) {
        int at = 0;
        for (std::size_t k = 0; k < blocks.size(); ++k)
            for (int i = 0; i < blocks[k].sampleCount; ++i, ++at)
                work(blocks[k], blocks[k > 0 ? k - 1 : 0], at, double(i) / blocks[k].sampleCount);
    }

    static double Wet(const Block& now, const Block& last, double share) {
        if (now.settings.isWet) return 1;
        if (now.settings.isDry) return 0;
        return Move(last.settings.dryWet, now.settings.dryWet, share);
    }

    static double Gain(const Block& now, const Block& last, int band, double share) {
        const auto end = [&](const Block& block, double mix) {
            const double own = Factor(block.settings.bands[band].gain);
            const double shaded = now.settings.mixMovesGain ? mix * own + 1 - mix : own;
            return Factor(block.settings.inputGain) * shaded;
        };
        return Move(end(last, Wet(now, last, 0)), end(now, Wet(now, last, 1)), share);
    }

    static void Pan(const Block& now, const Block& last, int band, double share, double& left,
                    double& right) {
        const double amount = now.settings.mixMovesPan ? Wet(now, last, 0) : 1;
        const double pan =
            amount * Move(last.settings.bands[band].pan, now.settings.bands[band].pan, share);
        const double l = left, r = right;
        left = pan < 0 ? l - pan * r : (1 - pan) * l;
        right = pan < 0 ? (pan + 1) * r : r + pan * l;
    }

    Signal BandInput(int band, const std::vector<float>& channel,
                     const std::vector<Block>& blocks) const {
        Signal x(channel.begin(), channel.end());
        const auto scale = [&](Signal& signal) {
            ForEachSample(blocks, [&](const Block& now, const Block& last, int at, double share) {
                signal[at] *= Gain(now, last, band, share);
            });
        };
        if (kind != Analog) scale(x);
        if (!limits.empty()) x = kind == Analog ? AnalogBand(band, x) : LinearBand(band, x);
        if (kind == Analog) scale(x);
        return x;
    }

    enum Response { LowPass, HighPass, AllPass };

    // A biquad by the audio EQ cookbook, direct form I.
    Signal Filtered(Response response, double frequency, double q, const Signal& x) const {
        const double w = 2 * std::numbers::pi * frequency / sampleRate;
        const double c = std::cos(w), alpha = std::sin(w) / (2 * q), a0 = 1 + alpha;
        const double low =
            response == AllPass ? 1 - alpha : (response == LowPass ? 1 - c : 1 + c) / 2;
        const double middle = response == AllPass ? -2 * c : response == LowPass ? 1 - c : -1 - c;
        const double high = response == AllPass ? 1 + alpha : low;
        Signal y(x.size());
        for (std::size_t i = 0; i < x.size(); ++i) {
            const double x1 = i > 0 ? x[i - 1] : 0, x2 = i > 1 ? x[i - 2] : 0;
            const double y1 = i > 0 ? y[i - 1] : 0, y2 = i > 1 ? y[i - 2] : 0;
            y[i] = (low * x[i] + middle * x1 + high * x2 + 2 * c * y1 - (1 - alpha) * y2) / a0;
        }
        return y;
    }

    Signal Cascade(Response response, double frequency, Signal x) const {
        if (mode == 0) {
            if (response != AllPass) return Filtered(response, frequency, 0.5, x);
            const double pole = std::exp(-2 * std::numbers::pi * frequency / sampleRate);
            double x1 = 0, y1 = 0;
            for (double& sample : x) {
                y1 = pole * sample - x1 + pole * y1;
                x1 = std::exchange(sample, y1);
            }
            return x;
        }
        for (int pass = 0; pass < (response == AllPass ? 1 : 2); ++pass)
            for (int k = 0; k < mode; ++k)
                x = Filtered(response, frequency,
                             0.5 / std::cos(std::numbers::pi * (2 * k + 1) / (4 * mode)), x);
        return x;
    }

    Signal AnalogBand(int band, Signal x) const {
        for (int k = 0; k < band - 1; ++k) x = Cascade(AllPass, limits[k], x);
        if (band > 0) x = Cascade(HighPass, limits[band - 1], x);
        for (std::size_t k = band; k < limits.size(); ++k) x = Cascade(LowPass, limits[k], x);
        if (mode == 0 && band % 2 == 1)
            for (double& sample : x) sample = -sample;
        return x;
    }

    Signal LinearBand(int band, const Signal& x) const {
        const std::vector<float> in(x.begin(), x.end());
        const auto taps = SlowLinear::Band(limits, sampleRate, kind == Hybrid, band);
        Signal y;
        for (std::size_t i = 0; i < in.size(); ++i) y.push_back(SlowLinear::Filtered(taps, in, i));
        return y;
    }
};
