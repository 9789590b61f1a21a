// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>

#include "dsp/vectors.h"
#include "foundation/objects/growing_buffer.h"
#include "foundation/objects/object.h"

// Delay line of whole samples that changes its length without a click.
//
//     Delay<float> line;
//     line.Resize(48);
//     const float old = line.Exchange(sample);   // the sample of 48 samples ago
//
// Units    lengths in samples
// Ranges   length 1 .. 2^30 after the first Resize; 0 means new: owns nothing, takes no samples
// Threads  the owner's lock guards all operations
// Memory   Resize and Reserve may allocate, nothing else does; Resize does not where Reserve has
//          made room
// Errors   std::bad_alloc out of Resize and Reserve; the line keeps its history
// Method   on a change of length the history is stretched linearly to the new length
namespace MAudioFilters {

template <typename T>
class Delay : public MObject {
public:
    Delay() = default;
    Delay(const Delay&) = delete;
    Delay& operator=(const Delay&) = delete;

    // A length below 1 is taken as 1. Answers whether anything changed. A change leaves the oldest
    // sample at cell 0.
    bool Resize(int newLength);

    // Makes room for later lengths up to maxLength.
    void Reserve(int maxLength) { cells.Reserve(maxLength); }

    // Stores a sample and answers the one from length samples ago.
    T Exchange(T x) {
        T* data = cells.Data();
        const T oldest = data[index];
        data[index] = x;
        if (++index == length) index = 0;
        return oldest;
    }

    // The same for a block; in and out may not overlap.
    void Exchange(const T* in, T* out, int count);

    // Silence of the same length.
    void Clear() { VecZero(cells.Data(), length); }

    // As new.
    void Discard() {
        cells.SetCapacity(0);
        length = index = 0;
    }

    const T* Cells() const { return cells.Data(); }
    int Length() const { return length; }
    int Index() const {
        return index;
    }  // the next cell to be written, which holds the oldest sample
    int Capacity() const { return cells.Capacity(); }

protected:
    // Stores a block without a look at what it replaces.
    void Store(const T* in, int count);

private:
    // Stores of this size and above give memory back when they shrink.
    static constexpr int kLargeLine = 1250000;

    static void Stretch(T* data, int from, int to);
    static T Between(const T* data, double position);

    GrowingBuffer<T> cells;
    int length = 0;
    int index = 0;
};

template <typename T>
bool Delay<T>::Resize(int newLength) {
    newLength = std::max(newLength, 1);
    if (newLength == length) return false;
    T* data = cells.Data();
    if (index > 0) std::rotate(data, data + index, data + length);
    index = 0;

    if (newLength > length) {
        cells.Reserve(newLength);
        data = cells.Data();
        std::fill(data + length, data + newLength, T(0));
    }
    Stretch(data, length, newLength);
    if (newLength < length && newLength >= kLargeLine) cells.SetCapacity(newLength);
    length = newLength;
    return true;
}

template <typename T>
void Delay<T>::Exchange(const T* in, T* out, int count) {
    T* data = cells.Data();
    if (count <= length) {
        const int untilEnd = std::min(count, length - index);
        std::copy_n(data + index, untilEnd, out);
        std::copy_n(data, count - untilEnd, out + untilEnd);
    } else {
        std::rotate_copy(data, data + index, data + length, out);
        std::copy_n(in, count - length, out + length);
    }
    Store(in, count);
}

template <typename T>
void Delay<T>::Store(const T* in, int count) {
    const int skipped = std::max(count - length, 0);  // overwritten within the block
    int cell = (index + skipped % length) % length;
    const int untilEnd = std::min(count - skipped, length - cell);
    std::copy_n(in + skipped, untilEnd, cells.Data() + cell);
    std::copy_n(in + skipped + untilEnd, count - skipped - untilEnd, cells.Data());
    cell += count - skipped;
    index = cell >= length ? cell - length : cell;
}

// In place: ends keep their samples, those between are read linearly. Shrinking walks up and
// growing walks down, so that no cell is overwritten before it is read.
template <typename T>
void Delay<T>::Stretch(T* data, int from, int to) {
    if (to < 2 || from == to || from == 0) return;
    if (from == 1) {
        std::fill(data, data + to, data[0]);
        return;
    }
    const double ratio = static_cast<double>(from - 1) / static_cast<double>(to - 1);
    if (from > to) {
        for (int i = 1; i <= to - 2; ++i) data[i] = Between(data, i * ratio);
        data[to - 1] = data[from - 1];
    } else {
        data[to - 1] = data[from - 1];
        for (int i = to - 2; i >= 1; --i) data[i] = Between(data, i * ratio);
    }
}

template <typename T>
T Delay<T>::Between(const T* data, double position) {
    const int cell = static_cast<int>(position);
    const double fraction = position - cell;
    return static_cast<T>((1 - fraction) * data[cell] + fraction * data[cell + 1]);
}

}  // namespace MAudioFilters
