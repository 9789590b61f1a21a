// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>
#include <charconv>
#include <cstdarg>
#include <cstdio>

#include "foundation/text/mstring.h"
#include "foundation/text/number_parse.h"

namespace {

MString FromDigits(std::uint64_t magnitude, bool negative, int radix, int width, char16_t padding) {
    constexpr int kMostDigits = 64;  // of radix 2
    char16_t digits[kMostDigits];
    int first = kMostDigits;
    const auto divisor = static_cast<std::uint64_t>(radix);
    do {
        digits[--first] =
            static_cast<char16_t>("0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ"[magnitude % divisor]);
        magnitude /= divisor;
    } while (magnitude != 0);

    const int count = kMostDigits - first;
    MString text;
    text.Reserve(std::max(count, width) + 2);
    if (negative) text.Append(u'-');
    for (int i = count; i < width; ++i) text.Append(padding);
    return text.AppendUnits(digits + first, count);
}

// A value of 36 or more is no digit of any radix.
int DigitValue(char16_t unit) {
    if (unit >= u'0' && unit <= u'9') return unit - u'0';
    if (unit >= u'a' && unit <= u'z') return unit - u'a' + 10;
    if (unit >= u'A' && unit <= u'Z') return unit - u'A' + 10;
    return 36;
}

}  // namespace

ParsedInteger ParseInteger(const MString& text, std::int32_t start, std::int32_t maximum,
                           int radix) {
    const std::int32_t end = start + std::clamp(maximum, 0, text.Length() - start);
    const bool negative = start < end && text[start] == u'-';
    std::uint64_t magnitude = 0;
    std::int32_t i = start + (negative ? 1 : 0);
    for (; i < end; ++i) {
        const int digit = DigitValue(text[i]);
        if (digit >= radix) break;
        magnitude =
            magnitude * static_cast<std::uint64_t>(radix) + static_cast<std::uint64_t>(digit);
    }
    return {static_cast<std::int64_t>(negative ? 0 - magnitude : magnitude), i - start};
}

MString MString::FromInt(std::int64_t value, int radix, int width, char16_t padding) {
    const auto bits = static_cast<std::uint64_t>(value);
    return FromDigits(value < 0 ? 0 - bits : bits, value < 0, radix, width, padding);
}

MString MString::FromUnsigned(std::uint64_t value, int radix, int width, char16_t padding) {
    return FromDigits(value, false, radix, width, padding);
}

MString MString::FromDouble(double value, int precision) {
    const int digits = std::clamp(precision, 0, 99);
    const auto form = digits < 10 ? std::chars_format::fixed : std::chars_format::general;
    char text[400];  // the largest double has 309 digits before the point
    const auto result = std::to_chars(text, text + sizeof text, value, form, digits);
    return FromUtf8({text, static_cast<std::size_t>(result.ptr - text)});
}

MString MString::Printf(const char* format, ...) {
    char text[8192] = "";
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    return FromUtf8(text);
}

std::int32_t MString::ToInt(const MString& text, int radix, std::int32_t* consumed) {
    return static_cast<std::int32_t>(ToInt64(text, radix, consumed));
}

std::int64_t MString::ToInt64(const MString& text, int radix, std::int32_t* consumed) {
    const ParsedInteger parsed = ParseInteger(text, 0, kWhole, radix);
    if (consumed != nullptr) *consumed = parsed.consumed;
    return parsed.value;
}
