// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Where the host's song stands at the first sample of a block.
//
// Units    tempo in beats a minute; position and barStart in quarter notes
// Ranges   a negative value means that the host does not tell. While the host stands still only
//          tempo keeps its last value
// Threads  filled and read on the audio thread

struct TransportInfo {
    double tempo = -1;
    double position = -1;
    double barStart = -1;
    int timeSigNumerator = -1;
    int timeSigDenominator = -1;
};
