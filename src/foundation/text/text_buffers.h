// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "foundation/text/byte_stream.h"

// The bytes of a text on their way from and to a stream, in blocks.
//
// Ranges   a block has 1 byte or more
// Threads  one
// Memory   the block is allocated once
// Errors   what the stream raises; Next may then be called again, a block that could not be written
//          is dropped

// Serves one byte after the other; the stream stands behind the block that was read last.
class MTextReader {
public:
    // The stream outlives the reader.
    MTextReader(MByteStream& stream, std::int32_t size);

    // False at the end of the stream; byte is then unspecified.
    bool Next(std::uint8_t& byte) {
        if (position == count && !Refill()) return false;
        byte = buffer[static_cast<std::size_t>(position++)];
        return true;
    }

private:
    bool Refill();

    MByteStream& stream;
    std::vector<std::uint8_t> buffer;
    std::int32_t count = 0;
    std::int32_t position = 0;
};

// Writes a block whenever it is full. Its owner calls Flush at the end: what is left is lost with
// the writer.
class MTextWriter {
public:
    // The stream outlives the writer.
    MTextWriter(MByteStream& stream, std::int32_t size);

    void Put(std::string_view bytes);
    void Flush();

private:
    MByteStream& stream;
    std::vector<std::uint8_t> buffer;
    std::int32_t count = 0;
};
