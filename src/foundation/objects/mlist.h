// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>

#include "foundation/objects/growing_buffer.h"
#include "foundation/text/exception.h"

// Growable array of pointers, which it does not own.
//
//     MList<MControl, 2> controls;
//     controls.Add(&button);
//     for (MControl* control : controls) control->Paint();
//
// Units    items
// Ranges   the second argument names the growth rule; 2 is the one there is
// Threads  the owner's lock guards all operations. A change moves the items: none during a walk
// Memory   the capacity is always the rounded count, so that a removal gives memory back too
// Errors   MException "Index out of range." where no item stands at an index, std::bad_alloc; the
//          list stays as it was

template <typename T, int policy>
class MList {
    static_assert(policy == 2);

public:
    MList() = default;
    MList(const MList&) = delete;
    MList& operator=(const MList&) = delete;

    int Count() const { return count; }
    bool IsEmpty() const { return count == 0; }
    int Capacity() const { return items.Capacity(); }

    T* operator[](int index) const {
        Check(index, count);
        return items[index];
    }
    T* const* begin() const { return items.Data(); }
    T* const* end() const { return items.Data() + count; }

    // The index of its first occurrence, -1 where it is not in the list.
    int Find(const T* item) const {
        T* const* const found = std::find(begin(), end(), item);
        return found == end() ? -1 : static_cast<int>(found - begin());
    }

    void Add(T* item) { Insert(count, item); }

    // In front of the item at index, 0 .. Count().
    void Insert(int index, T* item) {
        Check(index, count + 1);
        items.Reserve(count + 1);
        T** const place = items.Data() + index;
        std::copy_backward(place, items.Data() + count, items.Data() + count + 1);
        *place = item;
        ++count;
    }

    void Delete(int index) {
        Check(index, count);
        T** const place = items.Data() + index;
        std::copy(place + 1, items.Data() + count, place);
        items.SetCapacity(--count);
    }

    // Deletes its first occurrence. Whether there was one.
    bool Remove(const T* item) {
        const int index = Find(item);
        if (index >= 0) Delete(index);
        return index >= 0;
    }

    void Clear() { items.SetCapacity(count = 0); }

private:
    static void Check(int index, int end) {
        if (index < 0 || index >= end) throw MException("Index out of range.");
    }

    GrowingBuffer<T*> items;
    int count = 0;
};
