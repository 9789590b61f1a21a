// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>

#include "foundation/text/format_placeholder.h"
#include "foundation/text/mstring.h"

// Reads back what a format string made: the reverse of MStringFormatter.
//
//     MStringScanner scanner("{0} of {1} dB", "Gain of 3.00 dB");   // "Gain", "3.00"
//
// Format and subject are walked in step. A run of white space (characters up to 32) in the format
// stands for any run of it, at least one character; braces outside placeholders are written as for
// the formatter; every other character stands for itself. A placeholder takes the text up to the
// next character that the format wants there, or to the next white space where it wants white
// space or ends; that may be nothing. At the first difference, and at the end of either text, the
// scan is over and what it has found stands.
//
// Threads  one
// Errors   MException "Formatting string ends in an argument specification."; "Index out of range."

class MStringScanner {
public:
    MStringScanner(const MString& format, const MString& subject);

    // Of how many arguments a text was found.
    int Count() const { return count; }
    // What the placeholder of an argument took, the empty literal where none did. index 0 .. 31,
    // else raises "Index out of range.".
    const MString& Get(int index) const;
    // The radix for MString::ToInt that the placeholder's options ask for: 10 or 16.
    int GetRadix(int index) const;

private:
    struct Capture {
        MString text;
        bool isFound = false;
        bool hexadecimal = false;
    };

    const Capture& At(int index) const;
    bool Step();
    void Take(const FormatPlaceholder& placeholder);
    bool SkipWhiteSpace();

    const MString format;
    const MString subject;
    std::int32_t formatPosition = 0;
    std::int32_t subjectPosition = 0;
    std::array<Capture, FormatPlaceholder::kArguments> captures;
    int count = 0;
};
