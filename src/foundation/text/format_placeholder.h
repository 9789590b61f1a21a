// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include "foundation/text/mstring.h"

// The syntax that formatter and scanner share: "{", an argument number, options, "}".
//
//     {0}      {0;.2}      {0;+.02}      {+0.2}      {0:04}      {0x;02}
//
// The number has at most three characters, a minus among them; without one it is argument 0. The
// options stand in any order:
//
//     +    forced sign
//     x    hexadecimal
//     .N   precision N
//     0N   padded with zeros to N characters
//      N   (a blank and N) padded with blanks
//
// N has at most two characters. Every other character separates.

struct FormatPlaceholder {
    static constexpr int kArguments = 32;  // numbers from there on name no argument

    int argument = 0;
    bool forcedSign = false;
    bool hexadecimal = false;
    int width = 0;  // 0 .. 99
    char16_t padding = u' ';
    int precision = 4;  // 0 .. 99

    bool NamesArgument() const { return argument >= 0 && argument < kArguments; }
};

// position stands behind the opening brace and is moved behind the closing one. Raises MException
// "Formatting string ends in an argument specification." where a NUL or the end comes first.
FormatPlaceholder ReadPlaceholder(const MString& format, std::int32_t& position);
