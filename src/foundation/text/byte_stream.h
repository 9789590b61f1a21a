// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

// What reading and writing of text needs of a stream of bytes; streams implement it.
//
// Threads  one at a time
// Errors   what the stream raises

class MByteStream {
public:
    virtual void Write(const void* buffer, std::int32_t size) = 0;
    // How many bytes were read, at most size; less than that where the stream ends, 0 at its end.
    virtual std::int32_t Read(void* buffer, std::int32_t size) = 0;

protected:
    ~MByteStream() = default;
};

// MException "No more data in source stream." with code 256.
[[noreturn]] void RaiseEndOfStream();
