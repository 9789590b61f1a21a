// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>

#include "foundation/text/mstring.h"

// How the XML dialect sees single characters.
//
// Threads  any
// Errors   none

enum class XmlCharacter : std::uint8_t { Ordinary, White, Special };

// Of the code units 0 .. 255; beyond them all are ordinary.
inline constexpr auto kXmlCharacters = [] {
    std::array<XmlCharacter, 256> classes = {};
    for (int unit = 0; unit <= ' '; ++unit)
        classes[static_cast<std::size_t>(unit)] = XmlCharacter::White;
    for (const char special : {'<', '>', '"', '/', '!', '='})
        classes[static_cast<unsigned char>(special)] = XmlCharacter::Special;
    return classes;
}();

constexpr XmlCharacter ClassOf(char16_t unit) {
    return unit < kXmlCharacters.size() ? kXmlCharacters[unit] : XmlCharacter::Ordinary;
}

constexpr bool IsXmlWhite(char16_t unit) { return unit <= u' '; }

// The codecs write U+10FE01 to U+10FEFF as one raw byte, which may be one that must not stand in a
// document. Which byte the pair at position stands for, 0 for anything else.
inline constexpr char16_t kRawByteStart = 0xdbff;
inline char16_t RawByteAt(const MString& text, std::int32_t position) {
    if (text[position] != kRawByteStart) return 0;
    const char16_t low = text[position + 1];
    return low > 0xde00 && low <= 0xdeff ? low & 0xff : 0;
}

// Without the white space at both ends; shared with text where there is none.
inline MString TrimXml(const MString& text) {
    std::int32_t start = 0;
    std::int32_t end = text.Length();
    while (start < end && IsXmlWhite(text[start])) ++start;
    while (end > start && IsXmlWhite(text[end - 1])) --end;
    return text.SubString(start, end - start);
}
