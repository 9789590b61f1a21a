// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/streams/memory_stream.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <utility>

#include "foundation/streams/read_line_inl.h"
#include "foundation/text/exception.h"

namespace {

constexpr std::int64_t kLargestCapacity = std::numeric_limits<std::int32_t>::max();

std::uint8_t* Allocate(std::int32_t capacity) {
    if (capacity == 0) return nullptr;
    void* const data = std::malloc(static_cast<std::size_t>(capacity));
    if (data == nullptr) throw std::bad_alloc();
    return static_cast<std::uint8_t*>(data);
}

void Copy(void* target, const void* source, std::int32_t count) {
    if (count > 0) std::memcpy(target, source, static_cast<std::size_t>(count));
}

// Doubled until needed fits; from nothing, exactly what is needed.
std::int32_t GrownCapacity(std::int64_t capacity, std::int64_t needed) {
    if (needed > kLargestCapacity) throw std::bad_alloc();
    std::int64_t grown = capacity > 0 ? capacity : needed;
    while (grown < needed) grown *= 2;
    return static_cast<std::int32_t>(std::min(grown, kLargestCapacity));
}

}  // namespace

struct MMemoryStream::Block {
    static constexpr std::uint8_t kOutside = 1;  // data is not the block's own

    Block(const std::uint8_t* data, std::int32_t capacity, std::uint8_t flags)
        : data(data), capacity(capacity), flags(flags) {}
    ~Block() {
        if ((flags & kOutside) == 0) std::free(OwnData());
    }
    std::uint8_t* OwnData() const { return const_cast<std::uint8_t*>(data); }

    static void Keep(Block* block) noexcept {
        if (block != nullptr) block->references.fetch_add(1, std::memory_order_relaxed);
    }
    static void Drop(Block* block) noexcept {
        if (block != nullptr && block->references.fetch_sub(1, std::memory_order_acq_rel) == 1)
            delete block;
    }

    std::atomic<std::uint32_t> references = 1;
    const std::uint8_t* data;
    std::int32_t capacity;
    std::uint8_t flags;
};

MMemoryStream::MMemoryStream(const void* data, std::int32_t size) : size(std::max(size, 0)) {
    block = new Block(static_cast<const std::uint8_t*>(data), this->size, Block::kOutside);
}

MMemoryStream::MMemoryStream(const MMemoryStream& other) noexcept
    : MStream(other), block(other.block), size(other.size), position(other.position) {
    Block::Keep(block);
}

MMemoryStream::MMemoryStream(MMemoryStream&& other) noexcept
    : block(std::exchange(other.block, nullptr)),
      size(std::exchange(other.size, 0)),
      position(std::exchange(other.position, 0)) {}

MMemoryStream& MMemoryStream::operator=(MMemoryStream other) noexcept {
    std::swap(block, other.block);
    std::swap(size, other.size);
    std::swap(position, other.position);
    return *this;
}

MMemoryStream::~MMemoryStream() { Block::Drop(block); }

const std::uint8_t* MMemoryStream::GetData() const {
    return block != nullptr ? block->data : nullptr;
}

std::int32_t MMemoryStream::GetCapacity() const { return block != nullptr ? block->capacity : 0; }

// Acquire: what others read of this block comes before what is written into it from here on.
bool MMemoryStream::OwnsBlock() const {
    return block != nullptr && (block->flags & Block::kOutside) == 0 &&
           block->references.load(std::memory_order_acquire) == 1;
}

void MMemoryStream::OwnBlock(std::int32_t capacity) {
    if (OwnsBlock()) {
        if (capacity == block->capacity) return;
        if (capacity > 0) {
            void* const moved = std::realloc(block->OwnData(), static_cast<std::size_t>(capacity));
            if (moved == nullptr) throw std::bad_alloc();
            block->data = static_cast<std::uint8_t*>(moved);
            block->capacity = capacity;
            return;
        }
    }
    auto own = std::make_unique<Block>(nullptr, capacity, 0);
    own->data = Allocate(capacity);
    Copy(own->OwnData(), GetData(), std::min(size, capacity));
    Block::Drop(std::exchange(block, own.release()));
}

void MMemoryStream::SetCapacity(std::int32_t capacity) {
    const std::int32_t wanted = std::max(capacity, 0);
    OwnBlock(wanted);
    size = std::min(size, wanted);
    position = std::min(position, wanted);
}

void MMemoryStream::Write(const void* buffer, std::int32_t count) {
    if (count <= 0) return;
    const std::int64_t end = std::int64_t{position} + count;
    OwnBlock(end > GetCapacity() ? GrownCapacity(GetCapacity(), end) : GetCapacity());
    Copy(block->OwnData() + position, buffer, count);
    position = static_cast<std::int32_t>(end);
    size = std::max(size, position);
}

std::int32_t MMemoryStream::Read(void* buffer, std::int32_t count) {
    const std::int32_t part = std::clamp(count, 0, size - position);
    if (part > 0) Copy(buffer, GetData() + position, part);
    position += part;
    return part;
}

int MMemoryStream::ReadLine(char* buffer, std::int32_t bufferSize) {
    if (IsEnd()) {
        buffer[0] = '\0';
        return 2;
    }
    const std::uint8_t* const data = GetData();
    const auto next = [&](char& byte) {
        if (position >= size) return false;
        byte = static_cast<char>(data[position++]);
        return true;
    };
    return ReadLineFrom(next, buffer, bufferSize);
}

void MMemoryStream::Seek(std::int64_t offset, int origin) {
    const std::int64_t target = SeekTarget(offset, origin);
    if (target < 0) throw MException("Could not perform file seek.", 256);
    if (target > size) RaiseEndOfStream();
    position = static_cast<std::int32_t>(target);
}
