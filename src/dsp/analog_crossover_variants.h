// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "dsp/analog_crossover.h"

// The variants that RunAnalogBands picks from; each is compiled for its own processor.

// One call of RunAnalogBands. The states have room and belong to the crossover's structure.
struct AnalogSplit {
    // Pairs of bands, of all channels.
    int Pieces() const { return (crossover.bands + 1) / 2 * channels; }

    const AnalogCrossover& crossover;
    AnalogCrossoverState* const* states;
    int channels;
    const float* const* sources;
    float* const* destinations;
    int count;
};

using RunAnalogLanes = void (*)(const AnalogSplit& split);

extern const RunAnalogLanes kBaselineAnalogLanes;
extern const RunAnalogLanes kAvx2AnalogLanes;
extern const RunAnalogLanes kAvx512AnalogLanes;
