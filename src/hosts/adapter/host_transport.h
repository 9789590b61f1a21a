// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>

class MAudioPlugin;

// What a host tells of its transport at the start of a block; empty is what it does not know.
//
// Units    quarter notes from the song's start, beats a minute
struct HostTime {
    struct Signature {
        int numerator = 0;
        int denominator = 0;
    };
    struct Cycle {
        double start = 0;
        double end = 0;
    };

    std::optional<double> position;
    std::optional<double> tempo;
    std::optional<Signature> signature;
    std::optional<double> barStart;  // the last bar line
    std::optional<Cycle> cycle;      // without one the plug-in sees none
    bool playing = false;
};

// Takes the transport of a host over into a plug-in, before each block.
//
// Ranges   what can't be, as a tempo of 0 or a position that is no number, counts as not known
// Threads  the audio thread
// Memory   none
// Errors   none
// Method   a position that moves by more than 2 quarter notes from one block to the next is a
//          jump, and the block behind it does not count as playing. Bar lines are snapped to the
//          unit of the signature, since hosts round them in their own ways
class HostTransport {
public:
    // The host's clock is there, whatever it tells.
    static void SetValid(MAudioPlugin& plugin);
    // SetValid, and all that is known.
    void Take(const HostTime& time, MAudioPlugin& plugin);

private:
    void TakePlaying(bool playing, MAudioPlugin& plugin);

    double lastPosition = 0;
};
