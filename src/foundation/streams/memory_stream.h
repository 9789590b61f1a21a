// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include "foundation/streams/mstream.h"

// A stream over a block of memory that copies of the stream share until one of them writes.
//
//     MMemoryStream file(bytes, size);   // reads in place
//     MMemoryStream copy(file);          // the same bytes, a position of its own
//
// Units    bytes
// Ranges   capacity, size and position 0 .. 2^31 - 1; position at most size
// Threads  one stream by one thread at a time; copies may be on different threads
// Memory   the capacity doubles until what is written fits. Memory from outside is never written
//          to: the first write takes a copy of it
// Errors   "No more data in source stream." of Seek behind the size, "Could not perform file seek."
//          in front of the start, both with code 256; std::bad_alloc, the stream stays as it was

class MMemoryStream : public MStream {
public:
    MMemoryStream() = default;
    // Over memory that outlives the stream and its copies, and does not change as long.
    MMemoryStream(const void* data, std::int32_t size);
    MMemoryStream(const MMemoryStream& other) noexcept;
    MMemoryStream(MMemoryStream&& other) noexcept;
    MMemoryStream& operator=(MMemoryStream other) noexcept;
    ~MMemoryStream() override;

    void Write(const void* buffer, std::int32_t size) override;
    std::int32_t Read(void* buffer, std::int32_t size) override;
    // 2 when the position stands at the size, else as for every stream.
    int ReadLine(char* buffer, std::int32_t size) override;
    void Seek(std::int64_t offset, int origin) override;
    std::int64_t GetPosition() override { return position; }
    void Flush() override {}
    bool IsEnd() override { return position >= size; }
    void Truncate() override { size = position; }
    std::int64_t GetSize() override { return size; }

    // The bytes from the start on, until the next write; null where nothing was ever written.
    const std::uint8_t* GetData() const;
    std::int32_t GetCapacity() const;
    // Exactly so many bytes; a smaller capacity pulls size and position down to it.
    void SetCapacity(std::int32_t capacity);

private:
    struct Block;

    // Makes the block this stream's own with that capacity, which may be the one it has.
    void OwnBlock(std::int32_t capacity);
    bool OwnsBlock() const;

    Block* block = nullptr;  // null is a block of capacity 0
    std::int32_t size = 0;
    std::int32_t position = 0;
};
