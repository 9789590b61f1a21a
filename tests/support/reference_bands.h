// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cmath>
#include <vector>

#include "dsp/analog_crossover.h"
#include "support/signals.h"
#include "support/slow_linear_crossover.h"

// A plug-in of several bands once more, slow and literal: 64-bit samples, one band, filter and term
// of a convolution after the other. Limits stand still; everything else moves from block to block.
// Each effect is a level and a delay. Of the engine's parts it uses the plain form of the analog
// crossover, which is compared with its prototypes by itself.
//
// Units    hertz, decibels, samples

struct ReferenceBands {
    struct Block {
        int sampleCount;
        double input, output, dryWet;
        double gain[6], pan[6];
        bool mute[6], bypass[6];
    };
    enum Kind { Analog, Linear, Hybrid };
    // What of the mix stands still, or stays out of the way of gain or panorama.
    enum Choice { All, Dry, Wet, NotGain, NotPan };
    using Signal = std::vector<double>;

    std::vector<double> limits;
    Kind kind = Analog;
    int mode = 1;
    double sampleRate = 48000;
    Choice choice = All;
    int effectDelay = 0;
    double level[6] = {};

    // Ramps lead from the settings of one block to those of the next one.
    Audio Run(const Audio& input, const std::vector<Block>& blocks) const {
        std::vector<Signal> sum(2, Signal(input[0].size()));
        for (int b = 0; b <= int(limits.size()); ++b) {
            Signal dry[2] = {BandInput(b, input[0], blocks), BandInput(b, input[1], blocks)};
            ForEachSample(blocks, [&](const Block& now, const Block& last, int at, double share) {
                const double amount = choice == NotPan ? 1 : Mix(now, last, 0);
                Pan(amount * Move(last.pan[b], now.pan[b], share), dry[0][at], dry[1][at]);
                const double wet = now.bypass[b] ? 0 : Mix(now, last, share);
                const double gain = Move(Factor(last.output), Factor(now.output), share);
                for (int c = 0; c < 2 && !now.mute[b]; ++c) {
                    const double late = at < effectDelay ? 0 : dry[c][at - effectDelay];
                    sum[c][at] += gain * (wet * level[b] * late + (1 - wet) * dry[c][at]);
                }
            });
        }
        return {{sum[0].begin(), sum[0].end()}, {sum[1].begin(), sum[1].end()}};
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

    double Mix(const Block& now, const Block& last, double share) const {
        return choice == Wet ? 1 : choice == Dry ? 0 : Move(last.dryWet, now.dryWet, share);
    }

    static void Pan(double pan, double& left, double& right) {
        const double l = left, r = right;
        left = pan < 0 ? l - pan * r : (1 - pan) * l;
        right = pan < 0 ? (pan + 1) * r : r + pan * l;
    }

    Signal BandInput(int band, const std::vector<float>& in,
                     const std::vector<Block>& blocks) const {
        Signal x = kind == Analog ? AnalogBand(band, {in.begin(), in.end()})
                                  : Signal(in.begin(), in.end());
        ForEachSample(blocks, [&](const Block& now, const Block& last, int at, double share) {
            const auto end = [&](const Block& block, double mix) {
                const double wet = choice == NotGain ? 1 : mix;
                return Factor(block.input) * (wet * Factor(block.gain[band]) + 1 - wet);
            };
            x[at] *= Move(end(last, Mix(now, last, 0)), end(now, Mix(now, last, 1)), share);
        });
        if (kind == Analog) return x;
        const std::vector<float> scaled(x.begin(), x.end());
        const auto taps = SlowLinear::Band(limits, sampleRate, kind == Hybrid, band);
        for (std::size_t i = 0; i < x.size(); ++i) x[i] = SlowLinear::Filtered(taps, scaled, i);
        return x;
    }

    Signal AnalogBand(int band, Signal x) const {
        if (limits.empty()) return x;
        AnalogCrossover crossover;
        AnalogCrossoverState state;
        BuildAnalog(crossover, int(limits.size()) + 1, limits.data(), sampleRate, mode);
        Signal y(x.size());
        for (int b = 0; b <= band; ++b)
            RunAnalogBand(crossover, state, b, x.data(), y.data(), int(x.size()));
        return y;
    }
};
