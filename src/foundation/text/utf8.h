// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>

class MString;

// UTF-8 and UTF-16, one code point at a time.
//
// Threads  any; a decoder or reader is used by one
// Memory   AppendUtf8 may grow its string, nothing else allocates
// Errors   none: what is malformed is left out

// Left out are: a continuation byte without a lead byte, a lead byte of 11111xxx, a sequence that
// is cut short (the byte that cuts it is read as the next lead byte), a value above U+10FFFF, and
// U+FEFF. An overlong form and an encoded surrogate count as the value that they spell.
class Utf8Decoder {
public:
    // Whether a code point ends with this byte; if not, codePoint is unspecified.
    bool Push(std::uint8_t byte, char32_t& codePoint) {
        if (byte < 0x80) {
            missing = 0;
            codePoint = byte;
            return true;
        }
        return PushMultiByte(byte, codePoint);
    }

private:
    bool PushMultiByte(std::uint8_t byte, char32_t& codePoint);

    char32_t value = 0;
    int missing = 0;  // continuation bytes of the sequence that are still to come
};

// Joins surrogate pairs. Left out are a low surrogate without a high one, and a high surrogate that
// no low one follows, together with the unit that follows it.
class CodePointReader {
public:
    // The text stays as it is until the reader is done.
    explicit CodePointReader(const MString& text) : text(text) {}

    // False at the end; codePoint is then unspecified.
    bool Next(char32_t& codePoint);

private:
    const MString& text;
    std::int32_t position = 0;
};

// One to four bytes; codePoint is at most U+10FFFF. U+10FE01 to U+10FEFF are a private escape: they
// are written as one raw byte, their low 8 bits, so that a byte that had no meaning where it came
// from can be given back as it was.
void AppendUtf8(std::string& bytes, char32_t codePoint);
