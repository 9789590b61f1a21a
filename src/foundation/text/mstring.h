// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

// Text as a value, in two forms.
//
//     constexpr MString name = "Rate";         // literal: no allocation, now or when copied
//     MString label = MString(name).Append(" (Hz)");
//
// A literal refers to a constant 7-bit ASCII C string that lives as long as the program; its
// characters are widened where they are read. Text from anywhere else comes in through FromUtf8.
// Shared text is UTF-16 in a block on the heap: capacity, count of the strings that share it, code
// units, a terminating 0. Copies share the block; who changes one takes a block of its own first.
//
// Units    UTF-16 code units; a length leaves the terminator out
// Ranges   up to 2^30 - 5 units
// Threads  copies of a string may be read, copied and changed by several threads; one MString
//          object by one thread at a time
// Memory   literals never allocate; a copy, a move and a comparison neither. Blocks grow to powers
//          of two
// Errors   std::bad_alloc; the string keeps its old value

class MString {
public:
    // As a maximum count: the whole string.
    static constexpr std::int32_t kWhole = 0x7fffffff;

    constexpr MString() = default;
    constexpr MString(std::nullptr_t) {}
    // Null gives the empty literal.
    constexpr MString(const char* literal) {
        if (literal == nullptr) return;
        text.literal = literal;
        length = static_cast<std::int32_t>(std::char_traits<char>::length(literal));
    }
    // Copies the text; null and "" give the empty literal. Beyond U+FFFF a wide character becomes a
    // surrogate pair, beyond U+10FFFF it is left out.
    MString(const wchar_t* wide);
    MString(const char16_t* units);
    explicit MString(char16_t unit);

    constexpr MString(const MString& other) noexcept
        : text(other.text), length(other.length), flags(other.flags) {
        if (!IsLiteral()) KeepBlock();
    }
    constexpr MString(MString&& other) noexcept
        : text(other.text), length(other.length), flags(other.flags) {
        other.BecomeEmpty();
    }
    MString& operator=(const MString& other) noexcept { return *this = MString(other); }
    MString& operator=(MString&& other) noexcept {
        std::swap(text, other.text);
        std::swap(length, other.length);
        std::swap(flags, other.flags);
        return *this;
    }
    constexpr ~MString() {
        if (!IsLiteral()) DropBlock();
    }

    // Malformed bytes are left out and a NUL ends the text, see Utf8Decoder.
    static MString FromUtf8(std::string_view bytes);
    // A surrogate without its partner is left out, see CodePointReader and AppendUtf8.
    std::string ToUtf8() const;

    // Number texts are the same under every C locale. The digits above 9 are A to Z; radix 2 .. 36.
    // Padding stands in front of the digits until there are width of them; a minus stands in front
    // of the padding and does not count: -5 with width 4 and padding '0' is "-0005".
    static MString FromInt(std::int64_t value, int radix = 10, int width = 0,
                           char16_t padding = u' ');
    static MString FromUnsigned(std::uint64_t value, int radix = 10, int width = 0,
                                char16_t padding = u' ');
    // Below a precision of 10 that many decimals, from 10 on that many significant digits, as
    // "%.Nf" and "%.NNg" write them. precision 0 .. 99, beyond which the nearest of them is taken.
    static MString FromDouble(double value, int precision);
    // A plain C format, at most 8191 bytes of UTF-8. What it makes of a number depends on the C
    // locale: not for text that is shown or stored.
    [[gnu::format(printf, 1, 2)]] static MString Printf(const char* format, ...);

    // An optional minus and digits, letters in either case above radix 10; ends at whatever is no
    // digit. consumed gets how many units were read. A number that is too large wraps around.
    static std::int32_t ToInt(const MString& text, int radix = 10,
                              std::int32_t* consumed = nullptr);
    static std::int64_t ToInt64(const MString& text, int radix = 10,
                                std::int32_t* consumed = nullptr);

    constexpr std::int32_t Length() const { return length; }
    constexpr bool IsEmpty() const { return length == 0; }
    // index 0 .. Length(); at Length() stands a 0.
    constexpr char16_t operator[](std::int32_t index) const {
        return IsLiteral() ? Widen(text.literal[index]) : text.units[index];
    }
    // The characters of a literal, null for shared text.
    constexpr const char* Literal() const { return IsLiteral() ? text.literal : nullptr; }

