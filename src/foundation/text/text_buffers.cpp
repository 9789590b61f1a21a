// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/text/text_buffers.h"

#include <algorithm>
#include <utility>

#include "foundation/text/exception.h"

void RaiseEndOfStream() { throw MException("No more data in source stream.", 256); }

MTextReader::MTextReader(MByteStream& stream, std::int32_t size)
    : stream(stream), buffer(static_cast<std::size_t>(size)) {}

bool MTextReader::Refill() {
    position = count = 0;
    count = stream.Read(buffer.data(), static_cast<std::int32_t>(buffer.size()));
    return count > 0;
}

MTextWriter::MTextWriter(MByteStream& stream, std::int32_t size)
    : stream(stream), buffer(static_cast<std::size_t>(size)) {}

void MTextWriter::Put(std::string_view bytes) {
    while (!bytes.empty()) {
        const auto used = static_cast<std::size_t>(count);
        const std::size_t part = std::min(bytes.size(), buffer.size() - used);
        std::copy_n(bytes.begin(), part, buffer.begin() + count);
        count += static_cast<std::int32_t>(part);
        bytes.remove_prefix(part);
        if (used + part == buffer.size()) Flush();
    }
}

void MTextWriter::Flush() {
    const std::int32_t written = std::exchange(count, 0);
    if (written > 0) stream.Write(buffer.data(), written);
}
