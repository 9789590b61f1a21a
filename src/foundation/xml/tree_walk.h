// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/xml/attribute.h"

// Calls enter with each item before its children, and leave behind them. Trees may be deeper than
// the stack, so there is no recursion.
//
// Threads  as for the items
// Errors   what enter and leave raise

template <typename Enter, typename Leave>
void WalkTree(const MAttribute& root, Enter enter, Leave leave) {
    const MAttribute* item = &root;
    for (;;) {
        enter(*item);
        if (!item->SubItems().IsEmpty()) {
            item = item->SubItems()[0];
            continue;
        }
        leave(*item);
        while (item != &root && item->Next() == nullptr) {
            item = item->Parent();
            leave(*item);
        }
        if (item == &root) return;
        item = item->Next();
    }
}
