// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/text/mstring.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>
#include <type_traits>

#include "foundation/text/character_fold.h"
#include "foundation/text/growth.h"
#include "foundation/text/utf8.h"

namespace {

// Stands in front of the code units of shared text.
struct BlockHeader {
    std::uint32_t capacity;  // bytes of the whole block
    std::uint32_t refcount;  // atomic
};
static_assert(sizeof(BlockHeader) == 8);
static_assert(std::is_standard_layout_v<MString> && sizeof(MString) == sizeof(void*) + 8);

constexpr std::int64_t kLargestBlock = std::int64_t{1} << 31;

constexpr std::int64_t BytesFor(std::int64_t units) {
    return units * static_cast<std::int64_t>(sizeof(char16_t)) +
           static_cast<std::int64_t>(sizeof(BlockHeader));
}

// Any block has room for a terminator.
std::int64_t BlockSizeFor(std::int64_t units) {
    if (units > kLargestBlock) throw std::bad_alloc();
    const std::int64_t size = RoundedCapacity(BytesFor(std::max<std::int64_t>(units, 1)));
    if (size > kLargestBlock) throw std::bad_alloc();
    return size;
}

BlockHeader* HeaderOf(char16_t* units) { return reinterpret_cast<BlockHeader*>(units) - 1; }

char16_t* UnitsOf(BlockHeader* header) { return reinterpret_cast<char16_t*>(header + 1); }

std::atomic_ref<std::uint32_t> RefcountOf(char16_t* units) {
    return std::atomic_ref(HeaderOf(units)->refcount);
}

void AppendCodePoint(MString& string, char32_t codePoint) {
    if (codePoint < 0x10000) {
        string.Append(static_cast<char16_t>(codePoint));
    } else if (codePoint <= 0x10ffff) {
        string.Append(static_cast<char16_t>(0xd800 + ((codePoint - 0x10000) >> 10)));
        string.Append(static_cast<char16_t>(0xdc00 + (codePoint & 0x3ff)));
    }
}

}  // namespace

// Delegates, so that the block is freed where a later character finds no memory.
MString::MString(const wchar_t* wide) : MString() {
    if (wide == nullptr) return;
    for (; *wide != 0; ++wide) AppendCodePoint(*this, static_cast<char32_t>(*wide));
}

MString::MString(const char16_t* units) {
    if (units == nullptr || *units == 0) return;
    const std::size_t count = std::char_traits<char16_t>::length(units);
    Reserve(static_cast<std::int64_t>(count) + 1);
    std::copy_n(units, count + 1, text.units);
    length = static_cast<std::int32_t>(count);
}

MString::MString(char16_t unit) { Append(unit); }

MString MString::FromUtf8(std::string_view bytes) {
    MString result;
    Utf8Reader reader(bytes);
    for (char32_t codePoint = 0; reader.Next(codePoint);) {
        if (result.IsLiteral()) result.Reserve(static_cast<std::int64_t>(bytes.size()) + 1);
        AppendCodePoint(result, codePoint);
    }
    return result;
}

std::string MString::ToUtf8() const {
    std::string bytes;
    bytes.reserve(static_cast<std::size_t>(length));
    CodePointReader reader(*this);
    for (char32_t codePoint = 0; reader.Next(codePoint);) AppendUtf8(bytes, codePoint);
    return bytes;
}

void MString::Reserve(std::int64_t characters) {
    // Acquire: what others read of this block comes before what is written into it from here on.
    if (!IsLiteral() && RefcountOf(text.units).load(std::memory_order_acquire) < 2) {
        GrowOwnBlock(BlockSizeFor(characters));
        return;
    }
    const auto kept = static_cast<std::int32_t>(std::clamp<std::int64_t>(characters, 0, length));
    // Where the text would fill the block to its last cell, the terminator needs a larger one.
    MoveToNewBlock(BlockSizeFor(std::max(characters, std::int64_t{kept} + 1)), kept);
}

MString& MString::Append(const MString& other) {
    const std::int32_t added = other.length;
    if (added == 0) return *this;
    Reserve(std::int64_t{length} + added + 1);
    Put(other, 0, added);
    return *this;
}

MString& MString::Append(char16_t unit) {
    Reserve(std::int64_t{length} + 2);
    Put(unit);
    return *this;
}

