// SPDX-License-Identifier: GPL-3.0-or-later
// Compressed data of arbitrary bytes, read in parts of any size. What was read until the end was
// data in the format, and is the same in other parts.
#include <algorithm>
#include <cstdlib>
#include <string>

#include "foundation/streams/memory_stream.h"
#include "foundation/streams/zlib_stream.h"
#include "foundation/text/exception.h"

namespace {

constexpr std::size_t kMostPlainBytes = 1 << 20;

// Whether the data came to their end within the limit.
bool ReadPlain(const std::uint8_t* data, std::size_t size, std::size_t part, std::size_t limit,
               std::string& plain) {
    MMemoryStream packed(data, static_cast<std::int32_t>(size));
    MZLibStream stream;
    std::string block(part, '\0');
    try {
        stream.OpenForDecompressing(packed);
        while (!stream.IsEnd() && plain.size() < limit) {
            const auto count = static_cast<std::size_t>(
                stream.Read(block.data(), static_cast<std::int32_t>(part)));
            plain.append(block, 0, count);
        }
        if (stream.GetPosition() != static_cast<std::int64_t>(plain.size())) std::abort();
        stream.Close();
    } catch (const MException& error) {
        if (error.code != 256) std::abort();
        return false;
    }
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1) return 0;
    std::string plain, same;
    const std::size_t part = std::size_t{data[0]} * 16 + 1;
    if (!ReadPlain(data + 1, size - 1, part, kMostPlainBytes, plain)) return 0;
    if (!ReadPlain(data + 1, size - 1, 4096, 2 * kMostPlainBytes, same) || same != plain)
        std::abort();
    return 0;
}
