// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/text/mstring.h"

// Collects units on the stack and appends them to a string block by block.
//
//     UnitBuffer<64> buffer(text);
//     for (...) buffer.Put(unit);
//     buffer.Flush();
//
// Threads  one
// Errors   std::bad_alloc; the string then holds the blocks before

template <int kSize>
class UnitBuffer {
public:
    // The string outlives the buffer. What is not flushed at the end is lost.
    explicit UnitBuffer(MString& target) : target(target) {}

    void Put(char16_t unit) {
        if (count == kSize) Flush();
        units[count++] = unit;
    }
    void Flush() {
        target.AppendUnits(units, count);
        count = 0;
    }
    // How long the string is with what is not yet flushed.
    std::int32_t TotalLength() const { return target.Length() + count; }

private:
    MString& target;
    int count = 0;
    char16_t units[kSize];
};

// Beyond U+FFFF a surrogate pair, beyond U+10FFFF nothing.
template <int kSize>
void PutCodePoint(UnitBuffer<kSize>& buffer, char32_t codePoint) {
    if (codePoint < 0x10000) {
        buffer.Put(static_cast<char16_t>(codePoint));
    } else if (codePoint <= 0x10ffff) {
        buffer.Put(static_cast<char16_t>(0xd800 + ((codePoint - 0x10000) >> 10)));
        buffer.Put(static_cast<char16_t>(0xdc00 + (codePoint & 0x3ff)));
    }
}
