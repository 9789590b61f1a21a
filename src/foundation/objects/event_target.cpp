// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/objects/event_target.h"

#include "foundation/objects/event_base.h"
#include "foundation/objects/lock.h"

namespace {

MLock* sharedLock = nullptr;  // another library's

}  // namespace

MLock& EventLock() {
    if (sharedLock != nullptr) return *sharedLock;
    static MLock* const lock = new MLock;  // leaked: static objects die in an order nobody knows
    return *lock;
}

void ShareEventLock(MLock& lock) { sharedLock = &lock; }

MEventTarget::~MEventTarget() {
    // Held throughout: an event that is destroyed on another thread waits in its destructor until
    // this target has forgotten it, or has left the list before this target looks.
    MLocker lock(EventLock());
    while (!events.IsEmpty()) events[0]->RemoveTarget(this);
}

void MEventTarget::AddEvent(MEventBase* event) {
    if (events.Find(event) < 0) events.Add(event);
}

void MEventTarget::RemoveEvent(MEventBase* event) { events.Remove(event); }
