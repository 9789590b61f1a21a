// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include "foundation/objects/object.h"
#include "foundation/text/byte_stream.h"
#include "foundation/text/mstring.h"

// Bytes in order: files, memory, filters, sockets. Everything that is stored or transferred is read
// and written through it.
//
//     MMemoryStream stream;
//     stream.WriteStringLine("Rate");
//     stream.Seek(0, MStream::kFromStart);
//     char line[64];
//     stream.ReadLine(line, sizeof line);   // "Rate"
//
// A stream that cannot do something raises; the end of the data is told by return values. After an
// error the stream is as it was after the last operation that succeeded. A filter is closed before
// the stream below it.
//
// Units    bytes
// Ranges   sizes 0 .. 2^31 - 1; what is below 0 counts as 0
// Threads  one at a time
// Errors   MException "Service \"{0}\" is not implemented." with code 1 where a stream lacks an
//          operation, "Invalid seek origin." with code 2, "No more data in source stream." with
//          code 256

class MStream : public MObject, public MByteStream {
public:
    // Origins of Seek.
    static constexpr int kFromStart = 0;
    static constexpr int kFromPosition = 1;
    static constexpr int kFromEnd = 2;

    // The stream below a filter.
    virtual MStream& GetSubStream();

    // All of it, or an error.
    void Write(const void* buffer, std::int32_t size) override;
    // So many bytes of no special value.
    virtual void WriteFill(std::int64_t count);
    // How many bytes were read: less than size only where the data end.
    std::int32_t Read(void* buffer, std::int32_t size) override;

    // The bytes up to a line feed, a NUL or the end of the data, with a NUL behind them; carriage
    // returns are left out. buffer has size bytes, at least one. 0 when a line is complete. 1 when
    // the buffer is full before its line ends, the rest of which stays in the stream, and when
    // there is nothing to read; a size of 1 or less is full at once.
    virtual int ReadLine(char* buffer, std::int32_t size);

    // As UTF-8, without a terminator.
    virtual void WriteString(const MString& text);
    // With a line feed behind it.
    virtual void WriteStringLine(const MString& text);

    // A stream without a seek of its own skips forward by reading, which may end in "No more data
    // in source stream."; going back is the service "backward seek in a stream".
    virtual void Seek(std::int64_t offset, int origin);
    virtual std::int64_t GetPosition();
    virtual void Flush();
    // Whether nothing is left to read.
    virtual bool IsEnd();
    // Cuts off what stands behind the position.
    virtual void Truncate();
    virtual std::int64_t GetSize();
    virtual bool IsOpen();

protected:
    // Where a Seek goes. Raises "Invalid seek origin."; beyond 63 bits the nearest position.
    std::int64_t SeekTarget(std::int64_t offset, int origin);
};

// MException "Service \"{0}\" is not implemented." with code 1.
[[noreturn]] void RaiseUnsupportedService(const MString& action);
