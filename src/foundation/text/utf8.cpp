// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/text/utf8.h"

#include <bit>

#include "foundation/text/mstring.h"

namespace {

bool IsHighSurrogate(char16_t unit) { return (unit & 0xfc00) == 0xd800; }

bool IsLowSurrogate(char16_t unit) { return (unit & 0xfc00) == 0xdc00; }

}  // namespace

bool Utf8Reader::Next(char32_t& codePoint) {
    while (!bytes.empty() && bytes.front() != '\0') {
        if (ReadSequence(codePoint) && codePoint <= 0x10ffff && codePoint != 0xfeff) return true;
    }
    return false;
}

// Takes at least the lead byte; false where it starts nothing or its sequence is cut short.
bool Utf8Reader::ReadSequence(char32_t& codePoint) {
    const auto lead = static_cast<std::uint8_t>(bytes.front());
    bytes.remove_prefix(1);
    const int marks = std::countl_one(lead);
    codePoint = lead & (0x7fu >> marks);
    if (marks == 0) return true;
    if (marks == 1 || marks > 4) return false;
    for (int i = 1; i < marks; ++i) {
        if (bytes.empty() || (bytes.front() & 0xc0) != 0x80) return false;
        codePoint = codePoint << 6 | (bytes.front() & 0x3fu);
        bytes.remove_prefix(1);
    }
    return true;
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
    if (codePoint < 0x80) return put(codePoint);
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
