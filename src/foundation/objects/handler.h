// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

// A member function to be called on an object that is known as one of its bases.
//
// Method   the way from the base to the member's class is kept in bytes, so that a handler may be a
//          member of any of the object's classes, also of one that is no target itself

template <typename Params>
struct MHandler {
    // base and object are the same object.
    template <auto member, typename Base, typename Object>
    static MHandler For(Base* base, Object* object) {
        return ForMember<member>(base, object, member);
    }

    template <typename Base>
    void Call(Base* base, const Params& params) const {
        stub(base, context, params);
    }

    std::intptr_t context = 0;  // bytes from the base to the object as the member knows it
    void (*stub)(void* base, std::intptr_t context, const Params& params) = nullptr;

private:
    template <auto member, typename Base, typename Object, typename Class, typename Result,
              typename Argument>
    static MHandler ForMember(Base* base, Object* object, Result (Class::*)(Argument)) {
        Class* const known = object;
        return {reinterpret_cast<char*>(known) - reinterpret_cast<char*>(base),
                [](void* base, std::intptr_t context, const Params& params) {
                    Class* const known =
                        reinterpret_cast<Class*>(static_cast<char*>(base) + context);
                    (known->*member)(params);
                }};
    }
};

// What a handler record carries beside the handler decides whether a notification is for it. These
// take every one.
struct MHandlerNoAdditionals {
    template <typename Params>
    bool Accepts(const Params&) const {
        return true;
    }
};
