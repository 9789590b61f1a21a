// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <utility>

#include "foundation/objects/handler.h"
#include "foundation/objects/object.h"

// Tells one object that something happened: an event's sibling without a queue.
//
//     MCallback<MOnNotifyParams> changed;
//     changed.Connect<&Panel::OnChange>(panel);
//     changed.Call({this});
//
// A callback does not know when its object dies: who destroys the object disconnects first, unless
// the callback owns it. A handler may connect, disconnect or destroy its own callback; an owned
// object is then deleted at once, and must touch nothing of itself afterwards.
//
// Threads  one at a time
// Errors   what the handler raises

template <typename Params, typename Additionals = MHandlerNoAdditionals>
class MCallback {
public:
    MCallback() = default;
    MCallback(const MCallback&) = delete;
    MCallback& operator=(const MCallback&) = delete;
    virtual ~MCallback() { Disconnect(); }

    // Calls the handler, if there is one that takes the params.
    virtual void Call(const Params& params) {
        if (object != nullptr && additionals.Accepts(params)) handler.Call(object, params);
    }

    // Either takes the place of the handler before.
    template <auto member, typename Object>
    void Connect(Object* newObject, const Additionals& newAdditionals = {}) {
        Set<member>(newObject, Mode::Refers, newAdditionals);
    }
    template <auto member, typename Object>
    void ConnectOwned(std::unique_ptr<Object> newObject, const Additionals& newAdditionals = {}) {
        Set<member>(newObject.release(), Mode::Owns, newAdditionals);
    }

    void Disconnect() {
        MObject* const old = std::exchange(object, nullptr);
        if (std::exchange(mode, Mode::None) == Mode::Owns) delete old;
    }
    bool IsConnected() const { return object != nullptr; }

private:
    enum class Mode { None = 0, Refers = 1, Owns = 2 };

    template <auto member, typename Object>
    void Set(Object* newObject, Mode newMode, const Additionals& newAdditionals) {
        Disconnect();
        object = newObject;
        handler = MHandler<Params>::template For<member>(object, newObject);
        additionals = newAdditionals;
        mode = newMode;
    }

    MObject* object = nullptr;
    MHandler<Params> handler;
    [[no_unique_address]] Additionals additionals;
    Mode mode = Mode::None;
};
