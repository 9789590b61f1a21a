// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

class MString;

// UTF-8 and UTF-16, one code point at a time.
//
//     Utf8Reader reader(bytes);
//     for (char32_t codePoint; reader.Next(codePoint);) ...
//
// Threads  any; a reader is used by one
// Memory   AppendUtf8 may grow its string, the readers allocate nothing
// Errors   none: what is malformed is left out, see the readers

// Reads until the end of the bytes or a NUL. Left out are: a continuation byte without a lead byte,
// a lead byte of 11111xxx, a sequence that is cut short (the byte that cuts it is read as the next
// lead byte), a value above U+10FFFF, and U+FEFF. An overlong form and an encoded surrogate count
// as the value that they spell.
class Utf8Reader {
public:
    // The bytes stay where they are until the reader is done.
    explicit Utf8Reader(std::string_view bytes) : bytes(bytes) {}

    // False at the end; codePoint is then unspecified.
    bool Next(char32_t& codePoint);

private:
    bool ReadSequence(char32_t& codePoint);

    std::string_view bytes;
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

// One to four bytes. codePoint is at most U+10FFFF.
void AppendUtf8(std::string& bytes, char32_t codePoint);
