// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/objects/event_base.h"

#include <utility>

#include "foundation/objects/lock.h"

MEventBase::Delivery::Delivery(MEventBase& event, int handlerCount)
    : event(&event), end(handlerCount), other(std::exchange(event.deliveries, this)) {}

MEventBase::Delivery::~Delivery() {
    MLocker lock(EventLock());
    Finish();
}

void MEventBase::Delivery::Finish() {
    if (event == nullptr) return;
    Delivery** link = &event->deliveries;
    while (*link != this) link = &(*link)->other;
    *link = other;
    event = nullptr;
}

void MEventBase::TellDeliveriesOfRemoval(int index) {
    for (Delivery* delivery = deliveries; delivery != nullptr; delivery = delivery->other) {
        if (index < delivery->next) --delivery->next;
        if (index < delivery->end) --delivery->end;
    }
}

void MEventBase::EndDeliveries() {
    while (deliveries != nullptr) deliveries->Finish();
}
