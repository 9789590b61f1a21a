// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string_view>

#include "foundation/text/text_buffers.h"
#include "foundation/text/unit_buffer.h"

// What all codecs do with the characters that their decoders make of bytes. A decoder has
//
//     bool Push(std::uint8_t byte, char32_t& codePoint);
//
// which takes one byte and tells whether a code point ends with it.

// A NUL of the encoding itself; an overlong form of it is a character like others.
inline bool EndsText(std::uint8_t lastByte, char32_t codePoint) {
    return codePoint == 0 && lastByte == 0;
}

// Until a NUL or the end of the bytes.
template <typename Decoder>
MString DecodeBytes(std::string_view bytes, Decoder decoder) {
    MString text;
    UnitBuffer<256> buffer(text);
    for (const char character : bytes) {
        const auto byte = static_cast<std::uint8_t>(character);
        char32_t codePoint = 0;
        if (!decoder.Push(byte, codePoint)) continue;
        if (EndsText(byte, codePoint)) break;
        PutCodePoint(buffer, codePoint);
    }
    buffer.Flush();
    return text;
}

// See MEncoding::Codec::ReadLine.
template <typename Decoder>
bool DecodeLine(MTextReader& reader, MString& text, Decoder decoder) {
    text = MString();
    UnitBuffer<64> buffer(text);
    std::uint8_t byte = 0;
    while (reader.Next(byte)) {
        char32_t codePoint = 0;
        if (!decoder.Push(byte, codePoint) || codePoint == U'\r') continue;
        if (EndsText(byte, codePoint) || codePoint == U'\n') {
            buffer.Flush();
            return true;
        }
        PutCodePoint(buffer, codePoint);
    }
    buffer.Flush();
    if (text.IsEmpty()) RaiseEndOfStream();
    return true;
}
