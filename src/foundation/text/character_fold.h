// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Folding of code units for comparisons and hashes that ignore case.
//
// Threads  any
// Errors   none

// A to Z become a to z, every other unit stays as it is.
constexpr char16_t LowerAscii(char16_t unit) {
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit - u'A' + u'a') : unit;
}

// The form under which units are equal to MString::CompareNoCase.
char16_t FoldCharacter(char16_t unit);
