// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/objects/object.h"

// What a plug-in needs of its presets, which stand above it.
//
// Errors   what is raised ends in the plug-in
class MPresetServices : public MObject {
public:
    // Goes that many presets forward, back where steps is below 0. On the user-interface thread.
    virtual void StepPreset(int steps) = 0;
    // Rate or channels have changed. Not on the audio thread; stateLock and processLock are held.
    virtual void InitProcessingActivePresets() = 0;
    // The plug-in's state was loaded. On the thread that loads, under no lock.
    virtual void ActualiseActivePresetsAfterLoading() = 0;
};
