// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "plugin/frame/audio_plugin.h"

class MEventProcessor;
class MStyle;

// What a plug-in needs of the user interface, which stands above it.
//
// Threads  HasGUI, Events and RaisePendingEvents on any, the audio thread included: they neither
//          wait nor allocate, and the queue has room reserved for what plug-ins post. The others on
//          the user-interface thread
class MEditorFactory : public MObject {
public:
    // Whether the shared user-interface system exists, which is made once per process.
    virtual bool HasGUI() = 0;
    // Makes it where it is missing; false where there can be none.
    virtual bool InitializeGUI() = 0;
    // The queue that the user-interface thread drains; only where the system exists.
    virtual MEventProcessor& Events() = 0;
    // Tells the system that something waits in that queue.
    virtual void RaisePendingEvents() = 0;

    // The modifier keys that are held, in the bits of the window system.
    virtual std::uint32_t KeyState() { return 0; }

    // The editor of a plug-in, empty; null where there can be none.
    virtual MAudioPlugin::MEditor* MakeEditor(MAudioPlugin& plugin, void* parent,
                                              MStyle* style) = 0;
    virtual void LayOut(MAudioPlugin::MEditor& editor) = 0;
    virtual void Resize(MAudioPlugin::MEditor& editor, EditorSize size) = 0;
    virtual void Destroy(MAudioPlugin::MEditor* editor) = 0;
};
