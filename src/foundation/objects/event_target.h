// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/objects/mlist.h"
#include "foundation/objects/object.h"

class MEventBase;
class MLock;

// The lock of the whole event mechanism: every event's handlers and queue, every target's list of
// events, every processor's array. The innermost lock of the system, held for list surgery only and
// never while a handler runs. It is never destroyed, so that events in static objects can still be.
MLock& EventLock();
// Takes the lock of another library in its place, before there is any event. It stays for ever.
void ShareEventLock(MLock& lock);

// Anything that can receive events. Its destructor disconnects it from each of them.
//
// Threads  may be destroyed on one thread while one of its events is destroyed on another; not
//          while another thread runs a handler of it, which nobody waits for
class MEventTarget : public MObject {
public:
    MEventTarget() = default;
    MEventTarget(const MEventTarget&) = delete;
    MEventTarget& operator=(const MEventTarget&) = delete;
    ~MEventTarget() override;

private:
    friend class MEventBase;

    // Under the event lock. An event stands in the list once, however often it is connected.
    void AddEvent(MEventBase* event);
    void RemoveEvent(MEventBase* event);

    MList<MEventBase, 2> events;  // under the event lock
};
