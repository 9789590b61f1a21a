// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/objects/event_target.h"

#include <algorithm>

#include "foundation/objects/event_base.h"
#include "foundation/objects/lock.h"

MLock& EventLock() {
    static MLock* const lock = new MLock;  // leaked: static objects die in an order nobody knows
    return *lock;
}

MEventTarget::~MEventTarget() {
    // Held throughout: an event that is destroyed on another thread waits in its destructor until
    // this target has forgotten it, or has left the list before this target looks.
    MLocker lock(EventLock());
    while (eventCount > 0) events[0]->RemoveTarget(this);
}

void MEventTarget::AddEvent(MEventBase* event) {
    MEventBase** const end = events.Data() + eventCount;
    if (std::find(events.Data(), end, event) != end) return;
    events.Reserve(eventCount + 1);
    events[eventCount++] = event;
}

void MEventTarget::RemoveEvent(MEventBase* event) {
    MEventBase** const end = events.Data() + eventCount;
    MEventBase** const found = std::find(events.Data(), end, event);
    if (found == end) return;
    std::copy(found + 1, end, found);
    events.SetCapacity(--eventCount);
}
