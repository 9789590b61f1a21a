// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/objects/event_target.h"

class MLocker;

// Common base of the events: what targets and processors need to know of one.
//
// Threads  ProcessOne on the thread that drains the processor, the others on any; all take the
//          event lock where they touch a list
// Errors   ProcessOne raises MException "Index out of range." with an empty queue; what a handler
//          raises passes through

class MEventBase : public MEventTarget {
public:
    MEventBase() = default;
    // A derived destructor detaches the event from each of its targets, ends its deliveries and
    // takes it from its processor, all under one hold of the event lock: once it has run, nobody
    // knows the event.
    ~MEventBase() override = default;

    // Delivers the oldest queued notification.
    virtual void ProcessOne() = 0;
    // Drops all queued notifications.
    virtual void ClearQueue() = 0;
    // Drops every connection to target and detaches from it.
    virtual void RemoveTarget(MEventTarget* target) = 0;

protected:
    // A walk over an array of handlers that may change, or die with its event, while one of them
    // runs. It visits each handler that stood in the array when it began, unless that one is
    // removed first. It lives on the stack of the delivering thread.
    struct Delivery {
        Delivery(MEventBase& event, int handlerCount);  // under the event lock
        Delivery(const Delivery&) = delete;
        Delivery& operator=(const Delivery&) = delete;
        ~Delivery();
        // Under the event lock.
        void Finish();

        MEventBase* event;  // null when it is finished, or the event is dead
        int next = 0;       // the handler to be called next
        int end;            // behind the last one
        Delivery* other;    // a further walk over the same handlers
    };

    // Enter this event into target's list, and take it out again, under the event lock. Either may
    // be repeated. Errors: std::bad_alloc out of Attach, nothing entered.
    void Attach(MEventTarget& target) { target.AddEvent(this); }
    void Detach(MEventTarget& target) { target.RemoveEvent(this); }

    // Under the event lock: the handler at index has left the array.
    void TellDeliveriesOfRemoval(int index);
    // Under the event lock: none of them touches the event again.
    void EndDeliveries();

private:
    friend class MEventProcessor;

    // The body of ProcessOne, but for the processor's entry. lock holds the event lock and lets it
    // go before the first handler runs, so that no other thread can destroy the event in between.
    virtual void DeliverOldest(MLocker& lock) = 0;

    Delivery* deliveries = nullptr;  // under the event lock
};
