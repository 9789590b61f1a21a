// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/objects/event_target.h"

// Common base of the events: what targets and processors need to know of one.
//
// Threads  ProcessOne on the thread that drains the processor, the others on any; all take the
//          event lock where they touch a list
// Errors   ProcessOne raises MException "Index out of range." with an empty queue; what a handler
//          raises passes through

class MEventBase : public MEventTarget {
public:
    // A derived destructor detaches the event from each of its targets under the event lock: once
    // it has run, no target knows the event.
    ~MEventBase() override = default;

    // Delivers the oldest queued notification.
    virtual void ProcessOne() = 0;
    // Drops all queued notifications.
    virtual void ClearQueue() = 0;
    // Drops every connection to target and detaches from it.
    virtual void RemoveTarget(MEventTarget* target) = 0;

protected:
    // Enter this event into target's list, and take it out again, under the event lock. Either may
    // be repeated. Errors: std::bad_alloc out of Attach, nothing entered.
    void Attach(MEventTarget& target) { target.AddEvent(this); }
    void Detach(MEventTarget& target) { target.RemoveEvent(this); }
};
