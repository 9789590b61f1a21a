// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <type_traits>

#include "foundation/objects/array_queue.h"
#include "foundation/objects/event_base.h"
#include "foundation/objects/event_processor.h"
#include "foundation/objects/growing_buffer.h"
#include "foundation/objects/handler.h"
#include "foundation/objects/lock.h"

// Tells any number of targets that something happened, at once or through a processor.
//
//     MEvent<MOnClickParams> clicked;
//     clicked.Connect<&Panel::OnClick>(panel);   // void Panel::OnClick(const MOnClickParams&)
//     clicked.Send({button});
//
// Handlers are called in the order in which they were connected, without any lock. While one runs,
// it may do to the event and its targets whatever it likes:
//   - connect: the new handler is first called by the next notification;
//   - disconnect itself or others: those that are gone are not called any more;
//   - send or post the same event again: the inner notification is delivered whole, then the outer
//     one goes on;
//   - destroy a target, its own too, or the event: what is left of the delivery ends there;
//   - raise: the rest of the handlers is skipped, the queue is in order.
//
// Threads  Send on the thread that owns the targets, Post on any, the others on any. A handler that
//          another thread has begun is not waited for: neither Disconnect nor a destructor does
// Memory   Params are stored by value. Post does not allocate as long as what is pending fits what
//          was reserved, here and at the processor, so that the audio thread may post
// Errors   std::bad_alloc out of Connect, Reserve and Post, which then change nothing; what a
//          handler raises

template <typename Params, typename Additionals = MHandlerNoAdditionals>
class MEvent : public MEventBase {
    static_assert(std::is_nothrow_copy_assignable_v<Params>);

public:
    MEvent() = default;
    // Drops what is pending.
    ~MEvent() override;

    // Appends a handler: member of target is called with the params. It may be connected more than
    // once, and is then called as often.
    template <auto member, typename Target>
    void Connect(Target* target, const Additionals& additionals = {});
    void Disconnect(MEventTarget* target) { RemoveTarget(target); }

    // Room for that many pending notifications, kept from then on.
    void Reserve(int count);

    // Delivers at once, on the calling thread. params stay the caller's; a handler that destroys
    // them must be the last one.
    void Send(const Params& params);
    // Queues a copy. As long as notifications are pending on a processor, later ones go there too.
    void Post(MEventProcessor& processor, const Params& params);

    void ProcessOne() override;
    void ClearQueue() override;
    void RemoveTarget(MEventTarget* target) override;

private:
    struct HandlerRecord {
        MEventTarget* target;
        MHandler<Params> handler;
        [[no_unique_address]] Additionals additionals;
    };

    void DeliverOldest(MLocker& lock) override;
    void Deliver(const Params& params, MLocker& lock);
    static bool TakeNext(Delivery& delivery, const Params& params, HandlerRecord& record);

    // All under the event lock.
    MEventProcessor* processor = nullptr;  // the one on which it has pending notifications
    GrowingBuffer<HandlerRecord> handlers;
    MArrayQueue<Params> queue;  // as many as there are entries in the processor
    int handlerCount = 0;
    int reserved = 0;
};

template <typename Params, typename Additionals>
MEvent<Params, Additionals>::~MEvent() {
    MLocker lock(EventLock());
    EndDeliveries();
    if (processor != nullptr) processor->Remove(this);
    for (int i = 0; i < handlerCount; ++i) Detach(*handlers[i].target);
}

template <typename Params, typename Additionals>
template <auto member, typename Target>
void MEvent<Params, Additionals>::Connect(Target* target, const Additionals& additionals) {
    MLocker lock(EventLock());
    MEventTarget* const base = target;
    handlers.Reserve(handlerCount + 1);
    Attach(*base);
    handlers[handlerCount++] = {base, MHandler<Params>::template For<member>(base, target),
                                additionals};
}

template <typename Params, typename Additionals>
void MEvent<Params, Additionals>::RemoveTarget(MEventTarget* target) {
    MLocker lock(EventLock());
    int kept = 0;
    for (int i = 0; i < handlerCount; ++i) {
        if (handlers[i].target == target) {
            TellDeliveriesOfRemoval(kept);
        } else {
            handlers[kept++] = handlers[i];
        }
    }
    if (kept == handlerCount) return;
    handlerCount = kept;
    handlers.SetCapacity(kept);
    Detach(*target);
}

template <typename Params, typename Additionals>
void MEvent<Params, Additionals>::Reserve(int count) {
    MLocker lock(EventLock());
    queue.Reserve(count);
    reserved = std::max(reserved, count);
}

template <typename Params, typename Additionals>
void MEvent<Params, Additionals>::Post(MEventProcessor& posted, const Params& params) {
    MLocker lock(EventLock());
    MEventProcessor* const drained = processor != nullptr ? processor : &posted;
    queue.Reserve(queue.Length() + 1);
    drained->Add(this);
    queue.Push(params);
    processor = drained;
}

template <typename Params, typename Additionals>
void MEvent<Params, Additionals>::ClearQueue() {
    MLocker lock(EventLock());
    if (processor != nullptr) processor->Remove(this);
    processor = nullptr;
    queue.Clear();
    queue.Trim(reserved);
}

template <typename Params, typename Additionals>
void MEvent<Params, Additionals>::ProcessOne() {
    MLocker lock(EventLock());
    if (processor != nullptr) processor->Remove(this, 1);
    DeliverOldest(lock);
}

template <typename Params, typename Additionals>
void MEvent<Params, Additionals>::DeliverOldest(MLocker& lock) {
    if (queue.IsEmpty()) throw MException("Index out of range.");
    const Params params = queue.Pull();
    queue.Trim(reserved);
    if (queue.IsEmpty()) processor = nullptr;
    Deliver(params, lock);
}

template <typename Params, typename Additionals>
void MEvent<Params, Additionals>::Send(const Params& params) {
    MLocker lock(EventLock());
    Deliver(params, lock);
}

// Behind the first handler nothing here touches the event, which may be dead: only the delivery
// knows.
template <typename Params, typename Additionals>
void MEvent<Params, Additionals>::Deliver(const Params& params, MLocker& lock) {
    if (handlerCount == 0) return;
    Delivery delivery(*this, handlerCount);
    HandlerRecord record{};
    while (TakeNext(delivery, params, record)) {
        lock.Release();
        record.handler.Call(record.target, params);
    }
}

template <typename Params, typename Additionals>
bool MEvent<Params, Additionals>::TakeNext(Delivery& delivery, const Params& params,
                                           HandlerRecord& record) {
    MLocker lock(EventLock());
    const MEvent* const event = static_cast<MEvent*>(delivery.event);
    if (event == nullptr) return false;
    while (delivery.next < delivery.end) {
        record = event->handlers[delivery.next++];
        if (record.additionals.Accepts(params)) return true;
    }
    return false;
}
