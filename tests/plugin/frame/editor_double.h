// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>

#include "foundation/objects/event_processor.h"
#include "plugin/frame/editor_factory.h"

class MAudioPlugin::MEditor {};

// A user interface of one editor at most.
struct EditorDouble : MEditorFactory {
    bool HasGUI() override { return made; }
    bool InitializeGUI() override { return made = available; }
    MEventProcessor& Events() override { return events; }
    void RaisePendingEvents() override { ++raised; }
    MAudioPlugin::MEditor* MakeEditor(MAudioPlugin&, void*, MStyle*) override { return &editor; }
    void LayOut(MAudioPlugin::MEditor&) override { ++layouts; }
    void Resize(MAudioPlugin::MEditor&, EditorSize) override {}
    void Destroy(MAudioPlugin::MEditor*) override { ++destroyed; }

    bool available = false;
    std::atomic<bool> made = false;
    std::atomic<int> raised = 0;
    int layouts = 0, destroyed = 0;
    MEventProcessor events;
    MAudioPlugin::MEditor editor;
};
