// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/objects/event_processor.h"

#include <algorithm>

#include "foundation/objects/event_base.h"
#include "foundation/objects/lock.h"

MEventProcessor::~MEventProcessor() {
    MLocker lock(EventLock());
    while (!events.IsEmpty()) events.Pull()->ClearQueue();
}

void MEventProcessor::Reserve(int count) {
    MLocker lock(EventLock());
    events.Reserve(count);
    reserved = std::max(reserved, count);
}

void MEventProcessor::Add(MEventBase* event) {
    MLocker lock(EventLock());
    events.Push(event);
}

void MEventProcessor::Remove(MEventBase* event, int maximum) {
    MLocker lock(EventLock());
    events.Remove(event, maximum);
    events.Trim(reserved);
}

void MEventProcessor::Process() {
    for (;;) {
        MLocker lock(EventLock());
        if (events.IsEmpty()) return;
        MEventBase* const event = events.Pull();
        events.Trim(reserved);
        event->DeliverOldest(lock);
    }
}
