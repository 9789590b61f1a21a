// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>

#include "foundation/text/mstring.h"
#include "foundation/text/number_reader.h"
#include "foundation/text/unit_buffer.h"

// How values turn numbers into text and back.
//
// Threads  any
// Memory   a text is one allocation; a literal that stands alone none
// Errors   std::bad_alloc; a broken format raises what MStringFormatter and MStringScanner raise

// Builds a text on the stack. Numbers look as MStringFormatter writes them.
class NumberText {
public:
    NumberText& Put(char16_t unit) {
        buffer.Put(unit);
        return *this;
    }
    NumberText& Put(const MString& part);
    NumberText& PutWhole(std::int64_t number);
    // decimals 0 .. 9
    NumberText& PutFixed(double number, int decimals);
    // A double that has been rounded, of any size.
    NumberText& PutRounded(double whole) { return PutFixed(whole, 0); }
    // Once, at the end.
    MString Take();

private:
    NumberText& PutDigits(const char* first, const char* end);

    MString text;
    UnitBuffer<64> buffer{text};
};

// To the nearest whole number, halves up.
double RoundHalfUp(double number);

// What MStringFormatter makes of a format with this one argument.
MString FormatNumber(const MString& format, double number);
MString FormatNumber(const MString& format, std::int64_t number);

// The number that stands in a text where the format's argument 0 does.
std::optional<double> ScanNumber(const MString& format, const MString& text);
std::optional<std::int64_t> ScanInteger(const MString& format, const MString& text);
