// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/streams/buffering_stream.h"

#include <algorithm>
#include <utility>

#include "foundation/text/exception.h"

MBufferingStream::~MBufferingStream() {
    try {
        Close();
    } catch (const MException&) {
    }
}

void MBufferingStream::SetProcessor(std::unique_ptr<BlockModificationProcessor> processor) {
    Close();
    this->processor = std::move(processor);
    const auto plainSize = static_cast<std::size_t>(this->processor->GetPlainSize());
    stored.resize(static_cast<std::size_t>(this->processor->GetStoredSize()));
    writing.resize(plainSize);
    reading.resize(plainSize);
    Restart();
}

void MBufferingStream::Restart() {
    processor->Restart();
    writeCount = readCount = readPosition = 0;
    plainCount = 0;
}

void MBufferingStream::Close() {
    if (processor == nullptr) return;
    if (writeCount > 0) StoreBlock();
    Restart();
}

void MBufferingStream::Write(const void* buffer, std::int32_t size) {
    RequireProcessor();
    const auto* bytes = static_cast<const std::uint8_t*>(buffer);
    const auto blockSize = static_cast<std::int32_t>(writing.size());
    for (std::int32_t left = size; left > 0;) {
        const std::int32_t part = std::min(left, blockSize - writeCount);
        std::copy_n(bytes, part, writing.begin() + writeCount);
        writeCount += part;
        plainCount += part;
        bytes += part;
        left -= part;
        if (writeCount == blockSize) StoreBlock();
    }
}

std::int32_t MBufferingStream::Read(void* buffer, std::int32_t size) {
    RequireProcessor();
    auto* const bytes = static_cast<std::uint8_t*>(buffer);
    std::int32_t count = 0;
    while (count < size && (readPosition < readCount || LoadBlock())) {
        const std::int32_t part = std::min(size - count, readCount - readPosition);
        std::copy_n(reading.begin() + readPosition, part, bytes + count);
        readPosition += part;
        plainCount += part;
        count += part;
    }
    return count;
}

bool MBufferingStream::IsEnd() {
    RequireProcessor();
    while (readPosition == readCount) {
        if (!LoadBlock()) return true;
    }
    return false;
}

void MBufferingStream::RequireProcessor() const {
    if (processor == nullptr) throw MException("Buffering stream has not been initialized.", 258);
}

// A block that the source refuses is dropped: it would be encoded into the chain a second time.
void MBufferingStream::StoreBlock() {
    processor->Encode(writing.data(), std::exchange(writeCount, 0), stored.data());
    source.Write(stored.data(), static_cast<std::int32_t>(stored.size()));
}

// False at the end of the source.
bool MBufferingStream::LoadBlock() {
    const auto size = static_cast<std::int32_t>(stored.size());
    const std::int32_t read = source.Read(stored.data(), size);
    if (read == 0) return false;
    if (read < size) RaiseEndOfStream();
    readPosition = readCount = 0;
    readCount = processor->Decode(stored.data(), reading.data());
    return true;
}
