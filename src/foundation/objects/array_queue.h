// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <limits>
#include <type_traits>
#include <utility>

#include "foundation/objects/growing_buffer.h"
#include "foundation/objects/object.h"
#include "foundation/text/exception.h"

// First-in, first-out queue of values.
//
//     MArrayQueue<float> delay;
//     delay.Reserve(latency + blockSize);
//     delay.PushCopies(0, latency);
//     delay.Push(in, blockSize);
//     delay.Pull(out, blockSize);
//
// Units    values
// Ranges   length 0 .. 2^30
// Threads  the owner's lock guards all operations
// Memory   pushing takes memory where the capacity does not suffice; pulling never gives it back,
//          Trim does
// Errors   MException "Not enough data in the queue." where more is asked for than there is,
//          std::bad_alloc; the queue stays as it was
// Method   a ring: the oldest value stands at head, the capacity is a power of two

template <typename T>
class MArrayQueue : public MObject {
public:
    MArrayQueue() = default;
    MArrayQueue(const MArrayQueue&) = delete;
    MArrayQueue& operator=(const MArrayQueue&) = delete;

    int Length() const { return length; }
    bool IsEmpty() const { return length == 0; }
    int Capacity() const { return cells.Capacity(); }

    // Room for a length of count.
    void Reserve(int count);
    // Gives memory back that neither the values nor a length of atLeast need.
    void Trim(int atLeast = 0);

    // What is pushed may not stand in the queue itself.
    void Push(const T& value) {
        if (length == cells.Capacity()) Grow(1);
        Cell(length) = value;
        ++length;
    }
    void Push(const T* values, int count);
    void PushCopies(const T& value, int count);

    // The oldest value, which stays.
    const T& Front() const {
        Check(1);
        return cells[head];
    }
    T Pull() {
        Check(1);
        T value = std::move(cells[head]);
        Skip(1);
        return value;
    }
    void Pull(T* values, int count);

    // Removes the oldest count values.
    void Drop(int count) {
        Check(count);
        Skip(std::max(count, 0));
    }
    void Clear() { Skip(length); }

    // Removes the oldest values equal to value, at most that many of them. How many there were.
    int Remove(const T& value, int maximum = std::numeric_limits<int>::max());

private:
    T& Cell(int index) { return cells[(head + index) & (cells.Capacity() - 1)]; }

    void Check(int count) const {
        if (count > length) throw MException("Not enough data in the queue.");
    }

    void Grow(int more) {
        if (more > std::numeric_limits<int>::max() - length) throw std::bad_alloc();
        Reserve(length + more);
    }

    // A value that holds something outside its cell lets go of it as it leaves.
    void Release(int from, int to) {
        if constexpr (!std::is_trivially_destructible_v<T>)
            for (int i = from; i < to; ++i) Cell(i) = T();
    }

    void Skip(int count) {
        Release(0, count);
        length -= count;
        head = length == 0 ? 0 : (head + count) & (cells.Capacity() - 1);
    }

    GrowingBuffer<T> cells;
    int length = 0;
    int head = 0;
};

template <typename T>
void MArrayQueue<T>::Reserve(int count) {
    const int before = cells.Capacity();
    if (!cells.Reserve(count)) return;
    // At least as many fresh cells as there were before follow the end of the ring.
    T* const data = cells.Data();
    const int wrapped = std::max(head + length - before, 0);
    std::move(data, data + wrapped, data + before);
}

template <typename T>
void MArrayQueue<T>::Trim(int atLeast) {
    const int wanted = std::max(length, atLeast);
    if (RoundedCapacity(wanted) >= cells.Capacity()) return;
    std::rotate(cells.Data(), cells.Data() + head, cells.Data() + cells.Capacity());
    head = 0;
    cells.SetCapacity(wanted);
}

template <typename T>
void MArrayQueue<T>::Push(const T* values, int count) {
    if (count <= 0) return;
    if (count > cells.Capacity() - length) Grow(count);
    const int tail = (head + length) & (cells.Capacity() - 1);
    const int untilEnd = std::min(count, cells.Capacity() - tail);
    std::copy_n(values, untilEnd, cells.Data() + tail);
    std::copy_n(values + untilEnd, count - untilEnd, cells.Data());
    length += count;
}

template <typename T>
void MArrayQueue<T>::PushCopies(const T& value, int count) {
    if (count <= 0) return;
    if (count > cells.Capacity() - length) Grow(count);
    for (int i = length; i < length + count; ++i) Cell(i) = value;
    length += count;
}

template <typename T>
void MArrayQueue<T>::Pull(T* values, int count) {
    Check(count);
    if (count <= 0) return;
    const int untilEnd = std::min(count, cells.Capacity() - head);
    std::copy_n(cells.Data() + head, untilEnd, values);
    std::copy_n(cells.Data(), count - untilEnd, values + untilEnd);
    Skip(count);
}

template <typename T>
int MArrayQueue<T>::Remove(const T& value, int maximum) {
    int kept = 0;
    for (int i = 0; i < length; ++i) {
        const bool leaves = i - kept < maximum && Cell(i) == value;
        if (leaves) continue;
        if (kept < i) Cell(kept) = std::move(Cell(i));
        ++kept;
    }
    const int removed = length - kept;
    Release(kept, length);
    length = kept;
    return removed;
}
