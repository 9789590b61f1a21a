// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include "level_meter.h"
#include "options.h"

// Runs one file through the plug-in, block by block, and on after its end until the sound has died
// away.
//
// Units    frames: one sample for every channel
// Memory   a few blocks, whatever the file's length
// Errors   RenderError, UsageError; Interrupted where the person breaks off. No output is left then
// Method   The plug-in tells by how many samples its output is late. That many are left out at the
//          start and rendered more at the end, so that the output lies on the input. The tail is as
//          long as the plug-in tells at the input's end, less by the silence that the input ends in

struct RenderReport {
    std::int64_t frameCount = 0;  // of the output
    int rate = 0;
    double elapsedSeconds = 0;
    LevelMeter input;
    LevelMeter output;
    bool clips = false;  // the output's format has no room above full scale
};

RenderReport RenderFile(const RenderOptions& options);
