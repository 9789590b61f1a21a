// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <type_traits>
#include <utility>

#include "foundation/text/growth.h"

// Array on the heap whose capacity follows the growth rule: how many of its cells are in use is its
// owner's business.
//
//     GrowingBuffer<float> line;
//     line.Reserve(1000);   // 1024 cells, all 0
//
// Units    cells
// Ranges   capacity 0 .. 2^30, a power of two
// Threads  as the owner says
// Memory   reallocates only where the capacity changes. Cells that were there keep their content,
//          the others are zero bytes, or T() where T has a constructor or destructor of its own
// Errors   std::bad_alloc; the buffer stays as it was

template <typename T>
class GrowingBuffer {
    static constexpr bool kIsPlain =
        std::is_trivially_copyable_v<T> && std::is_trivially_destructible_v<T>;
    static_assert(kIsPlain || (std::is_nothrow_default_constructible_v<T> &&
                               std::is_nothrow_move_assignable_v<T>));
    static_assert(alignof(T) <= alignof(std::max_align_t));

public:
    GrowingBuffer() = default;
    GrowingBuffer(GrowingBuffer&& other) noexcept { *this = std::move(other); }
    GrowingBuffer& operator=(GrowingBuffer&& other) noexcept {
        std::swap(capacity, other.capacity);
        std::swap(data, other.data);
        return *this;
    }
    ~GrowingBuffer() { Free(data); }

    // Null at capacity 0. A reallocation moves the cells.
    T* Data() { return data; }
    const T* Data() const { return data; }
    int Capacity() const { return capacity; }

    T& operator[](int index) { return data[index]; }
    const T& operator[](int index) const { return data[index]; }

    // At least this many cells; never shrinks. Whether it reallocated.
    bool Reserve(int count) { return count > capacity && SetCapacity(count); }

    // The rounded capacity for this many cells, more or fewer than now; 0 or less frees them all.
    // Whether it reallocated: a system that refuses to shrink a block leaves it as it is.
    bool SetCapacity(int count) {
        const std::int64_t wanted = RoundedCapacity(count > 0 ? count : 0);
        if (wanted == capacity) return false;
        if (wanted == 0) {
            Free(std::exchange(data, nullptr));
        } else if (!Resize(wanted)) {
            if (wanted < capacity) return false;
            throw std::bad_alloc();
        }
        capacity = static_cast<int>(wanted);
        return true;
    }

private:
    static constexpr std::int64_t kLargestCapacity = std::int64_t{1} << 30;

    bool Resize(std::int64_t wanted) {
        const auto cells = static_cast<std::size_t>(wanted);
        if (wanted > kLargestCapacity ||
            cells > std::numeric_limits<std::size_t>::max() / sizeof(T))
            return false;
        T* const memory = Reallocate(cells);
        if (memory == nullptr) return false;
        data = memory;
        return true;
    }

    // Null where there is no memory; the old block is then still there.
    T* Reallocate(std::size_t cells) {
        const auto old = static_cast<std::size_t>(capacity);
        if constexpr (kIsPlain) {
            void* const memory = std::realloc(static_cast<void*>(data), cells * sizeof(T));
            T* const moved = static_cast<T*>(memory);
            if (moved != nullptr && cells > old)
                std::memset(static_cast<void*>(moved + old), 0, (cells - old) * sizeof(T));
            return moved;
        } else {
            T* const moved = new (std::nothrow) T[cells]();
            if (moved == nullptr) return nullptr;
            std::move(data, data + std::min(cells, old), moved);
            Free(data);
            return moved;
        }
    }

    static void Free(T* block) {
        if constexpr (kIsPlain) {
            std::free(block);
        } else {
            delete[] block;
        }
    }

    int capacity = 0;
    T* data = nullptr;
};
