// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <memory>

#include "dsp/analog_crossover.h"
#include "dsp/linear_crossover.h"
#include "plugin/frame/channels.h"

// The crossover of a plug-in: one of two kinds, with a state for each channel that is in use.
//
//     splitter.Prepare({.buses = 1, .channels = 2, .blockSize = 512});
//     splitter.Build({.bands = 3, .limits = {200, 2000}, .sampleRate = 48000});
//     splitter.SplitAnalog(inputs, outputs, count);
//
// Units    hertz, samples
// Threads  under the owner's lock
// Memory   Prepare allocates, and Build where its design has other bands, another kind or another
//          mode than the last one; new limits and the work on samples do not. What is not in use
//          owns nothing
// Errors   std::bad_alloc out of Prepare and Build, behind which another Build is due
class BandSplitter {
public:
    static constexpr int kMaxBands = 6;
    static constexpr int kMaxLimits = kMaxBands - 1;

    struct Design {
        bool operator==(const Design&) const = default;
        bool SplitsAnalog() const { return bands > 1 && !linear; }
        bool SplitsLinear() const { return bands > 1 && linear; }
        // States of the one make no sense in the other.
        bool HasStructureOf(const Design& other) const {
            return bands == other.bands && linear == other.linear && mode == other.mode;
        }

        int bands = 1;
        std::array<double, kMaxLimits> limits{};  // between bands; those beyond are 0
        int sampleRate = 0;
        int mode = 1;         // slope of the analog kind
        bool linear = false;  // linear-phase or hybrid
        bool fixedQ = false;  // hybrid
    };

    struct Room {
        int buses = 0;
        int channels = 0;   // of each bus
        int blockSize = 0;  // the largest block that does not allocate
    };

    // States of channels that there are already stay.
    void Prepare(const Room& newRoom);
    // False behind a Prepare that has failed, too.
    bool HasRoomFor(int buses, int channels) const {
        return buses <= room.buses && channels <= room.channels;
    }
    // Nothing happens where the design is the one in use. Another structure starts from silence.
    void Build(const Design& newDesign);
    void Clear();

    const Design& Used() const { return design; }

    // All bands of the first channels of the first buses. sources are told by slot; destinations
    // by band, bus and channel, one behind the other.
    void SplitAnalog(const float* const* sources, int buses, int channels,
                     float* const* destinations, int count);
    // One band of one channel, in place.
    void RunLinear(int band, std::size_t slot, float* buffer, int count);
    // The phase of the analog bands' sum, for a channel that is left out. In place.
    void PassAnalog(std::size_t slot, float* buffer, int count);

private:
    void ProvideStates(const Room& newRoom, const Design& next);

    Design design;
    Room room;
    AnalogCrossover analogCrossover;
    std::array<std::unique_ptr<AnalogCrossoverState>, kChannelSlots> analogCrossoverState;
    std::unique_ptr<LinearCrossover> linearCrossover;
    std::array<std::unique_ptr<LinearCrossoverChannel>, kChannelSlots> linearCrossoverState;
};
