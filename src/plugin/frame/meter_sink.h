// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/objects/object.h"

// Where the audio path leaves the levels that a meter of the editor shows.
//
// Units    largest absolute sample, 1 is full scale
// Threads  Feed and Update on the audio thread, so they neither wait nor allocate; Resize on the
//          user-interface thread
class MMeterSink : public MObject {
public:
    // The level of one sub-block. channel counts from the first one that is shown.
    virtual void Feed(int channel, float peak) = 0;
    // Behind a host's block.
    virtual void Update() = 0;
    // How many channels there are to show.
    virtual void Resize(int channelCount) = 0;
};
