// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/streams/dispatch_stream.h"

// Bytes as hexadecimal text in another stream: two upper-case digits a byte, the high half first.
//
// Units    Read, Write and the operations that rest on them count bytes; positions and sizes are
//          those of the source, in digits
// Errors   those of the source; MException "Invalid character to be converted to a number." with
//          code 256

class MHexaStream : public MDispatchStream {
public:
    using MDispatchStream::MDispatchStream;

    void Write(const void* buffer, std::int32_t size) override;
    // A digit without its partner at the end is left out.
    std::int32_t Read(void* buffer, std::int32_t size) override;
    // What every stream makes of its own Read and Write, in place of the source's.
    // NOLINTBEGIN(bugprone-parent-virtual-call)
    void WriteFill(std::int64_t count) override { MStream::WriteFill(count); }
    int ReadLine(char* buffer, std::int32_t size) override {
        return MStream::ReadLine(buffer, size);
    }
    void WriteString(const MString& text) override { MStream::WriteString(text); }
    void WriteStringLine(const MString& text) override { MStream::WriteStringLine(text); }
    // NOLINTEND(bugprone-parent-virtual-call)
};