    // Makes the text the string's own, in a block with room for this many units, terminator
    // included; comes before every change in place. A literal or a text in use by others is cut to
    // that many units, a text that is its own already never gets shorter. The block never shrinks.
    void Reserve(std::int64_t characters);

    // Null appends nothing; the string may be appended to itself.
    MString& Append(const MString& other);
    MString& Append(const char* literal) { return Append(MString(literal)); }
    MString& Append(char16_t unit) {
        if (!HasRoomFor(1)) Reserve(std::int64_t{length} + 2);
        Put(unit);
        return *this;
    }
    // The units are not part of this string's own text.
    MString& AppendUnits(const char16_t* units, std::int32_t count);
    // Puts other in front of the unit at position, which is clamped to 0 .. Length().
    MString& Insert(std::int32_t position, MString other);

    // Up to count units from start on. The empty literal for a negative start, a start at or behind
    // the end and a count below 1. The whole string and the tail of a literal are not copied.
    MString SubString(std::int32_t start, std::int32_t count = kWhole) const;

    // Puts with in place of every such character; with itself is not searched. How many there were.
    std::int32_t Replace(char16_t character, const MString& with);

    // Negative, zero or positive, by code units; a string sorts behind its own beginning. At most
    // maximum units are compared.
    int Compare(const MString& other, std::int32_t maximum = kWhole) const;
    // The same over folded units: accents are taken off, A to Z become a to z, see FoldCharacter.
    int CompareNoCase(const MString& other, std::int32_t maximum = kWhole) const;

    // Equal for texts that differ in the case of ASCII letters only. Of a text of 16 units or more
    // only every fourth unit takes part, up to eight of them.
    std::uint32_t Hash() const;

    friend bool operator==(const MString& a, const MString& b) {
        return a.length == b.length && a.HasSameUnits(b);
    }
    friend std::strong_ordering operator<=>(const MString& a, const MString& b) {
        return a.Compare(b) <=> 0;
    }

private:
    union Text {
        const char* literal = "";
        char16_t* units;  // behind the header of their block
    };

    static constexpr std::uint8_t kLiteralBit = 1;

    // A literal is ASCII; a character beyond it has its sign extended.
    static constexpr char16_t Widen(char character) {
        return static_cast<char16_t>(static_cast<signed char>(character));
    }
    static constexpr char16_t Widen(char16_t unit) { return unit; }

    constexpr bool IsLiteral() const { return (flags & kLiteralBit) != 0; }
    constexpr void BecomeEmpty() {
        text = Text();
        length = 0;
        flags = kLiteralBit;
    }

    // Stands in front of the code units of shared text.
    struct BlockHeader {
        std::uint32_t capacity;  // bytes of the whole block
        std::uint32_t refcount;
    };

    BlockHeader& Header() const { return reinterpret_cast<BlockHeader*>(text.units)[-1]; }
    // Acquire: what others read of this block comes before what is written into it from here on.
    bool IsSoleOwner() const {
        return !IsLiteral() &&
               std::atomic_ref(Header().refcount).load(std::memory_order_acquire) < 2;
    }
    // Whether so many more units and the terminator may be written without a Reserve.
    bool HasRoomFor(std::int64_t added) const {
        constexpr std::int64_t kUnit = sizeof(char16_t);
        return IsSoleOwner() && (length + added + 1) * kUnit + std::int64_t{sizeof(BlockHeader)} <=
                                    std::int64_t{Header().capacity};
    }

    void KeepBlock() const noexcept;
    void DropBlock() noexcept;
    void GrowOwnBlock(std::int64_t blockSize);
    void MoveToNewBlock(std::int64_t blockSize, std::int32_t keptLength);
    // Behind a Reserve for the added units and the terminator.
    void Put(const MString& source, std::int32_t start, std::int32_t count);
    void Put(char16_t unit) {
        text.units[length++] = unit;
        text.units[length] = 0;
    }

    // Calls visit with the two character arrays, each as const char* or const char16_t*.
    template <typename Visit>
    static auto VisitPair(const MString& a, const MString& b, Visit visit);
    // How many of the first count units are equal up to the first difference.
    template <typename A, typename B>
    static std::int32_t CommonLength(const A* a, const B* b, std::int32_t count);
    bool HasSameUnits(const MString& other) const;
    template <typename Fold>
    int CompareWith(const MString& other, std::int32_t maximum, Fold fold) const;

    Text text;
    std::int32_t length = 0;
    std::uint8_t flags = kLiteralBit;
};
