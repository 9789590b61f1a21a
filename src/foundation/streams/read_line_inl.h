// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

// The line reading that MStream promises, over any source of single bytes.
//
// Threads  one
// Errors   what next raises; the bytes before are then lost

// next(char&) gives the next byte, false where there is none.
template <typename Next>
int ReadLineFrom(Next next, char* buffer, std::int32_t size) {
    std::int32_t count = 0;
    int result = 1;
    while (result != 0 && count + 1 < size) {
        char byte = '\0';
        if (!next(byte)) {
            result = count > 0 ? 0 : 1;
            break;
        }
        if (byte == '\0' || byte == '\n') {
            result = 0;
        } else if (byte != '\r') {
            buffer[count++] = byte;
        }
    }
    buffer[count] = '\0';
    return result;
}
