// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <new>
#include <type_traits>

// Where the number of a value lives: inside, or in a variable of another object.
//
//     MValueRef own;
//     MValueRef view(&model.depth);
//
// Ranges   a number of up to 8 bytes; always asked for by the type it was made with
// Threads  the flag belongs to the owner's thread; the number is a relaxed atomic, so that another
//          thread sees the old one or the new one
class MValueRef {
public:
    MValueRef() = default;
    // The variable outlives the reference.
    template <typename Number>
    explicit MValueRef(Number* live) : number(live) {
        static_assert(std::is_trivially_copyable_v<Number> && sizeof(Number) <= sizeof word);
    }
    template <typename Number>
    explicit MValueRef(std::atomic<Number>* live) : MValueRef(reinterpret_cast<Number*>(live)) {
        static_assert(sizeof(std::atomic<Number>) == sizeof(Number));
    }
    // A number inside is copied along.
    MValueRef(const MValueRef& other) : changed(other.changed) {
        for (std::size_t i = 0; i < sizeof word; ++i) word[i] = other.word[i];
        if (!other.IsOwner()) number = other.number;
    }
    MValueRef& operator=(const MValueRef&) = delete;

    bool IsOwner() const { return number == word; }

    template <typename Number>
    Number Get() const {
        return At<Number>().load(std::memory_order_relaxed);
    }
    template <typename Number>
    void Set(Number newNumber) {
        At<Number>().store(newNumber, std::memory_order_relaxed);
        changed = true;
    }

    bool changed = false;

private:
    template <typename Number>
    std::atomic_ref<Number> At() const {
        return std::atomic_ref<Number>(*std::launder(static_cast<Number*>(number)));
    }

    alignas(8) std::byte word[8] = {};
    void* number = word;
};
