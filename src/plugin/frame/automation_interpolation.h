// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <limits>
#include <vector>

class AutomationAdapter;
class AutomationOwner;
class ParameterRecord;

// Moves the smoothed parameters across a block in as many steps as the block has sub-blocks.
//
//     const bool moves = interpolation.Prepare(96);
//     Process(32);
//     if (moves) interpolation.Process(32);
//     Process(64);
//     if (moves) interpolation.Finish();
//
// Units    samples; positions 0..1
// Threads  Prepare, Process and Finish on the audio thread, under the owner's lock; the list is
//          changed apart from them
// Memory   only changes of the list allocate
// Errors   what an adapter raises
class AutomationInterpolation {
public:
    explicit AutomationInterpolation(AutomationOwner& owner) : owner(owner) {}

    void Clear() { records.clear(); }
    // Takes up those of its parameters that are smoothed.
    void Add(AutomationAdapter& adapter);

    // In place of Prepare, before a block that is too short for moves: everything jumps, and no
    // later block goes back.
    void Follow();
    // Before a block: whether a parameter has moved since the last one. A parameter's first block
    // only takes note of where it stands. Moves are spread over the block from two samples on; they
    // start where the last block ended, and what others set meanwhile has no effect beyond it.
    bool Prepare(int sampleCount);
    // Behind a sub-block of that length, unless it was the last.
    void Process(int sampleCount);
    // Behind the block: everything has arrived.
    void Finish();

private:
    struct Record {
        // Takes note of the position, which costs more than a look at the value.
        void Look();

        AutomationAdapter* adapter;
        int index;                      // the adapter's
        const ParameterRecord* source;  // null: the position is asked for each time
        double value = std::numeric_limits<double>::quiet_NaN();  // of which current was made
        double previous = 0;                                      // where the last block ended
        double current = 0;                                       // where this one leads
        double running = 0;
        double delta = 0;  // a sample
        bool started = false;
        bool moving = false;
    };

    bool FindMoves();

    AutomationOwner& owner;
    std::vector<Record> records;
};
