// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "hosts/vst2/vst2_interface.h"

// The window of an effect, as a VST 2 host handles it. What nobody overrides does nothing.
//
// Threads  the host's user-interface thread
// Errors   none gets out
class AEffEditor {
public:
    AEffEditor() = default;
    AEffEditor(const AEffEditor&) = delete;
    AEffEditor& operator=(const AEffEditor&) = delete;
    virtual ~AEffEditor() = default;

    // The rectangle is the editor's. Whether there is one.
    virtual bool getRect(ERect**) { return false; }
    // Inside the host's window. Whether it opened.
    virtual bool open(void*) { return false; }
    virtual void close() {}
    virtual void idle() {}
    // Whether the key was used; others go back to the host.
    virtual bool onKeyDown(const VstKeyCode&) { return false; }
    virtual bool onKeyUp(const VstKeyCode&) { return false; }
    // Draws all anew.
    virtual void update() {}
};
