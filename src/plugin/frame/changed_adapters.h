// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/objects/growing_buffer.h"
#include "foundation/objects/lock.h"

class AutomationAdapter;

// The adapters whose editors have to follow a change; each stands in the list once.
//
// Threads  Add on any; UpdateEditors on the thread of the user interface, also out of what it
//          calls; an adapter is removed there too, or while it does not run
// Memory   Add allocates only beyond what was reserved
// Errors   std::bad_alloc out of Reserve and Add, which then change nothing; "Could not acquire
//          mutex."
class ChangedAdapters {
public:
    void Reserve(int adapterCount);
    void Add(AutomationAdapter& adapter);
    // Calls UpdateEditor of those that are in the list now, without the lock. One that changes
    // again meanwhile stays for the next time.
    void UpdateEditors();

    // Forgets an adapter that is about to be destroyed, or all of them.
    void Remove(AutomationAdapter& adapter);
    void Clear();

    int Count() const;

private:
    AutomationAdapter* TakeFirst();

    // Stands alone: nothing else is taken under it.
    mutable MLock updatesLock;
    GrowingBuffer<AutomationAdapter*> editorUpdates;  // under updatesLock
    int editorUpdateCount = 0;                        // under updatesLock
};