MString MString::SubString(std::int32_t start, std::int32_t count) const {
    if (start < 0) return MString();
    const std::int32_t clamped = std::min(count, length - start);
    if (clamped <= 0) return MString();
    if (clamped == length) return *this;
    if (IsLiteral() && start + clamped == length) return MString(text.literal + start);
    MString result;
    result.Reserve(std::int64_t{clamped} + 1);
    result.Put(*this, start, clamped);
    return result;
}

std::int32_t MString::Replace(char16_t character, const MString& with) {
    std::int32_t found = 0;
    for (std::int32_t i = 0; i < length; ++i) found += (*this)[i] == character;
    if (found == 0) return 0;
    MString result;
    result.Reserve(length + std::int64_t{found} * (std::int64_t{with.length} - 1) + 1);
    for (std::int32_t i = 0; i < length; ++i) {
        if ((*this)[i] == character) {
            result.Put(with, 0, with.length);
        } else {
            result.Put((*this)[i]);
        }
    }
    *this = std::move(result);
    return found;
}

template <typename Visit>
auto MString::VisitPair(const MString& a, const MString& b, Visit visit) {
    const char16_t* const unitsA = a.IsLiteral() ? nullptr : a.text.units;
    const char16_t* const unitsB = b.IsLiteral() ? nullptr : b.text.units;
    if (unitsA != nullptr) {
        return unitsB != nullptr ? visit(unitsA, unitsB) : visit(unitsA, b.text.literal);
    }
    return unitsB != nullptr ? visit(a.text.literal, unitsB)
                             : visit(a.text.literal, b.text.literal);
}

template <typename Fold>
int MString::CompareWith(const MString& other, std::int32_t maximum, Fold fold) const {
    const std::int32_t countA = std::min(length, maximum);
    const std::int32_t countB = std::min(other.length, maximum);
    return VisitPair(*this, other, [&](const auto* a, const auto* b) {
        for (std::int32_t i = 0; i < std::min(countA, countB); ++i) {
            const int difference = fold(Widen(a[i])) - fold(Widen(b[i]));
            if (difference != 0) return difference;
        }
        return (countA > countB) - (countA < countB);
    });
}

int MString::Compare(const MString& other, std::int32_t maximum) const {
    return CompareWith(other, maximum, [](char16_t unit) { return unit; });
}

int MString::CompareNoCase(const MString& other, std::int32_t maximum) const {
    return CompareWith(other, maximum, FoldCharacter);
}

std::uint32_t MString::Hash() const {
    const std::int32_t step = length < 16 ? 1 : 4;
    const std::int32_t end = length < 16 ? length : std::min(length / 4, 8) * step;
    std::uint32_t hash = 0;
    for (std::int32_t i = 0; i < end; i += step)
        hash ^= static_cast<std::uint32_t>(LowerAscii((*this)[i])) << (i & 31);
    return hash;
}

void MString::KeepBlock() const noexcept {
    RefcountOf(text.units).fetch_add(1, std::memory_order_relaxed);
}

void MString::DropBlock() noexcept {
    if (RefcountOf(text.units).fetch_sub(1, std::memory_order_acq_rel) == 1)
        std::free(HeaderOf(text.units));
}

void MString::GrowOwnBlock(std::int64_t blockSize) {
    BlockHeader* const old = HeaderOf(text.units);
    if (old->capacity >= blockSize) return;
    void* const memory = std::realloc(old, static_cast<std::size_t>(blockSize));
    if (memory == nullptr) throw std::bad_alloc();
    auto* const header = static_cast<BlockHeader*>(memory);
    header->capacity = static_cast<std::uint32_t>(blockSize);
    text.units = UnitsOf(header);
}

void MString::MoveToNewBlock(std::int64_t blockSize, std::int32_t keptLength) {
    void* const memory = std::malloc(static_cast<std::size_t>(blockSize));
    if (memory == nullptr) throw std::bad_alloc();
    MString fresh;
    fresh.text.units = UnitsOf(new (memory) BlockHeader{static_cast<std::uint32_t>(blockSize), 1});
    fresh.flags = 0;
    fresh.Put(*this, 0, keptLength);
    *this = std::move(fresh);
}

void MString::Put(const MString& source, std::int32_t start, std::int32_t count) {
    char16_t* const out = text.units + length;
    if (source.IsLiteral()) {
        for (std::int32_t i = 0; i < count; ++i) out[i] = Widen(source.text.literal[start + i]);
    } else {
        std::copy_n(source.text.units + start, count, out);
    }
    out[count] = 0;
    length += count;
}

void MString::Put(char16_t unit) {
    text.units[length++] = unit;
    text.units[length] = 0;
}
