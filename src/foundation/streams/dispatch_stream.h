// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/streams/mstream.h"

// Forwards every operation to another stream: the base of filters that change a few of them.
//
// Threads  those of the source
// Errors   those of the source

class MDispatchStream : public MStream {
public:
    // The source outlives the stream.
    explicit MDispatchStream(MStream& source) : source(source) {}

    MStream& GetSubStream() override { return source; }
    void Write(const void* buffer, std::int32_t size) override { source.Write(buffer, size); }
    void WriteFill(std::int64_t count) override { source.WriteFill(count); }
    std::int32_t Read(void* buffer, std::int32_t size) override {
        return source.Read(buffer, size);
    }
    int ReadLine(char* buffer, std::int32_t size) override { return source.ReadLine(buffer, size); }
    void WriteString(const MString& text) override { source.WriteString(text); }
    void WriteStringLine(const MString& text) override { source.WriteStringLine(text); }
    void Seek(std::int64_t offset, int origin) override { source.Seek(offset, origin); }
    std::int64_t GetPosition() override { return source.GetPosition(); }
    void Flush() override { source.Flush(); }
    bool IsEnd() override { return source.IsEnd(); }
    void Truncate() override { source.Truncate(); }
    std::int64_t GetSize() override { return source.GetSize(); }
    bool IsOpen() override { return source.IsOpen(); }

protected:
    MStream& source;
};
