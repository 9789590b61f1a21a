// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include "foundation/objects/object.h"

struct EditorSize {
    int width = 0;
    int height = 0;
};

// What a plug-in calls its host with.
//
// Threads  SendAutomation and GenerateMIDIEvent on any, the audio thread included; the others on
//          any but that
class MAudioPluginAdapter : public MObject {
public:
    // A parameter was changed by the plug-in; position 0..1.
    virtual void SendAutomation(int index, double position) = 0;
    // time in samples from the start of the block; a raw message of 3 bytes.
    virtual void GenerateMIDIEvent(int time, const std::uint8_t* bytes) = 0;
    // The plug-in's GetReportedLatency has another answer now.
    virtual void UpdateLatency() = 0;
    // What a song keeps has changed otherwise: by a load, or in something that is no parameter.
    virtual void StateChanged() {}
    // False where the host does not agree.
    virtual bool ChangeEditorSize(EditorSize size) = 0;
};
