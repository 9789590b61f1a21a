// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include "level_meter.h"
#include "options.h"

// Runs one file through the effect, block by block, and on after its end until the sound has died
// away.
//
// Units    frames: one sample for every channel
// Memory   a few blocks, whatever the file's length
// Errors   RenderError, UsageError; Interrupted where the person breaks off. No output is left then
// Method   The effect tells by how many samples its dry sound is late. That many are left out at
//          the start and rendered more at the end, so that the output lies on the input. Silence is
//          asked for at fixed places of the tail only, so that the length does not depend on the
//          block size

struct RenderReport {
    std::int64_t frameCount = 0;  // of the output
    int rate = 0;
    double elapsedSeconds = 0;
    LevelMeter input;
    LevelMeter output;
    bool clips = false;  // the output's format has no room above full scale
};

RenderReport RenderFile(const RenderOptions& options);
