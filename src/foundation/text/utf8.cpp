// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/text/utf8.h"

#include <bit>

#include "foundation/text/mstring.h"

namespace {

bool IsHighSurrogate(char16_t unit) { return (unit & 0xfc00) == 0xd800; }

bool IsLowSurrogate(char16_t unit) { return (unit & 0xfc00) == 0xdc00; }

}  // namespace

bool Utf8Decoder::PushMultiByte(std::uint8_t byte, char32_t& codePoint) {
    const int marks = std::countl_one(byte);
    if (marks == 1) {
        if (missing == 0) return false;
        value = value << 6 | (byte & 0x3fu);
        codePoint = value;
        return --missing == 0 && value <= 0x10ffff && value != 0xfeff;
    }
    missing = marks <= 4 ? marks - 1 : 0;
    value = byte & (0x7fu >> marks);
    return false;
}

bool CodePointReader::Next(char32_t& codePoint) {
    while (position < text.Length()) {
        const char16_t unit = text[position++];
        if (IsLowSurrogate(unit)) continue;
        codePoint = unit;
        if (!IsHighSurrogate(unit)) return true;
        if (position == text.Length()) return false;
        const char16_t next = text[position++];
        if (!IsLowSurrogate(next)) continue;
        codePoint = 0x10000u + ((unit & 0x3ffu) << 10) + (next & 0x3ffu);
        return true;
    }
    return false;
}

void AppendUtf8(std::string& bytes, char32_t codePoint) {
    const auto put = [&bytes](char32_t value) { bytes += static_cast<char>(value); };
    const auto putRest = [&](int shift) { put(0x80 | (codePoint >> shift & 0x3f)); };
    const bool isEscaped = codePoint >= 0x10fe01 && codePoint < 0x10ff00;
    if (codePoint < 0x80 || isEscaped) return put(codePoint & 0xff);
    if (codePoint < 0x800) {
        put(0xc0 | codePoint >> 6);
    } else if (codePoint < 0x10000) {
        put(0xe0 | codePoint >> 12);
        putRest(6);
    } else {
        put(0xf0 | codePoint >> 18);
        putRest(12);
        putRest(6);
    }
    putRest(0);
}
