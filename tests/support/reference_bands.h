// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cmath>
#include <vector>

#include "dsp/analog_crossover.h"
#include "support/signals.h"
#include "support/slow_linear_crossover.h"

// A plug-in of several bands once more, slow and literal: 64-bit samples, one band, filter and term
// of a convolution after the other. Limits stand still; everything else moves from block to block.
// Each effect is a gain and a delay. Of the engine's parts it uses the plain form of the analog
// crossover, which is compared with its prototypes by itself.
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
        if (kind == Analog) {
            x = AnalogBand(band, x);
            scale(x);
            return x;
        }
        scale(x);
        const std::vector<float> in(x.begin(), x.end());
        const auto taps = SlowLinear::Band(limits, sampleRate, kind == Hybrid, band);
        for (std::size_t i = 0; i < x.size(); ++i) x[i] = SlowLinear::Filtered(taps, in, i);
        return x;
    }

    Signal AnalogBand(int band, Signal x) const {
        AnalogCrossover crossover;
        AnalogCrossoverState state;
        BuildAnalog(crossover, int(limits.size()) + 1, limits.data(), sampleRate, mode);
        Signal y(x.size());
        for (int b = 0; b <= band && !limits.empty(); ++b)
            RunAnalogBand(crossover, state, b, x.data(), y.data(), int(x.size()));
        return limits.empty() ? x : y;
    }
};
