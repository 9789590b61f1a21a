// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <utility>

#include "foundation/objects/object.h"

// The arguments of one command between an effect and its frame: four typed slots.
//
//     PluginArguments arguments(channels, sampleRate);
//     host->Command(PluginCommand::kPrepare, arguments);
//
// A slot is read as the type that the command defines; a slot of another kind reads as 0 or null.
// Threads  one caller at a time
// Errors   none

struct PluginArgument {
    enum class Kind : std::int32_t {
        None = 0,
        Integer = 1,
        OwnedObject = 2,  // deleted by the receiver once the command is done
        Pointer = 3,      // borrowed for the length of the command
        Number = 4,
    };

    Kind kind = Kind::None;
    union {
        std::int64_t integer = 0;
        double number;
        void* pointer;
        MObject* object;
    };
};

class PluginArguments {
public:
    static constexpr int kCount = 4;

    PluginArguments() = default;

    // Up to four values: integers, floats, pointers, or a std::unique_ptr to an MObject, which
    // then belongs to the arguments.
    template <typename... Values>
    explicit PluginArguments(Values&&... values) {
        static_assert(sizeof...(Values) <= kCount);
        int slot = 0;
        (Put(slots[static_cast<std::size_t>(slot++)], std::forward<Values>(values)), ...);
    }

    PluginArguments(const PluginArguments&) = delete;
    PluginArguments& operator=(const PluginArguments&) = delete;
    ~PluginArguments() { DeleteOwnedObjects(); }

    std::int64_t Integer(int slot) const;
    double Number(int slot) const;

    // A borrowed pointer. It is read as the type that it was put in as: one to a derived class is
    // converted to the command's type first.
    template <typename T>
    T* Pointer(int slot) const {
        return static_cast<T*>(RawPointer(slot));
    }

    // An owned object; it stays the arguments'.
    MObject* Object(int slot) const;

    // What a receiver's wrapper does after the command. Owned slots become empty.
    void DeleteOwnedObjects();

private:
    template <typename T>
    static void Put(PluginArgument& slot, T* pointer) {
        slot.kind = PluginArgument::Kind::Pointer;
        slot.pointer = const_cast<void*>(static_cast<const void*>(pointer));
    }
    static void Put(PluginArgument& slot, double number);
    static void Put(PluginArgument& slot, std::int64_t integer);
    static void Put(PluginArgument& slot, int integer) {
        Put(slot, static_cast<std::int64_t>(integer));
    }
    static void Put(PluginArgument& slot, std::unique_ptr<MObject> object);

    void* RawPointer(int slot) const;

    std::array<PluginArgument, kCount> slots{};
};
