// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>

#include "foundation/objects/event.h"
#include "foundation/objects/event_params.h"
#include "plugin/frame/editor_factory.h"

// Has an operation of its owner run on the user-interface thread.
//
//     UserInterfaceCall<Plugin> call{*this, &Plugin::UpdateEditor};
//     call.Request(editorFactory);
//
// However often it is requested before it runs, it runs once.
//
// Threads  Request on any, the audio thread included
// Memory   Request allocates nothing
// Errors   what the operation raises goes to whoever drains the queue
template <typename Owner>
class UserInterfaceCall final : public MEventTarget {
public:
    UserInterfaceCall(Owner& owner, void (Owner::*operation)())
        : owner(owner), operation(operation) {
        event.Connect<&UserInterfaceCall::Run>(this);
        event.Reserve(1);
    }

    // False where there is no user interface; nothing happens then. factory may be null.
    bool Request(MEditorFactory* factory) {
        if (factory == nullptr || !factory->HasGUI()) return false;
        if (requested.exchange(true)) return true;
        event.Post(factory->Events(), {});
        factory->RaisePendingEvents();
        return true;
    }

private:
    void Run(const MOnNotifyParams&) {
        requested = false;  // first: what is requested from now on wants another run
        (owner.*operation)();
    }

    Owner& owner;
    void (Owner::*operation)();
    MEvent<MOnNotifyParams> event;
    std::atomic<bool> requested = false;
};
