// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/objects/array_queue.h"
#include "foundation/objects/object.h"

class MEventBase;

// Hands notifications from any thread to the one that drains it.
//
//     changed.Post(processor, {this});   // anywhere
//     processor.Process();               // on the user-interface thread, now and then
//
// Notifications are delivered in strict order of posting, across events too. To have the processor
// drained is the poster's business: Post does not wake anybody.
//
// Threads  Process on the thread that owns the targets, not under the event lock; the destructor
//          while no Process runs; the others on any
// Memory   does not allocate up to the reserved number of pending notifications
// Errors   Process passes on what a handler raises, after which the next Process goes on behind
//          that notification; std::bad_alloc

class MEventProcessor : public MObject {
public:
    MEventProcessor() = default;
    MEventProcessor(const MEventProcessor&) = delete;
    MEventProcessor& operator=(const MEventProcessor&) = delete;
    // Drops what is pending.
    ~MEventProcessor() override;

    // Called when something was posted that should not wait for the next regular Process.
    virtual void Wake() {}

    // Room for that many pending notifications, kept from then on.
    void Reserve(int count);

    // For events: an event stands in the array once for each of its queued notifications. Remove
    // takes out its oldest entries, at most maximum of them.
    void Add(MEventBase* event);
    void Remove(MEventBase* event, int maximum = kAll);

    // Delivers until nothing is pending: what handlers post comes in the same pass. A handler may
    // call it again; the inner call then delivers the rest.
    void Process();

private:
    static constexpr int kAll = 0x7fffffff;

    MArrayQueue<MEventBase*> events;  // under the event lock
    int reserved = 0;                 // under the event lock
};
