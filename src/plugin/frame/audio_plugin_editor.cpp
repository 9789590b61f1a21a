// SPDX-License-Identifier: GPL-3.0-or-later
#include <utility>

#include "foundation/objects/guarded.h"
#include "plugin/frame/audio_plugin.h"
#include "plugin/frame/automation_update_thread.h"
#include "plugin/frame/editor_factory.h"

AutomationUpdateRequestThread::AutomationUpdateRequestThread(MAudioPlugin& plugin)
    : plugin(plugin) {
    update.Connect<&AutomationUpdateRequestThread::UpdateEditors>(this);
}

std::int32_t AutomationUpdateRequestThread::Run() {
    constexpr std::uint32_t kPeriodMilliseconds = 100;
    while (!IsTerminating()) {
        RequestUpdate();
        if (wakeSemaphore.Acquire(kPeriodMilliseconds) != 0) continue;
        while (wakeSemaphore.Acquire(0) == 0) {
        }
    }
    return 0;
}

void AutomationUpdateRequestThread::RequestUpdate() {
    MEditorFactory* const factory = plugin.editorFactory;
    if (plugin.automation.changed.Count() == 0 || !factory->HasGUI()) return;
    if (requested.exchange(true)) return;
    update.Post(factory->Events(), {});
    factory->RaisePendingEvents();
}

void AutomationUpdateRequestThread::UpdateEditors(const MOnNotifyParams&) {
    requested = false;
    plugin.automation.changed.UpdateEditors();
}

bool MAudioPlugin::CreateEditor(void* parent, MStyle* style) {
    return Guarded("MAudioPlugin::CreateEditor", false, [&] {
        MLocker lock(stateLock);
        if (editor != nullptr) return true;
        if (editorFactory == nullptr || (!editorFactory->HasGUI() && !InitializeGUI()))
            return false;
        editor = CreateEditorObject(parent, style);
        if (editor == nullptr) return false;
        FillEditor();
        if (automationRequestThread == nullptr) {
            automationRequestThread = std::make_unique<AutomationUpdateRequestThread>(*this);
            automationRequestThread->Start();
        }
        return true;
    });
}

// One that can't be filled is taken away again.
void MAudioPlugin::FillEditor() {
    try {
        editorFactory->LayOut(*editor);
        BuildEditor();
    } catch (...) {
        DestroyEditor();
        throw;
    }
}

void MAudioPlugin::DestroyEditor() {
    Guarded("MAudioPlugin::DestroyEditor", [&] {
        MLocker lock(stateLock);
        if (editor == nullptr) return;
        EditorDestroyed();
        editorFactory->Destroy(std::exchange(editor, nullptr));
    });
}

bool MAudioPlugin::ChangeEditorSize(EditorSize size) {
    return Guarded("MAudioPlugin::ChangeEditorSize", false, [&] {
        if (hostAdapter == nullptr || !hostAdapter->ChangeEditorSize(size)) return false;
        MLocker lock(stateLock);
        if (editor != nullptr) editorFactory->Resize(*editor, size);
        return true;
    });
}

void MAudioPlugin::SetEditorResizable(bool resizable) { editorResizable = resizable; }

bool MAudioPlugin::InitializeGUI() { return editorFactory->InitializeGUI(); }

MAudioPlugin::MEditor* MAudioPlugin::CreateEditorObject(void* parent, MStyle* style) {
    return editorFactory->MakeEditor(*this, parent, style);
}
