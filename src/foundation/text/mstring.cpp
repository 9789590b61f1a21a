// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/text/mstring.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <type_traits>

#include "foundation/text/character_fold.h"
#include "foundation/text/decoding_inl.h"
#include "foundation/text/growth.h"
#include "foundation/text/utf8.h"

namespace {

static_assert(std::is_standard_layout_v<MString> && sizeof(MString) == sizeof(void*) + 8);

constexpr std::int64_t kHeaderBytes = 8;
constexpr std::int64_t kLargestBlock = std::int64_t{1} << 31;

constexpr std::int64_t BytesFor(std::int64_t units) {
    return units * static_cast<std::int64_t>(sizeof(char16_t)) + kHeaderBytes;
}

// Any block has room for a terminator.
std::int64_t BlockSizeFor(std::int64_t units) {
    if (units > kLargestBlock) throw std::bad_alloc();
    const std::int64_t size = RoundedCapacity(BytesFor(std::max<std::int64_t>(units, 1)));
    if (size > kLargestBlock) throw std::bad_alloc();
    return size;
}

}  // namespace

// Delegates, so that the block is freed where a later character finds no memory.
MString::MString(const wchar_t* wide) : MString() {
    if (wide == nullptr) return;
    UnitBuffer<64> buffer(*this);
    for (; *wide != 0; ++wide) PutCodePoint(buffer, static_cast<char32_t>(*wide));
    buffer.Flush();
}

MString::MString(const char16_t* units) {
    if (units == nullptr || *units == 0) return;
    const std::size_t count = std::char_traits<char16_t>::length(units);
    Reserve(static_cast<std::int64_t>(count) + 1);
    std::copy_n(units, count + 1, text.units);
    length = static_cast<std::int32_t>(count);
}

MString::MString(char16_t unit) { Append(unit); }

MString MString::FromUtf8(std::string_view bytes) { return DecodeBytes(bytes, Utf8Decoder()); }

std::string MString::ToUtf8() const {
    std::string bytes;
    bytes.reserve(static_cast<std::size_t>(length));
    CodePointReader reader(*this);
    for (char32_t codePoint = 0; reader.Next(codePoint);) AppendUtf8(bytes, codePoint);
    return bytes;
}

void MString::Reserve(std::int64_t characters) {
    if (IsSoleOwner()) {
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
    if (!HasRoomFor(added)) Reserve(std::int64_t{length} + added + 1);
    Put(other, 0, added);
    return *this;
}

MString& MString::AppendUnits(const char16_t* units, std::int32_t count) {
    if (count <= 0) return *this;
    if (!HasRoomFor(count)) Reserve(std::int64_t{length} + count + 1);
    std::copy_n(units, count, text.units + length);
    length += count;
    text.units[length] = 0;
    return *this;
}

// The copy of other keeps its text where it is this string that is inserted into itself.
MString& MString::Insert(std::int32_t position, MString other) {
    const std::int32_t at = std::clamp(position, 0, length);
    if (at == length) return Append(other);
    const std::int32_t added = other.length;
    if (added == 0) return *this;
    Reserve(std::int64_t{length} + added + 1);
    char16_t* const gap = text.units + at;
    std::copy_backward(gap, text.units + length + 1, text.units + length + 1 + added);
    for (std::int32_t i = 0; i < added; ++i) gap[i] = other[i];
    length += added;
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

// What two texts have in common is mostly long. The inner loop has no branch, so that the compiler
// makes vector instructions of it.
template <typename A, typename B>
std::int32_t MString::CommonLength(const A* a, const B* b, std::int32_t count) {
    constexpr std::int32_t kChunk = 8;
    std::int32_t i = 0;
    for (; i + kChunk <= count; i += kChunk) {
        int difference = 0;
        for (std::int32_t k = i; k < i + kChunk; ++k) difference |= Widen(a[k]) ^ Widen(b[k]);
        if (difference != 0) break;
    }
    while (i < count && Widen(a[i]) == Widen(b[i])) ++i;
    return i;
}

bool MString::HasSameUnits(const MString& other) const {
    return VisitPair(*this, other, [count = length](const auto* a, const auto* b) {
        return CommonLength(a, b, count) == count;
    });
}

template <typename Fold>
int MString::CompareWith(const MString& other, std::int32_t maximum, Fold fold) const {
    const std::int32_t countA = std::min(length, maximum);
    const std::int32_t countB = std::min(other.length, maximum);
    return VisitPair(*this, other, [=](const auto* a, const auto* b) {
        const std::int32_t common = std::min(countA, countB);
        for (std::int32_t i = CommonLength(a, b, common); i < common; ++i) {
            const char16_t unitA = Widen(a[i]);
            const char16_t unitB = Widen(b[i]);
            if (unitA == unitB) continue;
            const int difference = fold(unitA) - fold(unitB);
            if (difference != 0) return difference;
        }
        return (countA > countB) - (countA < countB);
    });
}

int MString::Compare(const MString& other, std::int32_t maximum) const {
    return CompareWith(other, maximum, [](char16_t unit) { return unit; });
}

int MString::CompareNoCase(const MString& other, std::int32_t maximum) const {
    return CompareWith(other, maximum, [](char16_t unit) { return FoldCharacter(unit); });
}

std::uint32_t MString::Hash() const {
    const std::int32_t step = length < 16 ? 1 : 4;
    const std::int32_t end = length < 16 ? length : std::min(length / 4, 8) * step;
    const auto combine = [step, end](const auto* characters) {
        std::uint32_t hash = 0;
        for (std::int32_t i = 0; i < end; i += step)
            hash ^= static_cast<std::uint32_t>(LowerAscii(Widen(characters[i]))) << (i & 31);
        return hash;
    };
    return IsLiteral() ? combine(text.literal) : combine(text.units);
}

void MString::KeepBlock() const noexcept {
    std::atomic_ref(Header().refcount).fetch_add(1, std::memory_order_relaxed);
}

void MString::DropBlock() noexcept {
    if (std::atomic_ref(Header().refcount).fetch_sub(1, std::memory_order_acq_rel) == 1)
        std::free(&Header());
}

void MString::GrowOwnBlock(std::int64_t blockSize) {
    BlockHeader* const old = &Header();
    if (old->capacity >= blockSize) return;
    void* const memory = std::realloc(old, static_cast<std::size_t>(blockSize));
    if (memory == nullptr) throw std::bad_alloc();
    auto* const header = static_cast<BlockHeader*>(memory);
    header->capacity = static_cast<std::uint32_t>(blockSize);
    text.units = reinterpret_cast<char16_t*>(header + 1);
}

void MString::MoveToNewBlock(std::int64_t blockSize, std::int32_t keptLength) {
    void* const memory = std::malloc(static_cast<std::size_t>(blockSize));
    if (memory == nullptr) throw std::bad_alloc();
    MString fresh;
    auto* const header = new (memory) BlockHeader{static_cast<std::uint32_t>(blockSize), 1};
    fresh.text.units = reinterpret_cast<char16_t*>(header + 1);
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
