// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>

#include "dsp/audio_filter.h"
#include "dsp/delay.h"
#include "dsp/shape_table.h"
#include "dsp/vibrato.h"
#include "effect/chorus_saturator.h"
#include "effect/chorus_voices.h"

// A filter that is left out of the path while its frequency rests at an end of the range. One set
// of coefficients serves all channels.
struct SwitchedFilter {
    static constexpr int kMaxChannels = 8;

    bool enabled = false;
    MAudioFilters::Filter<double> filter;
    std::array<MAudioFilters::FilterMemory, kMaxChannels> filterState{};
};

// What one chorus remembers from sample to sample.
//
// Threads  the effect's lock guards all of it
struct ChorusState {
    static constexpr int kMaxChannels = SwitchedFilter::kMaxChannels;

    ShapeTable shape;
    ChorusVoices voices;
    ChorusSaturator saturator;
    SwitchedFilter maxFrequencyFilter;
    SwitchedFilter minFrequencyFilter;
    std::array<MAudioFilters::Vibrato<float>, kMaxChannels> vibrato;
    std::array<MAudioFilters::Delay<float>, kMaxChannels> dryDelay;
    std::array<std::array<MAudioFilters::Delay<float>, 2>, ChorusVoices::kMaxVoices> haasDelay;
};
