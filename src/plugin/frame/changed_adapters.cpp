// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/frame/changed_adapters.h"

#include <algorithm>

#include "plugin/frame/automation_adapter.h"

void ChangedAdapters::Reserve(int adapterCount) {
    MLocker lock(updatesLock);
    editorUpdates.Reserve(adapterCount);
}

void ChangedAdapters::Add(AutomationAdapter& adapter) {
    MLocker lock(updatesLock);
    if (adapter.isChanged) return;
    editorUpdates.Reserve(editorUpdateCount + 1);
    editorUpdates[editorUpdateCount++] = &adapter;
    adapter.isChanged = true;
}

void ChangedAdapters::UpdateEditors() {
    for (int left = Count(); left > 0; --left) {
        AutomationAdapter* const adapter = TakeFirst();
        if (adapter == nullptr) return;
        adapter->UpdateEditor();
    }
}

AutomationAdapter* ChangedAdapters::TakeFirst() {
    MLocker lock(updatesLock);
    if (editorUpdateCount == 0) return nullptr;
    AutomationAdapter* const first = editorUpdates[0];
    std::copy(editorUpdates.Data() + 1, editorUpdates.Data() + editorUpdateCount,
              editorUpdates.Data());
    --editorUpdateCount;
    first->isChanged = false;
    return first;
}

void ChangedAdapters::Remove(AutomationAdapter& adapter) {
    MLocker lock(updatesLock);
    if (!adapter.isChanged) return;
    AutomationAdapter** const end = editorUpdates.Data() + editorUpdateCount;
    editorUpdateCount =
        static_cast<int>(std::remove(editorUpdates.Data(), end, &adapter) - editorUpdates.Data());
    adapter.isChanged = false;
}

void ChangedAdapters::Clear() {
    MLocker lock(updatesLock);
    for (int i = 0; i < editorUpdateCount; ++i) editorUpdates[i]->isChanged = false;
    editorUpdateCount = 0;
}

int ChangedAdapters::Count() const {
    MLocker lock(updatesLock);
    return editorUpdateCount;
}
